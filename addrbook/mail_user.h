// The user's own details: the one entry that the library keeps itself, one set for all profiles, in the
// current user's registry.
#pragma once

#include "orv/orvapi.h"
#include "props/base_prop.h"

namespace orv {

class CMailUser final : public PropObject<IMailUser> {
 public:
  CMailUser() = default;

  // Loads what is stored; SaveChanges writes nothing before that has succeeded.
  HRESULT Initialize();

  // Writes what bears the modified mark. The key stays open afterwards.
  HRESULT STDMETHODCALLTYPE SaveChanges(ULONG flags) override;
  HRESULT STDMETHODCALLTYPE CopyTo(ULONG excludedInterfaceCount, LPCIID excludedInterfaces,
                                   LPSPropTagArray exclude, ULONG_PTR uiParam, LPMAPIPROGRESS progress,
                                   LPCIID destinationInterface, LPVOID destination, ULONG flags,
                                   LPSPropProblemArray* problems) override;
  HRESULT STDMETHODCALLTYPE CopyProps(LPSPropTagArray include, ULONG_PTR uiParam, LPMAPIPROGRESS progress,
                                      LPCIID destinationInterface, LPVOID destination, ULONG flags,
                                      LPSPropProblemArray* problems) override;

 private:
  ~CMailUser() override = default;
  bool Supports(REFIID iid) const override;
  HRESULT AddMissingLocked();

  bool boundToRegistry_ = false;
};

// Opens the user's details. The interface identifier must be null; *type becomes MAPI_MAILUSER.
HRESULT OpenUserInfo(LPCIID iid, ULONG* type, IMailUser** user);

}  // namespace orv
