// Provider records and their list. Portable: the native build compiles it with stand-ins for library loading.
#include "hosting/provider_list.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "orv/orvapi.h"
#include "props/entry_id.h"

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

template <class Records>
auto FindByService(Records& records, const MAPIUID& uid) {
  return std::find_if(records.begin(), records.end(),
                      [&](const auto& record) { return SameUid(record->ServiceUid(), uid); });
}

}  // namespace

RegisteredUids::~RegisteredUids() {
  for (const Node* node = newest_.load(); node != nullptr;) delete std::exchange(node, node->next);
}

bool RegisteredUids::Has(const MAPIUID& uid) const noexcept {
  return std::any_of(begin(), end(), [&](const MAPIUID& registered) { return SameUid(registered, uid); });
}

HRESULT RegisteredUids::Register(const MAPIUID& uid) {
  LockGuard guard(registering_);
  if (closed_) return MAPI_E_INVALID_PARAMETER;
  if (Has(uid)) return MAPI_E_COLLISION;
  newest_.store(new Node{uid, newest_.load()}, std::memory_order_release);
  return S_OK;
}

void RegisteredUids::Close() noexcept {
  LockGuard guard(registering_);
  closed_ = true;
}

ProviderRecord::ProviderRecord(Module library, ServiceIdentity service)
    : library_(std::move(library)),
      service_(std::move(service)),
      registered_(std::make_shared<RegisteredUids>()) {}

// Closed first: a provider that looks back while it is released finds itself gone.
ProviderRecord::~ProviderRecord() {
  registered_->Close();
  ReleaseQuietly(provider_);
}

ComPtr<CABServiceList> CABServiceList::Create() { return ComPtr<CABServiceList>::Adopt(new CABServiceList); }

bool CABServiceList::Supports(REFIID iid) const { return IsOneOf(iid, IID_IUnknown); }

void CABServiceList::Add(std::unique_ptr<ProviderRecord> record) { records_.push_front(std::move(record)); }

void CABServiceList::UnloadAll() noexcept {
  while (!records_.empty()) {
    // Unlinked before its provider is released, so that no lookup finds it meanwhile.
    Records leaving;
    leaving.splice(leaving.begin(), records_, records_.begin());
  }
}

HRESULT CABServiceList::TakeByServiceUid(const MAPIUID& uid, std::unique_ptr<ProviderRecord>* record) {
  const auto found = FindByService(records_, uid);
  if (found == records_.end()) return MAPI_E_NOT_FOUND;
  *record = std::move(*found);
  records_.erase(found);
  return S_OK;
}

HRESULT CABServiceList::FindByServiceUid(const MAPIUID& uid, ProviderRecord** record) const {
  const auto found = FindByService(records_, uid);
  if (found == records_.end()) return MAPI_E_NOT_FOUND;
  *record = found->get();
  return S_OK;
}

HRESULT CABServiceList::FindByRegisteredUid(const MAPIUID& uid, IAddrBook** provider,
                                            std::size_t* index) const {
  std::size_t position = 0;
  for (const auto& record : records_) {
    if (record->Registered().Has(uid)) {
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
  const MAPIUID* uid = RoutingUid(size, entryId);
  return uid == nullptr ? MAPI_E_NOT_FOUND : FindByRegisteredUid(*uid, provider, index);
}

}  // namespace orv
