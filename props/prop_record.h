// One stored property: a record of bytes that can be copied, written to the registry and read back as it is,
// and the node that links it into a list. A node is one block of the library's own heap.
#pragma once

#include <cstddef>
#include <memory>
#include <span>

#include "orv/orvtypes.h"
#include "platform/win.h"

namespace orv {

inline constexpr ULONG PROPNODE_READONLY = 0x00000001;  // may not be set or removed through the list
inline constexpr ULONG PROPNODE_MODIFIED = 0x00020000;  // written by the next save

// The stored bytes, little-endian; also the data of a registry value. The data area follows: `dataLength`
// bytes, padded with zeros to a multiple of 8, at least 8. Pointers in `value` are never believed.
struct PropRecord {
  ULONG recordSize;
  ULONG dataLength;
  SPropValue value;
};
static_assert(sizeof(PropRecord) == 32);
inline constexpr std::size_t kMinRecordSize = sizeof(PropRecord) + 8;

struct PropNode {
  PropNode* next;
  ULONG flags;
  ULONG spare;
  PropRecord record;

  ULONG Tag() const noexcept { return record.value.ulPropTag; }
  std::byte* Data() noexcept { return reinterpret_cast<std::byte*>(this + 1); }
  const std::byte* Data() const noexcept { return reinterpret_cast<const std::byte*>(this + 1); }
};
static_assert(offsetof(PropNode, record) == 16 && sizeof(PropNode) == 48);

struct PropNodeDeleter {
  void operator()(PropNode* node) const noexcept { ::operator delete(node); }
};
using PropNodePtr = std::unique_ptr<PropNode, PropNodeDeleter>;

// The functions that make a node throw std::bad_alloc when there is no memory for it.

// A node with a copy of the value, unlinked, without flags.
HRESULT NodeFromValue(const SPropValue& value, PropNodePtr& node);
// A raw copy of a record taken from another list.
PropNodePtr NodeFromRecord(const PropRecord& record);
// A node from stored bytes, which are checked before they are believed: MAPI_E_CALL_FAILED for a cell that
// its lengths, counts or terminators belie.
HRESULT NodeFromCell(std::span<const std::byte> cell, PropNodePtr& node);

// The record's bytes as they are stored.
std::span<const std::byte> CellOf(const PropNode& node) noexcept;

// As ReadNode, of a property that has data.
HRESULT ReadNodeData(const PropNode& node, void* root, SPropValue& out) noexcept;
// The stored value into `out`, which is written only on success: out-of-line data goes into a block chained
// to `root`, or into a root block of its own when that is null.
inline HRESULT ReadNode(const PropNode& node, void* root, SPropValue& out) noexcept {
  if (node.record.dataLength != 0) return ReadNodeData(node, root, out);
  out = node.record.value;
  return S_OK;
}

// S_OK when equal (whole tag and value), MAPI_E_NOT_FOUND when not, MAPI_E_NO_SUPPORT for a type without
// comparison. Strings compare byte for byte.
HRESULT CompareNode(const PropNode& node, const SPropValue& value) noexcept;

}  // namespace orv
