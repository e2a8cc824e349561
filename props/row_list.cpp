// Rows by position and by key.
#include "props/row_list.h"

#include <algorithm>

#include "orv/orvcodes.h"
#include "platform/pointer_check.h"

namespace orv {

HRESULT BuildRow(const SRow& source, PropList& row) {
  if (source.cValues == 0) return MAPI_E_INVALID_PARAMETER;
  PropList built;
  for (ULONG i = 0; i < source.cValues; ++i) {
    PropNodePtr node;
    if (const HRESULT hr = NodeFromValue(source.lpProps[i], node); FAILED(hr)) return hr;
    built.Append(std::move(node));
  }
  row = std::move(built);
  return S_OK;
}

void RowList::Insert(PropList row, std::size_t position) {
  rows_.insert(rows_.begin() + static_cast<Rows::difference_type>(std::min(position, rows_.size())),
               std::move(row));
}

HRESULT RowList::Add(const SRow& row, std::size_t position) {
  PropList built;
  if (const HRESULT hr = BuildRow(row, built); FAILED(hr)) return hr;
  Insert(std::move(built), position);
  return S_OK;
}

HRESULT RowList::CopyRow(const PropList* source, std::size_t position) {
  if (!IsReadable(source, sizeof *source) || source->Count() == 0) return MAPI_E_INVALID_PARAMETER;
  PropList copy;
  for (const PropNode& node : *source) {
    if (const HRESULT hr = copy.SetRecord(node.record); FAILED(hr)) return hr;
  }
  Insert(std::move(copy), position);
  return S_OK;
}

HRESULT RowList::RemoveAt(ULONG index, PropList* removed) {
  if (index > Count() || rows_.empty()) return MAPI_E_INVALID_PARAMETER;
  const auto row = rows_.begin() + (index == 0 ? 0 : index - 1);
  if (removed != nullptr) *removed = std::move(*row);
  rows_.erase(row);
  return S_OK;
}

RowList::Rows::const_iterator RowList::FirstMatch(const SPropValue& key, HRESULT& result) const noexcept {
  result = MAPI_E_NOT_FOUND;
  return std::find_if(rows_.begin(), rows_.end(), [&](const PropList& row) {
    result = row.FindAndCompare(key);
    return SUCCEEDED(result);
  });
}

const PropList* RowList::Find(const SPropValue& key) const noexcept {
  HRESULT result = S_OK;
  const auto row = FirstMatch(key, result);
  return row == rows_.end() ? nullptr : &*row;
}

PropList* RowList::Find(const SPropValue& key) noexcept {
  return const_cast<PropList*>(std::as_const(*this).Find(key));
}

HRESULT RowList::Delete(const SPropValue& key) {
  HRESULT result = S_OK;
  const auto row = FirstMatch(key, result);
  if (SUCCEEDED(result)) rows_.erase(row);
  return result;
}

HRESULT RowList::GetRow(const SPropValue& key, SRow& row) const noexcept {
  row = {};
  HRESULT result = S_OK;
  const auto match = FirstMatch(key, result);
  return FAILED(result) ? result : match->GetRow(nullptr, row);
}

HRESULT RowList::Modify(const SPropValue& key, std::span<const SPropValue> values, PropList** modified) {
  if (modified != nullptr) *modified = nullptr;
  if (values.empty()) return MAPI_E_NOT_FOUND;
  PropList* row = Find(key);
  if (row == nullptr) return MAPI_E_NOT_FOUND;
  if (modified != nullptr) *modified = row;
  for (const SPropValue& value : values) {
    if (const HRESULT hr = row->Set(value); FAILED(hr)) return hr;
  }
  return S_OK;
}

HRESULT RowList::GetColumnTags(MapiBuffer<SPropTagArray>& tags) const noexcept {
  return rows_.empty() ? MAPI_E_TABLE_EMPTY : rows_.front().GetTags(tags);
}

}  // namespace orv
