// The ordered rows of a table or of a profile's services, each a property list. Not locked.
// Functions that store may throw std::bad_alloc; the list is then as it was.
#pragma once

#include <deque>
#include <span>

#include "props/prop_list.h"

namespace orv {

// A row that holds the values in their order, unmarked, with no test for repeated identifiers.
// MAPI_E_INVALID_PARAMETER for a row without values.
HRESULT BuildRow(const SRow& source, PropList& row);

class RowList {
 public:
  using Rows = std::deque<PropList>;

  ULONG Count() const noexcept { return static_cast<ULONG>(rows_.size()); }
  PropList& operator[](std::size_t index) noexcept { return rows_[index]; }
  const PropList& operator[](std::size_t index) const noexcept { return rows_[index]; }
  Rows::iterator begin() noexcept { return rows_.begin(); }
  Rows::iterator end() noexcept { return rows_.end(); }
  Rows::const_iterator begin() const noexcept { return rows_.begin(); }
  Rows::const_iterator end() const noexcept { return rows_.end(); }

  void Clear() noexcept { rows_.clear(); }

  // Before the row at `position`; at the end when there is none. Pointers to rows are good until the next
  // insertion or removal.
  void Insert(PropList row, std::size_t position);
  HRESULT Add(const SRow& row, std::size_t position);
  // A raw copy of a row of another list. MAPI_E_INVALID_PARAMETER for an unreadable or empty one. Offered; the library
  // itself does not call it.
  HRESULT CopyRow(const PropList* source, std::size_t position);

  // `index` counts from 1, and 0 removes the first row as well. The row goes to `removed` when that is given.
  HRESULT RemoveAt(ULONG index, PropList* removed = nullptr);

  // The first row that has a property equal to the key, or null.
  PropList* Find(const SPropValue& key) noexcept;
  const PropList* Find(const SPropValue& key) const noexcept;
  // Without a match these two return the last comparison's result, MAPI_E_NOT_FOUND for an empty list.
  HRESULT Delete(const SPropValue& key);
  HRESULT GetRow(const SPropValue& key, SRow& row) const noexcept;
  // Sets the values in the first matching row, up to the first failure. `modified` receives that row, null
  // without one. Without a match, or without values, MAPI_E_NOT_FOUND.
  HRESULT Modify(const SPropValue& key, std::span<const SPropValue> values, PropList** modified = nullptr);

  // The first row's tags; MAPI_E_TABLE_EMPTY without rows.
  HRESULT GetColumnTags(MapiBuffer<SPropTagArray>& tags) const noexcept;

 private:
  Rows::const_iterator FirstMatch(const SPropValue& key, HRESULT& result) const noexcept;

  Rows rows_;
};

}  // namespace orv
