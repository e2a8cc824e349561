// The address book that a session hands out. It owns no entry: what carries an entry identifier goes to the
// provider that issued it. Its own are three settings of the profile and the pairing of advise connections.
#pragma once

#include <memory>

#include "addrbook/advise_list.h"
#include "addrbook/settings_store.h"
#include "orv/orvapi.h"
#include "platform/com_ptr.h"
#include "props/prop_object.h"

namespace orv {

class CABServiceList;

class CAddrBook final : public PropObject<IAddrBook> {
 public:
  // Loads the settings, shares `providers` and repairs the search path. A null `settings` is
  // MAPI_E_INVALID_PARAMETER. The object comes with the caller's one reference; without a provider list it comes
  // unrepaired and with none: who wants to keep it adds one, and the release after that destroys it.
  static HRESULT Create(ULONG_PTR uiParam, HINSTANCE resources, std::unique_ptr<SettingsStore> settings,
                        CABServiceList* providers, CAddrBook** book);

  // The session's end, told while the providers are still loaded: writes the changed settings, undoes the open
  // registrations, forgets the session. Clients may hold the object longer. A second call does nothing.
  void Shutdown();

  // What the session handed over for the user interface.
  ULONG_PTR UiParam() const { return uiParam_; }
  HINSTANCE Resources() const { return resources_; }
};

}  // namespace orv
