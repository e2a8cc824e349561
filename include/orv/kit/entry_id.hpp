// Entry identifiers of a provider: made from what an entry is, and read back from bytes that come from outside.
//
//   offset  0   4  flags, zero: good for ever, may be stored
//           4  16  the MAPIUID that the provider registered
//          20   4  kind, least byte first: the author's numbers, from 0 on; 0 is the root container
//          24      key: of the form that the kind has
//
// Clients keep identifiers for years and compare them byte by byte: one entry has one, and kinds and forms of keys
// do not change from version to version.
#pragma once

#include <initializer_list>
#include <span>
#include <vector>

#include "orv/kit/values.hpp"

namespace orv::kit {

// How long the keys of a kind are, in bytes. A kind without keys has one entry.
struct KeyForm {
  ULONG least = 0, most = 0;
};
inline constexpr KeyForm kNoKey{0, 0};
inline constexpr KeyForm kNumberKey{8, 8};  // EntryRef::Number, as a row of a database has
constexpr KeyForm KeyOfBytes(ULONG least, ULONG most) { return {least, most}; }

// What an identifier says: which entry of the provider.
struct EntryRef {
  ULONG kind = 0;
  std::vector<BYTE> key;

  EntryRef() = default;
  explicit EntryRef(ULONG ofKind) : kind(ofKind) {}
  EntryRef(ULONG ofKind, std::span<const BYTE> bytes) : kind(ofKind), key(bytes.begin(), bytes.end()) {}
  // Of kNumberKey.
  EntryRef(ULONG ofKind, ULONGLONG number);
  // Of a key of 8 bytes or more, its first 8, least byte first; else 0.
  ULONGLONG Number() const noexcept;

  bool operator==(const EntryRef&) const = default;
};

// Immutable: any number of threads may use one.
class EntryIdCodec {
 public:
  // `forms`: of the keys of kind 0, 1, 2 and so on.
  EntryIdCodec(const MAPIUID& uid, std::vector<KeyForm> forms) : uid_(uid), forms_(std::move(forms)) {}

  // `key` has the form of the kind.
  std::vector<BYTE> Make(ULONG kind, std::span<const BYTE> key = {}) const;
  std::vector<BYTE> Make(const EntryRef& entry) const { return Make(entry.kind, entry.key); }
  // The identifier as PR_ENTRYID and PR_INSTANCE_KEY.
  void Identify(const EntryRef& entry, PropList& values) const;

  // Believes nothing: `id` may be null, unaligned and anybody's. MAPI_E_INVALID_ENTRYID: too short, flags that are
  // not zero, another MAPIUID, a key of another length than the kind has. MAPI_E_NOT_FOUND: of a kind that there is
  // not, as another version of the provider may have issued it. `entry` is untouched then.
  HRESULT Read(size_t size, const void* id, EntryRef* entry) const;

  // Whether the bytes begin as identifiers of this provider do, whatever follows.
  bool IsOurs(size_t size, const void* id) const noexcept;

  const MAPIUID& Uid() const noexcept { return uid_; }

 private:
  MAPIUID uid_;
  std::vector<KeyForm> forms_;
};

}  // namespace orv::kit
