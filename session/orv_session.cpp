// The methods of IOrvSession, and the session's end.
#include "session/orv_session.h"

#include <cstring>
#include <utility>

#include "addrbook/recipient_expansion.h"
#include "addrbook/settings_store.h"
#include "orv/orvguids.h"
#include "platform/array_check.h"
#include "platform/boundary.h"
#include "platform/buffer.h"

namespace orv {
namespace {

// Hands an object of the session out with a reference of the caller's.
template <class Interface, class Object>
HRESULT HandOut(const ComPtr<Object>& object, ULONG flags, Lock& lock, Interface** out) {
  if (!IsWritableOut(out)) return MAPI_E_INVALID_PARAMETER;
  if (flags != 0) return MAPI_E_UNKNOWN_FLAGS;
  if (!object) return MAPI_E_NO_ACCESS;
  LockGuard guard(lock);
  *out = ComPtr<Object>(object).Detach();
  return S_OK;
}

}  // namespace

HRESULT COrvSession::Create(const WString& profile, IABServiceAdmin* admin, LoadedProviders& providers,
                            ComPtr<COrvSession>& session) {
  if (admin == nullptr && providers.Get() == nullptr) return MAPI_E_INVALID_PARAMETER;
  const auto created = ComPtr<COrvSession>::Adopt(new COrvSession(admin));
  const HRESULT hr = CAddrBook::Create(MakeProfileSettings(profile), providers.Get(), created->book_.Put());
  if (FAILED(hr)) return hr;
  created->providers_ = std::move(providers);
  if (CABServiceList* const list = created->providers_.Get()) list->Link().Open(*created->book_);
  session = created;
  return hr;
}

// Released from within a call, such as by a provider's callback or a dialog's command, it ends when the thread leaves
// that call: until then the call's way back leads through the providers.
void COrvSession::LastReferenceGone() {
  if (!book_ || !book_->Calls().Postpone([this] { delete this; })) delete this;
}

// While the providers are loaded the address book writes its changed settings and undoes registrations with them;
// a client may go on holding it and is told that the session has ended.
COrvSession::~COrvSession() {
  if (providers_.Get() != nullptr) providers_.Get()->Link().Close();
  if (book_) book_->Shutdown();
}

SCODE COrvSession::AllocateBuffer(ULONG size, LPVOID* buffer) { return OrvAllocateBuffer(size, buffer); }

SCODE COrvSession::AllocateMore(ULONG size, LPVOID root, LPVOID* buffer) {
  return OrvAllocateMore(size, root, buffer);
}

ULONG COrvSession::FreeBuffer(LPVOID buffer) { return OrvFreeBuffer(buffer); }

void COrvSession::FreeProws(LPSRowSet rows) { OrvFreeProws(rows); }

void COrvSession::FreePadrlist(LPADRLIST list) { OrvFreePadrlist(list); }

HRESULT COrvSession::OpenAddressBook(ULONG flags, LPADRBOOK* book) {
  return HandOut(book_, flags, ObjectLock(), book);
}

HRESULT COrvSession::AdminServices(ULONG flags, LPABSERVICEADMIN* admin) {
  return HandOut(admin_, flags, ObjectLock(), admin);
}

HRESULT COrvSession::ExpandRecipients(ULONG flags, LPADRLIST* list) {
  if (!IsWritableOut(list) || !IsReadableAddressList(*list) || (*list)->cEntries == 0)
    return MAPI_E_INVALID_PARAMETER;
  if (flags != 0) return MAPI_E_UNKNOWN_FLAGS;
  if (!book_) return MAPI_E_NO_ACCESS;
  // Holds the book beyond the session, should that end as the call goes out.
  const ComPtr<CAddrBook> book = book_;
  const Rundown::Call inside(&book->Calls());
  LockGuard guard(ObjectLock());
  return ExpandRecipientLists(book.Get(), list);
}

HRESULT COrvSession::GetSessionEntryID(ULONG* size, LPENTRYID* entryId) {
  if (!IsWritableOut(entryId) || !IsWritableOut(size)) return MAPI_E_INVALID_PARAMETER;
  MapiBuffer<ENTRYID> copy;
  if (FAILED(copy.Allocate(ORV_MIN_ENTRYID))) return MAPI_E_NOT_ENOUGH_MEMORY;
  static constexpr MAPIUID kSessionUid = {{ORV_USER_INFO_UID_BYTES}};
  std::memcpy(reinterpret_cast<BYTE*>(copy.Get()) + ORV_ENTRYID_UID_OFFSET, &kSessionUid, sizeof kSessionUid);
  *size = ORV_MIN_ENTRYID;
  *entryId = copy.Detach();
  return S_OK;
}

HRESULT COrvSession::GetProblems(ULONG flags, LPSRowSet* problems) {
  if (!IsWritableOut(problems)) return MAPI_E_INVALID_PARAMETER;
  if (flags != 0) return MAPI_E_UNKNOWN_FLAGS;
  if (providers_.Get() == nullptr) return MAPI_E_NO_ACCESS;
  return Guarded([&]() -> HRESULT {
    RowSetPtr rows;
    const HRESULT hr = providers_.Get()->Link().MakeRows(rows);
    if (SUCCEEDED(hr)) *problems = rows.Detach();
    return hr;
  });
}

}  // namespace orv
