// The contents of a book as a table: a window on the store, in its order, in another or narrowed.
#pragma once

#include "orv/kit/rows.hpp"
#include "providers/book/provider/local_book.h"

namespace book {

class StoreRows final : public kit::RowSource {
 public:
  explicit StoreRows(LocalBook& book);
  ~StoreRows() override { book_.TableClosed(); }

  size_t Count() override { return shown_.refs ? shown_.refs->size() : count_; }
  HRESULT Status() override { return failure_; }
  HRESULT RowAt(size_t row, std::span<const ULONG> columns, orv::sdk::ValueView* values) override;
  std::vector<ULONG> Columns() override;
  std::optional<size_t> Seek(ULONG column, const SPropValue& key, bool isPrefix) override;
  std::optional<size_t> Find(const kit::Restriction& restriction, size_t start, bool isBackward) override;
  bool Sort(const std::vector<SSortOrder>& order) override;
  bool Narrow(const kit::Restriction& restriction) override;
  ULONG Refresh() override;
  std::optional<std::vector<kit::FollowedRow>> Follow() override;

 private:
  using Refs = std::vector<RowRef>;
  // What is shown of a look.
  struct Selection {
    std::optional<Refs> narrowed;  // in the store's order; nothing: all
    std::optional<Refs> refs;      // the rows shown; nothing: the whole book in its own order
  };

  void LookAnew();
  HRESULT Load(size_t row);
  bool IsUnchanged() const;
  HRESULT FindRefs(View& view, uint64_t count, const kit::Restriction& restriction, Selection* shown) const;
  HRESULT Arrange(View& view, uint64_t count, const std::vector<SortColumn>& order, Selection* shown) const;
  HRESULT FindMatches(const SRestriction& restriction, size_t most, Refs* found);
  std::optional<size_t> FindLastBeginning(const kit::Restriction& restriction, size_t start);
  std::optional<size_t> PlaceOfFirst(const Refs& found, size_t start);
  std::optional<size_t> PlaceOfLast(const Refs& found, size_t start);

  LocalBook& book_;
  std::shared_ptr<Store> store_;
  std::unique_ptr<View> view_;  // null while the book cannot be opened
  HRESULT failure_ = S_OK;      // of a book that is open
  size_t count_ = 0;
  kit::Restriction restriction_;
  std::vector<SortColumn> order_;
  Selection shown_;
  std::vector<Row> window_;  // rows from windowStart_ on
  size_t windowStart_ = 0;
  kit::PropList row_;
};

}  // namespace book
