// Routing and life of the address book; its settings are in addr_book_settings.cpp. Providers are called without any
// lock of ours. A call comes in first of all and goes out last, since the session may end as it goes.
#include "addrbook/addr_book.h"

#include <utility>

#include "addrbook/prepare_recips.h"
#include "addrbook/root_container.h"
#include "hosting/provider_list.h"
#include "platform/array_check.h"
#include "platform/boundary.h"
#include "platform/lock.h"
#include "props/entry_id.h"

namespace orv {

namespace {

SRWLOCK g_livingLock = SRWLOCK_INIT;
CAddrBook* g_living = nullptr;

}  // namespace

CAddrBook::CAddrBook(std::unique_ptr<SettingsStore> settings)
    : calls_(std::make_shared<Rundown>()), settings_(std::move(settings)) {
  const ExclusiveGuard guard(g_livingLock);
  nextLiving_ = std::exchange(g_living, this);
}

CAddrBook::~CAddrBook() {
  Shutdown();
  const ExclusiveGuard guard(g_livingLock);
  CAddrBook** link = &g_living;
  while (*link != this) link = &(*link)->nextLiving_;
  *link = nextLiving_;
}

CAddrBook* CAddrBook::FindLiving(const IAddrBook* book) {
  const ExclusiveGuard guard(g_livingLock);
  CAddrBook* living = g_living;
  while (living != nullptr && living != book) living = living->nextLiving_;
  return living;
}

Rundown* CAddrBook::CallsOf(const IAddrBook* book) {
  const CAddrBook* living = FindLiving(book);
  return living != nullptr ? living->calls_.get() : nullptr;
}

HRESULT CAddrBook::ErrorOfProvider(const IAddrBook& book, const EntryId& entryId, HRESULT result,
                                   LPMAPIERROR* error) {
  CAddrBook* living = FindLiving(&book);
  if (living == nullptr) return MAPI_E_NO_SUPPORT;
  const Rundown::Call inside(living->calls_.get());
  if (!inside) return MAPI_E_END_OF_SESSION;
  return living->Forward(entryId.Size(), entryId.Get(), [&](IAddrBook& provider) {
    return provider.GetLastError(result, MAPI_UNICODE, error);
  });
}

HRESULT CAddrBook::Create(std::unique_ptr<SettingsStore> settings, CABServiceList* providers,
                          CAddrBook** book) {
  if (settings == nullptr) return MAPI_E_INVALID_PARAMETER;
  return Guarded([&]() -> HRESULT {
    auto created = ComPtr<CAddrBook>::Adopt(new CAddrBook(std::move(settings)));
    if (const HRESULT hr = created->Initialize(providers); FAILED(hr)) {
      // Half made: there is no session to write anything for.
      created->settings_.reset();
      return hr;
    }
    *book = created.Detach();
    return S_OK;
  });
}

HRESULT CAddrBook::Initialize(CABServiceList* providers) {
  {
    LockGuard guard(ObjectLock());
    if (const HRESULT hr = settings_->Load(Properties()); FAILED(hr)) return hr;
    // What was loaded is stored already; only what is set from now on is written.
    Properties().SetFlags(PROPNODE_MODIFIED, false);
  }
  advises_ = CABAdviseCList::Create();
  if (providers == nullptr) {
    // Nothing to route to and nothing to repair: such a book is handed out without a reference, and belongs
    // to whoever adds the first one.
    ForgetFirstReference();
    return S_OK;
  }
  providers_ = ComPtr<CABServiceList>::Share(providers);
  RepairSearchPath();
  return S_OK;
}

void CAddrBook::Shutdown() {
  if (settings_ == nullptr) return;
  // Providers that call in while they are told still find everything.
  const Rundown::Closing closing(*calls_);
  // Nobody is left to hear that the registry refused; what it had before stays.
  (void)Guarded([&] {
    LockGuard guard(ObjectLock());
    return settings_->Save(Properties());
  });
  if (advises_) advises_->Clear();
  settings_.reset();
}

bool CAddrBook::Supports(REFIID iid) const {
  return IsOneOf(iid, IID_IUnknown, IID_IMAPIProp, IID_IAddrBook);
}

HRESULT CAddrBook::CheckUsable() const {
  const Rundown::Call inside(calls_.get());
  return inside ? S_OK : MAPI_E_END_OF_SESSION;
}

HRESULT CAddrBook::FindProvider(ULONG size, const ENTRYID* entryId, IAddrBook** provider) const {
  if (RoutingUid(size, entryId) == nullptr) return MAPI_E_INVALID_ENTRYID;
  if (!providers_) return MAPI_E_NOT_FOUND;
  if (const HRESULT hr = providers_->FindByEntryId(size, entryId, provider); FAILED(hr)) return hr;
  return *provider != nullptr ? S_OK : MAPI_E_NO_ACCESS;
}

template <class Call>
HRESULT CAddrBook::Forward(ULONG size, const ENTRYID* entryId, Call&& call) {
  IAddrBook* provider = nullptr;
  if (const HRESULT hr = FindProvider(size, entryId, &provider); FAILED(hr)) return hr;
  return GuardedForeign([&] { return call(*provider); });
}

HRESULT CAddrBook::OpenEntry(ULONG size, LPENTRYID entryId, LPCIID iid, ULONG flags, ULONG* type,
                             LPUNKNOWN* object) {
  const Rundown::Call inside(calls_.get());
  if (!inside) return MAPI_E_END_OF_SESSION;
  if (!IsReadableEntryId(size, entryId)) return MAPI_E_INVALID_PARAMETER;
  // The user's own details have an opener of their own, not this one.
  if (IsUserInfoEntryId(size, entryId)) return MAPI_E_INVALID_ENTRYID;
  const bool named = iid == nullptr || IsReadable(iid, sizeof *iid);
  if (!named || !AreWritableOuts(type, object)) return MAPI_E_INVALID_PARAMETER;
  if (entryId == nullptr) return OpenRoot(type, object);
  return Forward(size, entryId, [&](IAddrBook& provider) {
    return provider.OpenEntry(size, entryId, iid, flags, type, object);
  });
}

HRESULT CAddrBook::OpenRoot(ULONG* type, LPUNKNOWN* object) {
  return Guarded([&]() -> HRESULT {
    auto root = ComPtr<CABContainer>::Adopt(new CABContainer);
    if (const HRESULT hr = root->Initialize(providers_.Get(), this, calls_); FAILED(hr)) return hr;
    *type = MAPI_ABCONT;
    *object = root.Detach();
    return S_OK;
  });
}

HRESULT CAddrBook::Advise(ULONG size, LPENTRYID entryId, ULONG events, LPMAPIADVISESINK sink,
                          ULONG* connection) {
  if (!IsWritableOut(connection)) return MAPI_E_INVALID_PARAMETER;
  *connection = 0;
  const Rundown::Call inside(calls_.get());
  if (!inside) return MAPI_E_END_OF_SESSION;
  if (size == 0 || entryId == nullptr) return MAPI_E_INVALID_PARAMETER;
  if (!IsReadableEntryId(size, entryId) || !IsReadableObject(sink)) return MAPI_E_INVALID_PARAMETER;
  return Forward(size, entryId, [&](IAddrBook& provider) {
    ULONG theirs = 0;
    const HRESULT hr = provider.Advise(size, entryId, events, sink, &theirs);
    return FAILED(hr) ? hr : RecordAdvise(theirs, provider, connection);
  });
}

// Without memory for the record the provider's registration stays in place, and the sink with it: callers
// that were refused keep their sink alive until the session's end.
HRESULT CAddrBook::RecordAdvise(ULONG providerConnection, IAddrBook& provider, ULONG* connection) {
  auto record = std::make_unique<AdviseRecord>();
  const HRESULT hr = CABAdviseCList::AddRegistration(record.get(), providerConnection, &provider);
  if (FAILED(hr)) return hr;
  *connection = advises_->Insert(std::move(record));
  return S_OK;
}

HRESULT CAddrBook::Unadvise(ULONG connection) {
  const Rundown::Call inside(calls_.get());
  // The session's end undoes it.
  if (!inside) return MAPI_E_NOT_FOUND;
  std::unique_ptr<AdviseRecord> record;
  if (const HRESULT hr = advises_->Remove(connection, record); FAILED(hr)) return hr;
  return CABAdviseCList::ReleaseRegistrations(*record);
}

HRESULT CAddrBook::NewEntry(ULONG_PTR uiParam, ULONG flags, ULONG containerSize, LPENTRYID container,
                            ULONG templateSize, LPENTRYID templateId, ULONG* newSize, LPENTRYID* newId) {
  const Rundown::Call inside(calls_.get());
  if (!inside) return MAPI_E_END_OF_SESSION;
  if (!IsReadableEntryId(containerSize, container) || !IsReadableEntryId(templateSize, templateId))
    return MAPI_E_INVALID_PARAMETER;
  const bool byContainer = containerSize != 0 && container != nullptr;
  const bool byTemplate = templateSize != 0 && templateId != nullptr;
  if (!byContainer && !byTemplate)
    return container == nullptr && templateId == nullptr ? MAPI_E_NO_SUPPORT : MAPI_E_INVALID_PARAMETER;
  if (!IsWritableOut(newSize) || !IsWritableOut(newId)) return MAPI_E_INVALID_PARAMETER;
  const ULONG size = byContainer ? containerSize : templateSize;
  return Forward(size, byContainer ? container : templateId, [&](IAddrBook& provider) {
    return provider.NewEntry(uiParam, flags, containerSize, container, templateSize, templateId, newSize,
                             newId);
  });
}

HRESULT CAddrBook::Details(ULONG_PTR* uiParam, LPFNDISMISS dismiss, LPVOID dismissContext, ULONG size,
                           LPENTRYID entryId, LPFNBUTTON button, LPVOID buttonContext, LPWSTR buttonText,
                           ULONG flags) {
  const Rundown::Call inside(calls_.get());
  if (!inside) return MAPI_E_END_OF_SESSION;
  // Four bytes, not eight: callers that keep a 32-bit window handle there are let through.
  if (!IsWritable(uiParam, sizeof(ULONG)) || !IsReadableEntryId(size, entryId))
    return MAPI_E_INVALID_PARAMETER;
  if (buttonText != nullptr && !IsReadableText(buttonText)) return MAPI_E_INVALID_PARAMETER;
  if (IsUserInfoEntryId(size, entryId)) return MAPI_E_INVALID_ENTRYID;
  return Forward(size, entryId, [&](IAddrBook& provider) {
    return provider.Details(uiParam, dismiss, dismissContext, size, entryId, button, buttonContext,
                            buttonText, flags);
  });
}

HRESULT CAddrBook::PrepareRecips(ULONG flags, LPSPropTagArray tags, LPADRLIST recipients) {
  const Rundown::Call inside(calls_.get());
  if (!inside) return MAPI_E_END_OF_SESSION;
  if (flags != 0 || !IsReadableAddressList(recipients)) return MAPI_E_INVALID_PARAMETER;
  return GuardedForeign([&] { return PrepareRecipients(providers_.Get(), tags, *recipients); });
}

}  // namespace orv
