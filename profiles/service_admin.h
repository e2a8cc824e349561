// Administration of the message services of one profile: lists, adds and removes them, lets them configure themselves,
// opens their profile sections.
#pragma once

#include <memory>
#include <span>

#include "hosting/service_entry.h"
#include "orv/orvapi.h"
#include "platform/com_object.h"
#include "platform/com_ptr.h"
#include "profiles/service_store.h"

namespace orv {

// Loads the profile's services at once; the failure of that is returned and nothing handed out.
HRESULT CreateServiceAdmin(const WCHAR* profile, IABServiceAdmin** out);

class CABServiceAdmin;
// The same for a dialog that may be cancelled.
HRESULT CreateUndoableServiceAdmin(const WCHAR* profile, ComPtr<CABServiceAdmin>& out);

// Keeps one loaded copy of the profile's services, until it is given away as a table or replaced by a newer one.
class CABServiceAdmin final : public ComObject<IABServiceAdmin> {
 public:
  // What is changed through the object is noted in `journal`, unless that is null.
  CABServiceAdmin(const WCHAR* profile, std::unique_ptr<ServiceJournal> journal)
      : profile_(profile), journal_(std::move(journal)) {}

  HRESULT STDMETHODCALLTYPE GetLastError(HRESULT result, ULONG flags, LPMAPIERROR* error) override;
  HRESULT STDMETHODCALLTYPE GetMsgServiceTable(ULONG flags, LPMAPITABLE* table) override;
  HRESULT STDMETHODCALLTYPE CreateMsgService(LPCWSTR service, LPCWSTR displayName, LPCWSTR extraConfig,
                                             ULONG resourceFlags, ULONG_PTR uiParam, ULONG flags) override;
  HRESULT STDMETHODCALLTYPE DeleteMsgService(const MAPIUID* uid) override;
  HRESULT STDMETHODCALLTYPE ConfigureMsgService(const MAPIUID* uid, ULONG_PTR uiParam, ULONG flags,
                                                ULONG count, LPSPropValue values,
                                                LPPROFSECT* section) override;
  HRESULT STDMETHODCALLTYPE OpenProfileSection(const MAPIUID* uid, LPCIID iid, ULONG flags,
                                               LPPROFSECT* section) override;

  // Nothing in the library calls it: the key of the profile, for whoever keeps more there than services.
  HRESULT OpenProfileKey(registry_store::OpenMode mode, RegKey& key) const;

  // What the profile sections of this object read and write. May throw std::bad_alloc.
  HRESULT ReadService(const MAPIUID& uid, PropValues& values);
  HRESULT WriteService(const MAPIUID& uid, std::span<const SPropValue> values);
  HRESULT LoadStore();
  // Undoes what was changed through this object; what other programs changed meanwhile stays.
  HRESULT TakeBack();

 private:
  struct Request;

  bool Supports(REFIID iid) const override { return IsOneOf(iid, IID_IUnknown, IID_IABServiceAdmin); }

  HRESULT AddUnderNewUid(ServiceStore& store, const SRow& row, MAPIUID& uid);
  HRESULT CreateFromRow(const SRow& row, const Request& request);
  HRESULT SetUpService(const MAPIUID& uid, const Request& request);
  HRESULT AskService(const MAPIUID& uid, const ServiceEntryCall& call, LPPROFSECT* section);
  HRESULT LoadStoreLocked();
  template <class Load>
  HRESULT LoadAnew(Load load);
  void ReplaceStore(std::unique_ptr<ServiceStore> store) noexcept;

  const WString profile_;
  // Guards the loaded store alone and is never held while anybody else's code runs: sections save through it
  // while an entry function runs under the object's lock.
  Lock storeLock_;
  std::unique_ptr<ServiceStore> store_;
  const std::unique_ptr<ServiceJournal> journal_;
};

}  // namespace orv
