#include "props/entry_id.h"

#include <cstring>

#include "orv/orvguids.h"
#include "platform/buffer.h"

namespace orv {

const std::array<BYTE, ORV_MIN_ENTRYID> kUserInfoEntryId = {0, 0, 0, 0, ORV_USER_INFO_UID_BYTES};

EntryId::EntryId(ULONG size, const ENTRYID* entryId)
    : EntryId(SBinary{size, reinterpret_cast<BYTE*>(const_cast<ENTRYID*>(entryId))}) {}

ENTRYID* EntryId::Get() const noexcept {
  return bytes_.empty() ? nullptr : reinterpret_cast<ENTRYID*>(const_cast<char*>(bytes_.data()));
}

HRESULT EntryId::CopyTo(ULONG* size, ENTRYID** entryId) const noexcept {
  MapiBuffer<ENTRYID> copy;
  if (const HRESULT hr = copy.Allocate(bytes_.size()); FAILED(hr)) return hr;
  std::memcpy(copy.Get(), bytes_.data(), bytes_.size());
  *size = Size();
  *entryId = copy.Detach();
  return S_OK;
}

std::string_view EntryId::BytesOf(const SBinary& binary) noexcept {
  if (binary.cb == 0 || binary.lpb == nullptr) return {};
  return {reinterpret_cast<const char*>(binary.lpb), binary.cb};
}

const MAPIUID* RoutingUid(ULONG size, const ENTRYID* entryId) {
  if (entryId == nullptr || size < ORV_MIN_ENTRYID) return nullptr;
  // A MAPIUID is bytes throughout, so it may be looked at wherever it lies.
  return reinterpret_cast<const MAPIUID*>(entryId->ab);
}

bool IsUserInfoEntryId(ULONG size, const ENTRYID* entryId) {
  if (size != ORV_MIN_ENTRYID) return false;
  const MAPIUID* uid = RoutingUid(size, entryId);
  return uid != nullptr &&
         std::memcmp(uid, kUserInfoEntryId.data() + ORV_ENTRYID_UID_OFFSET, sizeof(MAPIUID)) == 0;
}

}  // namespace orv
