// The connections of one address book.
#include "addrbook/advise_list.h"

#include <utility>

#include "platform/boundary.h"

namespace orv {

ComPtr<CABAdviseCList> CABAdviseCList::Create() { return ComPtr<CABAdviseCList>::Adopt(new CABAdviseCList); }

bool CABAdviseCList::Supports(REFIID iid) const { return IsOneOf(iid, IID_IUnknown); }

HRESULT CABAdviseCList::AddRegistration(AdviseRecord* record, ULONG connection, IAddrBook* provider) {
  if (record == nullptr) return MAPI_E_INVALID_PARAMETER;
  return Guarded([&]() -> HRESULT {
    auto registration = std::make_unique<AdviseRegistration>();
    registration->connection = connection;
    registration->provider = ComPtr<IAddrBook>::Share(provider);
    registration->next = std::move(record->registrations);
    record->registrations = std::move(registration);
    return S_OK;
  });
}

HRESULT CABAdviseCList::ReleaseRegistrations(AdviseRecord& record) {
  HRESULT result = S_OK;
  // Unlinked before its provider is told: a provider that calls back in finds only what is still open.
  while (std::unique_ptr<AdviseRegistration> open = std::move(record.registrations)) {
    record.registrations = std::move(open->next);
    IAddrBook* provider = open->provider.Detach();
    const HRESULT told = GuardedForeign([&]() -> HRESULT {
      provider->Unadvise(open->connection);
      return S_OK;
    });
    const HRESULT released = GuardedForeign([&]() -> HRESULT {
      provider->Release();
      return S_OK;
    });
    if (FAILED(told) || FAILED(released)) result = MAPI_E_CALL_FAILED;
  }
  return result;
}

ULONG CABAdviseCList::Insert(std::unique_ptr<AdviseRecord> record) {
  LockGuard guard(ObjectLock());
  record->connection = nextConnection_++;
  ++count_;
  record->next = std::move(head_);
  head_ = std::move(record);
  return head_->connection;
}

HRESULT CABAdviseCList::Remove(ULONG connection, std::unique_ptr<AdviseRecord>& record) {
  LockGuard guard(ObjectLock());
  for (std::unique_ptr<AdviseRecord>* link = &head_; *link != nullptr; link = &(*link)->next) {
    if ((*link)->connection != connection) continue;
    record = std::move(*link);
    *link = std::move(record->next);
    --count_;
    return S_OK;
  }
  return MAPI_E_NOT_FOUND;
}

HRESULT CABAdviseCList::Find(ULONG connection, AdviseRecord** record) const {
  LockGuard guard(ObjectLock());
  for (AdviseRecord* candidate = head_.get(); candidate != nullptr; candidate = candidate->next.get()) {
    if (candidate->connection != connection) continue;
    *record = candidate;
    return S_OK;
  }
  return MAPI_E_NOT_FOUND;
}

// Null when there is none, and the numbers then begin anew.
std::unique_ptr<AdviseRecord> CABAdviseCList::TakeNewest() {
  LockGuard guard(ObjectLock());
  std::unique_ptr<AdviseRecord> record = std::move(head_);
  if (record == nullptr) {
    nextConnection_ = 1;
  } else {
    head_ = std::move(record->next);
    --count_;
  }
  return record;
}

void CABAdviseCList::Clear() {
  // The clients are gone; nobody is left to hear of a provider that failed.
  while (const std::unique_ptr<AdviseRecord> record = TakeNewest()) (void)ReleaseRegistrations(*record);
}

}  // namespace orv
