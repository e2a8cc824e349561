// The members of a list as a table.
#pragma once

#include "orv/kit/rows.hpp"
#include "providers/book/provider/local_book.h"

namespace book {

class MemberRows final : public kit::RowSource {
 public:
  MemberRows(LocalBook& book, const EntryKey& list);
  ~MemberRows() override { book_.TableClosed(); }

  size_t Count() override { return count_; }
  HRESULT Status() override { return failure_; }
  HRESULT RowAt(size_t row, std::span<const ULONG> columns, orv::sdk::ValueView* values) override;
  std::vector<ULONG> Columns() override;
  ULONG Refresh() override;
  std::optional<std::vector<kit::FollowedRow>> Follow() override;

 private:
  void LookAnew();
  HRESULT Load(size_t row);
  bool CompareMembers(View& newer, std::vector<kit::FollowedRow>* followed);

  LocalBook& book_;
  const EntryKey list_;
  std::shared_ptr<Store> store_;
  std::unique_ptr<View> view_;  // null while the book cannot be opened
  HRESULT failure_ = S_OK;      // of a book that is open
  size_t count_ = 0;
  std::vector<Member> window_;  // from windowStart_ on
  size_t windowStart_ = 0;
  kit::PropList row_;
};

}  // namespace book
