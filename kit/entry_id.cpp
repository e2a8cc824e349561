#include "orv/kit/entry_id.hpp"

#include <algorithm>
#include <cstring>

#include "orv/orvtags.h"

namespace orv::kit {
namespace {

constexpr size_t kKindOffset = ORV_ENTRYID_UID_OFFSET + sizeof(MAPIUID);
constexpr size_t kKeyOffset = kKindOffset + sizeof(ULONG);

// Numbers lie least byte first and anywhere.
template <class Number>
Number ReadNumber(const BYTE* bytes) noexcept {
  Number number = 0;
  for (size_t i = sizeof(Number); i-- > 0;) number = static_cast<Number>(number << 8 | bytes[i]);
  return number;
}
template <class Number>
void WriteNumber(BYTE* bytes, Number number) noexcept {
  for (size_t i = 0; i < sizeof(Number); ++i, number >>= 8) bytes[i] = static_cast<BYTE>(number);
}

}  // namespace

EntryRef::EntryRef(ULONG ofKind, ULONGLONG number) : kind(ofKind), key(sizeof number) {
  WriteNumber(key.data(), number);
}

ULONGLONG EntryRef::Number() const noexcept {
  return key.size() < sizeof(ULONGLONG) ? 0 : ReadNumber<ULONGLONG>(key.data());
}

std::vector<BYTE> EntryIdCodec::Make(ULONG kind, std::span<const BYTE> key) const {
  std::vector<BYTE> id(kKeyOffset + key.size());
  std::memcpy(id.data() + ORV_ENTRYID_UID_OFFSET, &uid_, sizeof uid_);
  WriteNumber(id.data() + kKindOffset, kind);
  std::copy(key.begin(), key.end(), id.begin() + kKeyOffset);
  return id;
}

void EntryIdCodec::Identify(const EntryRef& entry, PropList& values) const {
  const std::vector<BYTE> id = Make(entry);
  values.Set(PR_INSTANCE_KEY, id);
  values.Set(PR_ENTRYID, id);
}

bool EntryIdCodec::IsOurs(size_t size, const void* id) const noexcept {
  static constexpr BYTE kForEver[ORV_ENTRYID_UID_OFFSET] = {};
  if (id == nullptr || size < kKindOffset) return false;
  const auto* bytes = static_cast<const BYTE*>(id);
  return std::memcmp(bytes, kForEver, sizeof kForEver) == 0 &&
         std::memcmp(bytes + ORV_ENTRYID_UID_OFFSET, &uid_, sizeof uid_) == 0;
}

HRESULT EntryIdCodec::Read(size_t size, const void* id, EntryRef* entry) const {
  if (!IsOurs(size, id) || size < kKeyOffset) return MAPI_E_INVALID_ENTRYID;
  const auto* bytes = static_cast<const BYTE*>(id);
  const auto kind = ReadNumber<ULONG>(bytes + kKindOffset);
  if (kind >= forms_.size()) return MAPI_E_NOT_FOUND;
  const size_t length = size - kKeyOffset;
  if (length < forms_[kind].least || length > forms_[kind].most) return MAPI_E_INVALID_ENTRYID;
  *entry = EntryRef(kind, {bytes + kKeyOffset, length});
  return S_OK;
}

}  // namespace orv::kit
