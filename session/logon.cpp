// The steps of the logon, each undone by its owner when a later one fails.
#include "session/logon.h"

#include "hosting/provider_loader.h"
#include "platform/com_ptr.h"
#include "profiles/service_admin.h"
#include "session/orv_session.h"
#include "session/profile_resolution.h"

namespace orv {

HRESULT LogOn(const LogonRequest& request, IAddrBook** book, IOrvSession** session) {
  WString profile;
  if (const HRESULT hr = ResolveProfile(request.profileName, request.flags, profile); FAILED(hr)) return hr;

  // Declared in the order opposite to the clean-up: services' administration, providers, session.
  ComPtr<COrvSession> created;
  LoadedProviders providers;
  ComPtr<IABServiceAdmin> admin;
  HRESULT hr = CreateServiceAdmin(profile.c_str(), admin.Put());
  if (FAILED(hr)) return hr;
  providers = LoadedProviders(CABServiceList::Create());
  hr = LoadProviders(admin.Get(), providers.Get(), request.uiParam, request.flags);
  if (FAILED(hr)) return hr;
  hr = COrvSession::Create(profile, admin.Get(), providers, created);
  if (FAILED(hr)) return hr;

  // The session stands; whether its address book could be handed out too is not looked at.
  if (book != nullptr) created->OpenAddressBook(0, book);
  *session = created.Detach();
  return hr;
}

}  // namespace orv
