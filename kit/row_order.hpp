// Which row of the source stands where in the table: all of them in the source's order, or a list of their numbers.
#pragma once

#include <optional>
#include <vector>

#include "sort_keys.hpp"

namespace orv::kit {

class RowOrder {
 public:
  // Asks the source to narrow, to sort and to select, and does itself what it cannot. After a failure *this is as
  // before, but the source may be left in another order: Arrange brings it back.
  HRESULT Build(RowSource& source, const Restriction& restriction, const SortOrder& order);

  size_t Count() const noexcept { return isAll_ ? count_ : rows_.size(); }
  size_t RowAt(size_t position) const noexcept { return isAll_ ? position : rows_[position]; }
  // Whether positions are the source's numbers.
  bool IsAll() const noexcept { return isAll_; }

  // Whether the source's numbers are those of what it was asked for, not its own.
  bool IsArrangedBySource() const noexcept { return isNarrowedBySource_ || isSortedBySource_; }
  // Asks the source once more for what it did when this was built.
  void Arrange(RowSource& source, const Restriction& restriction, const SortOrder& order) const;

  // Where a row of the source stands; nothing when it does not.
  std::optional<size_t> Find(size_t row) const noexcept;

  // A row of the source was deleted; where it stood. The numbers of those behind it are one less from now on.
  std::optional<size_t> Remove(size_t row);
  // A row of the source is new: the numbers of those from there on are one more. Insert gives it its place.
  void Renumber(size_t row) noexcept;
  // Puts a row where it belongs; it stood nowhere before.
  HRESULT Insert(RowSource& source, const SortOrder& order, size_t row, size_t* position);
  // Takes a row out that is still the source's.
  void TakeOut(size_t position) noexcept;
  // When a source could not be read: no number lies beyond its rows.
  void Clamp(size_t count) noexcept;

 private:
  HRESULT Select(RowSource& source, const Restriction& restriction);

  bool isAll_ = true;
  bool isNarrowedBySource_ = false;
  bool isSortedBySource_ = false;
  size_t count_ = 0;  // when all
  std::vector<ULONG> rows_;
};

}  // namespace orv::kit
