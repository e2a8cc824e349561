// Stored cells from anywhere: whatever is believed must be readable, comparable and storable again.
#include <cstdint>
#include <cstring>
#include <span>

#include "platform/process.h"
#include "props/prop_list.h"

namespace {

// Cells one behind the other, each cut where its own length says, or at the end of the input.
std::span<const std::byte> TakeCell(std::span<const std::byte>& input) {
  std::uint32_t length = 0;
  if (input.size() >= sizeof length) std::memcpy(&length, input.data(), sizeof length);
  const std::size_t size = length == 0 || length > input.size() ? input.size() : length;
  const auto cell = input.first(size);
  input = input.subspan(size);
  return cell;
}

void Check(bool condition) {
  if (!condition) __builtin_trap();
}

void CheckNode(const orv::PropNode& node) {
  orv::MapiBuffer<SPropValue> value;
  Check(value.AllocateArray(1) == S_OK);
  Check(orv::ReadNode(node, value.Get(), *value) == S_OK);
  // Storing the value again reads every string and byte that the value points at.
  orv::PropNodePtr again;
  Check(orv::NodeFromValue(*value, again) == S_OK);
  Check(again->record.dataLength <= node.record.dataLength);
  orv::PropNodePtr loaded;
  Check(orv::NodeFromCell(orv::CellOf(*again), loaded) == S_OK);
  orv::CompareNode(node, *value);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool ready = orv::process::AcquireTaskAllocator();
  Check(ready);
  auto input = std::as_bytes(std::span(data, size));
  orv::PropList list;
  while (!input.empty()) {
    orv::PropNodePtr node;
    if (FAILED(orv::NodeFromCell(TakeCell(input), node))) continue;
    CheckNode(*node);
    list.Link(std::move(node));
  }
  orv::PropValues all;
  Check(list.GetValues(nullptr, all) == S_OK && all.count == list.Count());
  return 0;
}
