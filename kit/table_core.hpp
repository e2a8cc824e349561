// What a table knows, under its lock. The object that clients hold and the set of open tables share it.
#pragma once

#include "marks.hpp"
#include "orv/kit/table.hpp"
#include "row_order.hpp"

namespace orv::kit {

class TableCore {
 public:
  TableCore(const sdk::Allocator& allocator, std::shared_ptr<RowSource> source, bool followsChanges,
            std::shared_ptr<Worker> worker);

  // As the methods of IMAPITable, without null out arguments.
  HRESULT SetColumns(const SPropTagArray& tags);
  HRESULT QueryColumns(bool all, LPSPropTagArray* tags);
  HRESULT GetRowCount(ULONG* count);
  HRESULT SeekRow(BOOKMARK origin, LONG wanted, LONG* moved);
  HRESULT SeekRowApprox(ULONG numerator, ULONG denominator);
  HRESULT QueryPosition(ULONG* row, ULONG* numerator, ULONG* denominator);
  HRESULT FindRow(const Restriction& restriction, BOOKMARK origin, bool backward);
  HRESULT Restrict(Restriction restriction);
  HRESULT SortTable(SortOrder order);
  HRESULT QuerySortOrder(LPSSortOrderSet* order);
  HRESULT CreateBookmark(BOOKMARK* bookmark);
  HRESULT FreeBookmark(BOOKMARK bookmark);
  HRESULT QueryRows(LONG wanted, bool advance, LPSRowSet* rows);
  bool FollowsChanges() const noexcept { return followsChanges_; }
  AdviseList& Advised() noexcept { return advised_; }

  // Moves on to the source's newest data, and notifies.
  void Changed(const std::vector<RowChange>& changes) noexcept;

 private:
  class Changes;

  HRESULT RearrangeLocked(const Restriction& restriction, const SortOrder& order);
  HRESULT CopyRowsLocked(size_t first, size_t last, LPSRowSet* rows);
  HRESULT SearchLocked(const Restriction& restriction, size_t start, bool backward, size_t* found);
  HRESULT FindBeginningLocked(const Restriction& restriction, size_t* found);
  HRESULT FindLocked(const Restriction& restriction, size_t start, bool backward, size_t* found);
  HRESULT LookUpLocked(const Restriction& restriction, size_t start, size_t* found);
  HRESULT TestLocked(const Restriction& restriction, const std::vector<ULONG>& columns, size_t position,
                     bool* holds);
  HRESULT ApplyLocked(const std::vector<RowChange>& changes, Changes& told);
  HRESULT FollowLocked(Changes& told);
  HRESULT AddLocked(size_t row, Changes& told);
  HRESULT ModifyLocked(size_t row, Changes& told);
  void DeleteLocked(size_t row, std::vector<BYTE> key, Changes& told);
  HRESULT ShowLocked(size_t row, Changes& told);
  HRESULT BelongsLocked(size_t row, bool* belongs);
  void ReloadLocked(Changes& told);

  const sdk::Allocator allocator_;
  const bool followsChanges_;
  const bool hasWorker_;
  AdviseList advised_;
  sdk::Lock lock_;  // guards what follows
  const std::shared_ptr<RowSource> source_;
  std::vector<ULONG> columns_;
  Restriction restriction_;
  SortOrder order_;
  RowOrder rows_;
  Marks marks_;
};

}  // namespace orv::kit
