// Makes, checks, reads and compares stored properties.
#include "props/prop_record.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "orv/orvcodes.h"
#include "platform/buffer.h"
#include "props/prop_type.h"

namespace orv {
namespace {

constexpr std::size_t kAreaUnit = 8;

PropNodePtr NewNode(std::size_t recordSize) {
  void* block = ::operator new(offsetof(PropNode, record) + recordSize);
  PropNodePtr node(static_cast<PropNode*>(block));
  node->next = nullptr;
  node->flags = 0;
  node->spare = 0;
  return node;
}

// A null string is the empty one, as it is when stored.
bool EqualData(const PropNode& node, const SPropValue& value) noexcept {
  const PropForm& form = FormOf(value.ulPropTag);
  ULONG length = 0;
  if (FAILED(form.Length(value, length)) || length != node.record.dataLength) return false;
  return form.PointsNowhere(value) || std::memcmp(node.Data(), form.Bytes(value), length) == 0;
}

}  // namespace

HRESULT NodeFromValue(const SPropValue& value, PropNodePtr& node) {
  const PropForm& form = FormOf(value.ulPropTag);
  ULONG length = 0;
  if (const HRESULT hr = form.Length(value, length); FAILED(hr)) return hr;
  const std::size_t area = std::max(kAreaUnit, (std::size_t{length} + kAreaUnit - 1) & ~(kAreaUnit - 1));
  node = NewNode(sizeof(PropRecord) + area);
  node->record.recordSize = static_cast<ULONG>(sizeof(PropRecord) + area);
  node->record.dataLength = length;
  // What is stored tells nobody where in memory it once lay.
  node->record.value = value;
  form.ClearPointer(node->record.value);
  std::memset(node->Data() + area - kAreaUnit, 0, kAreaUnit);
  form.Write(value, node->Data(), length);
  return S_OK;
}

PropNodePtr NodeFromRecord(const PropRecord& record) {
  PropNodePtr node = NewNode(record.recordSize);
  std::memcpy(static_cast<void*>(&node->record), &record, record.recordSize);
  return node;
}

HRESULT NodeFromCell(std::span<const std::byte> cell, PropNodePtr& node) {
  if (cell.size() < kMinRecordSize) return MAPI_E_CALL_FAILED;
  PropRecord header;
  std::memcpy(&header, cell.data(), sizeof header);
  const std::span<const std::byte> area = cell.subspan(sizeof header);
  if (header.recordSize != cell.size() || header.dataLength > area.size()) return MAPI_E_CALL_FAILED;
  const PropForm& form = FormOf(header.value.ulPropTag);
  if (!form.IsSound(header.value, area.first(header.dataLength))) return MAPI_E_CALL_FAILED;
  node = NewNode(cell.size());
  std::memcpy(static_cast<void*>(&node->record), cell.data(), cell.size());
  return S_OK;
}

std::span<const std::byte> CellOf(const PropNode& node) noexcept {
  return {reinterpret_cast<const std::byte*>(&node.record), node.record.recordSize};
}

// A cell may bear data for a value that has none of its own; nothing of it is handed out then.
HRESULT ReadNodeData(const PropNode& node, void* root, SPropValue& out) noexcept {
  const PropForm& form = FormOf(node.Tag());
  void* data = nullptr;
  if (!form.IsInline()) {
    if (const HRESULT hr = AllocateToFill(node.record.dataLength, root, &data); FAILED(hr)) return hr;
    std::memcpy(data, node.Data(), node.record.dataLength);
  }
  out = node.record.value;
  form.PointAt(out, static_cast<std::byte*>(data), node.record.dataLength);
  return S_OK;
}

HRESULT CompareNode(const PropNode& node, const SPropValue& value) noexcept {
  const auto& stored = node.record.value.Value;
  const auto& given = value.Value;
  if (node.Tag() != value.ulPropTag) return MAPI_E_NOT_FOUND;
  bool equal = false;
  switch (PROP_TYPE(value.ulPropTag)) {
    case PT_I2:
    case PT_BOOLEAN:
      equal = stored.i == given.i;
      break;
    case PT_LONG:
    case PT_ERROR:
      equal = stored.l == given.l;
      break;
    case PT_R4:
      equal = stored.flt == given.flt;
      break;
    case PT_DOUBLE:
      equal = stored.dbl == given.dbl;
      break;
    case PT_I8:
      equal = stored.li.QuadPart == given.li.QuadPart;
      break;
    case PT_STRING8:
    case PT_UNICODE:
    case PT_CLSID:
    case PT_BINARY:
      equal = EqualData(node, value);
      break;
    default:
      return MAPI_E_NO_SUPPORT;
  }
  return equal ? S_OK : MAPI_E_NOT_FOUND;
}

}  // namespace orv
