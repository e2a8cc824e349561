// The session: root of what a client does after its logon. It owns the loaded providers, the address book and the
// administration of the profile's services, and ends them in that order.
#pragma once

#include "addrbook/addr_book.h"
#include "hosting/provider_loader.h"
#include "orv/orvapi.h"
#include "platform/com_object.h"
#include "platform/com_ptr.h"

namespace orv {

class COrvSession final : public ComObject<IOrvSession2> {
 public:
  // Creates the address book over the providers. They stay the caller's after a failure. A profile without its
  // services' administration is MAPI_E_INVALID_PARAMETER.
  static HRESULT Create(const WString& profile, IABServiceAdmin* admin, LoadedProviders& providers,
                        ComPtr<COrvSession>& session);

  HRESULT STDMETHODCALLTYPE GetLastError(HRESULT, ULONG, LPMAPIERROR*) override { return S_OK; }
  SCODE STDMETHODCALLTYPE AllocateBuffer(ULONG size, LPVOID* buffer) override;
  SCODE STDMETHODCALLTYPE AllocateMore(ULONG size, LPVOID root, LPVOID* buffer) override;
  ULONG STDMETHODCALLTYPE FreeBuffer(LPVOID buffer) override;
  void STDMETHODCALLTYPE FreeProws(LPSRowSet rows) override;
  void STDMETHODCALLTYPE FreePadrlist(LPADRLIST list) override;
  HRESULT STDMETHODCALLTYPE OpenAddressBook(ULONG flags, LPADRBOOK* book) override;
  HRESULT STDMETHODCALLTYPE ExpandRecipients(ULONG flags, LPADRLIST* list) override;
  HRESULT STDMETHODCALLTYPE GetSessionEntryID(ULONG* size, LPENTRYID* entryId) override;
  HRESULT STDMETHODCALLTYPE AdminServices(ULONG flags, LPABSERVICEADMIN* admin) override;
  HRESULT STDMETHODCALLTYPE GetProblems(ULONG flags, LPSRowSet* problems) override;

 protected:
  bool Supports(REFIID iid) const override {
    return IsOneOf(iid, IID_IUnknown, IID_IOrvSession, IID_IOrvSession2);
  }
  void LastReferenceGone() override;

 private:
  explicit COrvSession(IABServiceAdmin* admin) : admin_(ComPtr<IABServiceAdmin>::Share(admin)) {}
  ~COrvSession() override;

  // In the order opposite to that of the session's end.
  ComPtr<IABServiceAdmin> admin_;
  LoadedProviders providers_;
  ComPtr<CAddrBook> book_;
};

}  // namespace orv
