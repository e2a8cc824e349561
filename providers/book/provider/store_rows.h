// The contents of a book as a table: a window on the store, in its order, in another or narrowed.
#pragma once

#include "orv/kit/rows.hpp"
#include "providers/book/provider/local_book.h"

namespace book {

class StoreRows final : public kit::RowSource {
 public:
  explicit StoreRows(LocalBook& book);
  ~StoreRows() override { book_.TableClosed(); }

  size_t Count() override { return refs_ ? refs_->size() : count_; }
  HRESULT RowAt(size_t row, std::span<const ULONG> columns, orv::sdk::ValueView* values) override;
  std::vector<ULONG> Columns() override;
  std::optional<size_t> Seek(ULONG column, const SPropValue& key, bool isPrefix) override;
  bool Sort(const std::vector<SSortOrder>& order) override;
  bool Narrow(const kit::Restriction& restriction) override;
  ULONG Refresh() override;

 private:
  using Refs = std::vector<RowRef>;

  void LookAnew();
  HRESULT Load(size_t row);
  HRESULT ReadOrder(const std::vector<SortColumn>& order, Refs* refs);
  HRESULT Arrange(const std::optional<Refs>& narrowed, const std::vector<SortColumn>& order);

  LocalBook& book_;
  std::shared_ptr<Store> store_;
  std::unique_ptr<View> view_;  // null while the book cannot be opened
  size_t count_ = 0;
  std::optional<Refs> narrowed_;  // in the store's order; nothing: all
  std::vector<SortColumn> order_;
  std::optional<Refs> refs_;  // the rows shown; nothing: the whole book in its own order
  std::vector<Row> window_;   // rows from windowStart_ on
  size_t windowStart_ = 0;
  kit::PropList row_;
};

}  // namespace book
