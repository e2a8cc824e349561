// Entry identifiers as far as the library reads them: four flag bytes, then the UID of the provider that issued them;
// what follows is the provider's. The one identifier of our own is that of the user information mail user.
#pragma once

#include <array>
#include <compare>
#include <string>
#include <string_view>

#include "orv/orvtypes.h"

namespace orv {

// An identifier of our own keeping: a copy, so that whoever issued it may go. May throw std::bad_alloc.
class EntryId {
 public:
  EntryId() = default;
  // Empty for a binary that is null whatever its count says.
  explicit EntryId(const SBinary& binary) : bytes_(BytesOf(binary)) {}
  EntryId(ULONG size, const ENTRYID* entryId);

  bool IsEmpty() const noexcept { return bytes_.empty(); }
  ULONG Size() const noexcept { return static_cast<ULONG>(bytes_.size()); }
  // As the interfaces take it, which is without const; null when empty.
  ENTRYID* Get() const noexcept;
  SBinary Binary() const noexcept { return {Size(), reinterpret_cast<BYTE*>(Get())}; }
  std::string_view Bytes() const noexcept { return bytes_; }

  bool operator==(const EntryId&) const = default;

  // A copy in a root buffer, for a client; both outs are written on success only.
  HRESULT CopyTo(ULONG* size, ENTRYID** entryId) const noexcept;

  static std::string_view BytesOf(const SBinary& binary) noexcept;

 private:
  std::string bytes_;
};

// The user information mail user, byte for byte as clients may compare it.
extern const std::array<BYTE, ORV_MIN_ENTRYID> kUserInfoEntryId;

// The UID by which an identifier is routed; null for one that is null or too short to have it.
const MAPIUID* RoutingUid(ULONG size, const ENTRYID* entryId);

// Exactly 20 bytes with our UID; the flag bytes do not count. A longer one that begins alike belongs to a
// provider.
bool IsUserInfoEntryId(ULONG size, const ENTRYID* entryId);

}  // namespace orv
