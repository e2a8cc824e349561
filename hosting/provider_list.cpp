// Provider records and their list. Portable: the native build compiles it with stand-ins for library loading.
#include "hosting/provider_list.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

#include "orv/orvapi.h"

namespace orv {
namespace {

bool SameUid(const MAPIUID& a, const MAPIUID& b) noexcept { return std::memcmp(&a, &b, sizeof a) == 0; }

// Foreign code at a point where nothing can be reported any more: what it throws ends here.
void ReleaseQuietly(IAddrBook* provider) noexcept {
  try {
    if (provider != nullptr) provider->Release();
  } catch (...) {
  }
}

}  // namespace

ProviderRecord::ProviderRecord(Module library, const MAPIUID& service) noexcept
    : library_(std::move(library)), serviceUid_(service) {}

ProviderRecord::~ProviderRecord() { ReleaseQuietly(provider_); }

bool ProviderRecord::HasRegistered(const MAPIUID& uid) const noexcept {
  return std::any_of(registeredUids_.begin(), registeredUids_.end(),
                     [&](const MAPIUID& registered) { return SameUid(registered, uid); });
}

HRESULT ProviderRecord::RegisterUid(const MAPIUID& uid) {
  if (HasRegistered(uid)) return MAPI_E_COLLISION;
  registeredUids_.push_back(uid);
  return S_OK;
}

ComPtr<CABServiceList> CABServiceList::Create() { return ComPtr<CABServiceList>::Adopt(new CABServiceList); }

bool CABServiceList::Supports(REFIID iid) const { return IsOneOf(iid, IID_IUnknown); }

void CABServiceList::Add(std::shared_ptr<ProviderRecord> record) { records_.push_front(std::move(record)); }

void CABServiceList::UnloadAll() noexcept {
  while (!records_.empty()) {
    // Unlinked before its provider is released: a provider that looks back finds itself gone.
    Records leaving;
    leaving.splice(leaving.begin(), records_, records_.begin());
  }
}

HRESULT CABServiceList::TakeByServiceUid(const MAPIUID& uid, std::shared_ptr<ProviderRecord>* record) {
  const auto found = std::find_if(records_.begin(), records_.end(), [&](const auto& candidate) {
    return SameUid(candidate->ServiceUid(), uid);
  });
  if (found == records_.end()) return MAPI_E_NOT_FOUND;
  *record = std::move(*found);
  records_.erase(found);
  return S_OK;
}

HRESULT CABServiceList::FindByServiceUid(const MAPIUID& uid, ProviderRecord** record) const {
  for (const auto& candidate : records_) {
    if (!SameUid(candidate->ServiceUid(), uid)) continue;
    *record = candidate.get();
    return S_OK;
  }
  return MAPI_E_NOT_FOUND;
}

HRESULT CABServiceList::FindByRegisteredUid(const MAPIUID& uid, IAddrBook** provider,
                                            std::size_t* index) const {
  std::size_t position = 0;
  for (const auto& record : records_) {
    if (record->HasRegistered(uid)) {
      *provider = record->Provider();
      if (index != nullptr) *index = position;
      return S_OK;
    }
    ++position;
  }
  return MAPI_E_NOT_FOUND;
}

HRESULT CABServiceList::FindByEntryId(ULONG size, const ENTRYID* entryId, IAddrBook** provider,
                                      std::size_t* index) const {
  if (entryId == nullptr || size < ORV_MIN_ENTRYID) return MAPI_E_NOT_FOUND;
  MAPIUID uid;
  std::memcpy(&uid, reinterpret_cast<const BYTE*>(entryId) + ORV_ENTRYID_UID_OFFSET, sizeof uid);
  return FindByRegisteredUid(uid, provider, index);
}

}  // namespace orv
