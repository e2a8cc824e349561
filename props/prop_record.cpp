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

bool EqualBytes(const PropNode& node, const void* bytes, std::size_t size) noexcept {
  return node.record.dataLength == size && (size == 0 || std::memcmp(node.Data(), bytes, size) == 0);
}

// A null string is the empty one, as it is when stored.
bool EqualString(const PropNode& node, const SPropValue& value) noexcept {
  static constexpr WCHAR kEmpty = 0;
  const void* text = value.Value.lpszA != nullptr ? static_cast<const void*>(value.Value.lpszA) : &kEmpty;
  ULONG length = 0;
  return SUCCEEDED(PropDataLength(value, length)) && EqualBytes(node, text, length);
}

bool EqualBinary(const PropNode& node, const SBinary& binary) noexcept {
  if (binary.cb != 0 && binary.lpb == nullptr) return false;
  return EqualBytes(node, binary.lpb, binary.cb);
}

bool EqualGuid(const PropNode& node, const GUID* guid) noexcept {
  return guid != nullptr && EqualBytes(node, guid, sizeof *guid);
}

}  // namespace

HRESULT NodeFromValue(const SPropValue& value, PropNodePtr& node) {
  ULONG length = 0;
  if (const HRESULT hr = PropDataLength(value, length); FAILED(hr)) return hr;
  const std::size_t area = std::max(kAreaUnit, (std::size_t{length} + kAreaUnit - 1) & ~(kAreaUnit - 1));
  node = NewNode(sizeof(PropRecord) + area);
  node->record.recordSize = static_cast<ULONG>(sizeof(PropRecord) + area);
  node->record.dataLength = length;
  node->record.value = value;
  std::memset(node->Data() + area - kAreaUnit, 0, kAreaUnit);
  WritePropData(value, node->Data(), length);
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
  if (!IsSoundPropData(header.value, area.first(header.dataLength))) return MAPI_E_CALL_FAILED;
  node = NewNode(cell.size());
  std::memcpy(static_cast<void*>(&node->record), cell.data(), cell.size());
  return S_OK;
}

std::span<const std::byte> CellOf(const PropNode& node) noexcept {
  return {reinterpret_cast<const std::byte*>(&node.record), node.record.recordSize};
}

HRESULT ReadNode(const PropNode& node, void* root, SPropValue& out) noexcept {
  SPropValue value = node.record.value;
  const ULONG length = node.record.dataLength;
  if (length != 0 && PropRuleOf(value.ulPropTag).form != PropForm::kInline) {
    void* data = nullptr;
    const HRESULT hr = root ? AllocateChained(length, root, &data) : AllocateRoot(length, &data);
    if (FAILED(hr)) return hr;
    std::memcpy(data, node.Data(), length);
    PointAtPropData(value, static_cast<std::byte*>(data), length);
  }
  out = value;
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
      equal = EqualString(node, value);
      break;
    case PT_CLSID:
      equal = EqualGuid(node, given.lpguid);
      break;
    case PT_BINARY:
      equal = EqualBinary(node, given.bin);
      break;
    default:
      return MAPI_E_NO_SUPPORT;
  }
  return equal ? S_OK : MAPI_E_NOT_FOUND;
}

}  // namespace orv
