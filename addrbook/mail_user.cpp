// The user information mail user.
#include "addrbook/mail_user.h"

#include <array>

#include "hosting/object_copy.h"
#include "orv/orvflags.h"
#include "orv/orvtags.h"
#include "platform/com_ptr.h"
#include "profiles/registry_store.h"
#include "props/entry_id.h"

namespace orv {
namespace {

using registry_store::OpenMode;

// What every user information object has, whatever is stored.
std::array<SPropValue, 2> InitialProperties() {
  std::array<SPropValue, 2> values = {};
  values[0].ulPropTag = PR_ENTRYID;
  values[0].Value.bin = {ORV_MIN_ENTRYID, const_cast<LPBYTE>(kUserInfoEntryId.data())};
  values[1].ulPropTag = PR_OBJECT_TYPE;
  values[1].Value.l = MAPI_MAILUSER;
  return values;
}

// The three tests are chained, so that no identifier passes them all and each one is refused; who asks
// with null gets the mail user.
HRESULT CheckInterface(LPCIID iid) {
  if (iid == nullptr) return S_OK;
  if (!IsReadable(iid, sizeof *iid)) return MAPI_E_INVALID_PARAMETER;
  for (const IID* accepted : {&IID_IUnknown, &IID_IMAPIProp, &IID_IMailUser}) {
    if (!IsEqualGUID(*iid, *accepted)) return MAPI_E_INTERFACE_NOT_SUPPORTED;
  }
  return S_OK;
}

}  // namespace

HRESULT CMailUser::Initialize() {
  return Guarded([&]() -> HRESULT {
    LockGuard guard(ObjectLock());
    const auto initial = InitialProperties();
    if (const HRESULT hr = LoadLocked(initial); FAILED(hr)) return hr;
    RegKey key;
    if (const HRESULT hr = registry_store::OpenUserInfoKey(OpenMode::kCreate, key); FAILED(hr)) return hr;
    if (const HRESULT hr = registry_store::LoadPropList(Properties(), key); FAILED(hr)) return hr;
    if (const HRESULT hr = AddMissingLocked(); FAILED(hr)) return hr;
    boundToRegistry_ = true;
    return S_OK;
  });
}

// Loading has emptied the list. A stored value wins; one that is not stored comes back last, to be written.
HRESULT CMailUser::AddMissingLocked() {
  for (const SPropValue& value : InitialProperties()) {
    if (Properties().Find(value.ulPropTag) != nullptr) continue;
    if (const HRESULT hr = Properties().Set(value); FAILED(hr)) return hr;
  }
  return S_OK;
}

bool CMailUser::Supports(REFIID iid) const {
  return IsOneOf(iid, IID_IUnknown, IID_IMAPIProp, IID_IMailUser);
}

HRESULT CMailUser::SaveChanges(ULONG) {
  return Guarded([&]() -> HRESULT {
    LockGuard guard(ObjectLock());
    if (!boundToRegistry_) return S_OK;
    RegKey key;
    if (const HRESULT hr = registry_store::OpenUserInfoKey(OpenMode::kCreate, key); FAILED(hr)) return hr;
    const HRESULT hr = registry_store::SavePropList(Properties(), key);
    if (SUCCEEDED(hr)) SetModified(false);
    // The handle stays open, so that the key does not go away under a process that has saved once.
    (void)key.Detach();
    return hr;
  });
}

HRESULT CMailUser::CopyTo(ULONG, LPCIID, LPSPropTagArray exclude, ULONG_PTR, LPMAPIPROGRESS,
                          LPCIID destinationInterface, LPVOID destination, ULONG flags,
                          LPSPropProblemArray* problems) {
  const CopyEnds ends = {&IID_IMailUser, this, destinationInterface, static_cast<IUnknown*>(destination)};
  return GuardedForeign([&] { return CopyObject(ends, exclude, flags, problems); });
}

HRESULT CMailUser::CopyProps(LPSPropTagArray include, ULONG_PTR, LPMAPIPROGRESS, LPCIID destinationInterface,
                             LPVOID destination, ULONG flags, LPSPropProblemArray* problems) {
  const CopyEnds ends = {&IID_IMailUser, this, destinationInterface, static_cast<IUnknown*>(destination)};
  return GuardedForeign([&] { return CopyObjectProps(ends, include, flags, problems); });
}

HRESULT OpenUserInfo(LPCIID iid, ULONG* type, IMailUser** user) {
  if (!IsWritableOut(type) || !IsWritableOut(user)) return MAPI_E_INVALID_PARAMETER;
  if (const HRESULT hr = CheckInterface(iid); FAILED(hr)) return hr;
  return Guarded([&]() -> HRESULT {
    auto opened = ComPtr<CMailUser>::Adopt(new CMailUser);
    if (const HRESULT hr = opened->Initialize(); FAILED(hr)) return hr;
    *user = opened.Detach();
    *type = MAPI_MAILUSER;
    return S_OK;
  });
}

}  // namespace orv
