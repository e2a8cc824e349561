#include "providers/book/provider/entry_kinds.h"

#include <algorithm>
#include <cstring>

namespace book {
namespace {

constexpr ULONG kLongKeySize = kKeySize + sizeof(uint32_t);

orv::kit::EntryRef LongRef(Kind kind, const EntryKey& key, uint32_t number) {
  BYTE bytes[kLongKeySize];
  std::memcpy(bytes, key.data(), kKeySize);
  std::memcpy(bytes + kKeySize, &number, sizeof number);
  return {kind, bytes};
}

}  // namespace

std::vector<orv::kit::KeyForm> KeyForms() {
  using orv::kit::KeyOfBytes;
  return {orv::kit::kNoKey, orv::kit::kNoKey, KeyOfBytes(kKeySize, kKeySize),
          KeyOfBytes(kLongKeySize, kLongKeySize), KeyOfBytes(kLongKeySize, kLongKeySize)};
}

orv::kit::EntryRef RefOfEntry(const EntryKey& key) { return {kEntry, key}; }

orv::kit::EntryRef RefOfKey(const RowKey& key) {
  return key.number != 0 ? LongRef(kNumber, key.entry, key.number) : RefOfEntry(key.entry);
}

orv::kit::EntryRef RefOfRow(const Row& row) {
  return row.isOneOfSeveral ? RefOfKey(row.key) : RefOfEntry(row.key.entry);
}

orv::kit::EntryRef RefOfMember(const EntryKey& list, uint32_t id) { return LongRef(kMember, list, id); }

RowKey PartsOf(const orv::kit::EntryRef& ref) {
  RowKey key;
  if (ref.key.size() >= kKeySize) std::copy_n(ref.key.begin(), kKeySize, key.entry.begin());
  if (ref.key.size() == kLongKeySize) std::memcpy(&key.number, ref.key.data() + kKeySize, sizeof key.number);
  return key;
}

std::optional<RowKey> RowKeyOf(const orv::kit::EntryRef& ref) {
  if (ref.kind != kEntry && ref.kind != kNumber) return std::nullopt;
  return PartsOf(ref);
}

}  // namespace book
