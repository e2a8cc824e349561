// The address book that a session hands out. It owns no entry: what carries an entry identifier goes to the
// provider that issued it. Its own are three settings of the profile and the pairing of advise connections.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "addrbook/advise_list.h"
#include "addrbook/settings_store.h"
#include "orv/orvapi.h"
#include "platform/com_ptr.h"
#include "platform/rundown.h"
#include "props/base_prop.h"

namespace orv {

class CABServiceList;
class EntryId;

class CAddrBook final : public PropObject<IAddrBook> {
 public:
  // Loads the settings, shares `providers` and repairs the search path. A null `settings` is
  // MAPI_E_INVALID_PARAMETER. The object comes with the caller's one reference; without a provider list it
  // comes unrepaired and with none: who wants to keep it adds one, and the release after that destroys it.
  static HRESULT Create(std::unique_ptr<SettingsStore> settings, CABServiceList* providers, CAddrBook** book);

  // The session's end, told while the providers are still loaded: waits until the calls of other threads are out and
  // refuses those that come later, writes the changed settings, undoes the open registrations, forgets the session.
  // Clients may hold the object longer. A second call does nothing.
  void Shutdown();

  // Where a call that uses the book has to come in, valid while the book is held; null for a book that is none of ours.
  static Rundown* CallsOf(const IAddrBook* book);
  Rundown& Calls() const { return *calls_; }

  // GetLastError of the provider that issued the identifier, in Unicode, for the Address dialog, which holds the book.
  // MAPI_E_NO_SUPPORT for a book that is none of ours.
  static HRESULT ErrorOfProvider(const IAddrBook& book, const EntryId& entryId, HRESULT result,
                                 LPMAPIERROR* error);

  // The settings are nobody's to read or write: of the property methods only this one succeeds, writing
  // nothing.
  HRESULT STDMETHODCALLTYPE GetLastError(HRESULT, ULONG, LPMAPIERROR*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SaveChanges(ULONG) override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray, ULONG, ULONG*, LPSPropValue*) override {
    return MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE GetPropList(ULONG, LPSPropTagArray*) override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE SetProps(ULONG, LPSPropValue, LPSPropProblemArray*) override {
    return MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE DeleteProps(LPSPropTagArray, LPSPropProblemArray*) override {
    return MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE CopyTo(ULONG, LPCIID, LPSPropTagArray, ULONG_PTR, LPMAPIPROGRESS, LPCIID, LPVOID,
                                   ULONG, LPSPropProblemArray*) override {
    return MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE CopyProps(LPSPropTagArray, ULONG_PTR, LPMAPIPROGRESS, LPCIID, LPVOID, ULONG,
                                      LPSPropProblemArray*) override {
    return MAPI_E_NO_SUPPORT;
  }

  HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID entryId, LPCIID iid, ULONG flags, ULONG* type,
                                      LPUNKNOWN* object) override;
  // Not even two identical identifiers compare; callers compare bytes.
  HRESULT STDMETHODCALLTYPE CompareEntryIDs(ULONG, LPENTRYID, ULONG, LPENTRYID, ULONG, ULONG*) override {
    return MAPI_E_UNKNOWN_ENTRYID;
  }
  HRESULT STDMETHODCALLTYPE Advise(ULONG size, LPENTRYID entryId, ULONG events, LPMAPIADVISESINK sink,
                                   ULONG* connection) override;
  HRESULT STDMETHODCALLTYPE Unadvise(ULONG connection) override;
  HRESULT STDMETHODCALLTYPE CreateOneOff(LPWSTR, LPWSTR, LPWSTR, ULONG, ULONG*, LPENTRYID*) override {
    return MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE NewEntry(ULONG_PTR uiParam, ULONG flags, ULONG containerSize, LPENTRYID container,
                                     ULONG templateSize, LPENTRYID templateId, ULONG* newSize,
                                     LPENTRYID* newId) override;
  HRESULT STDMETHODCALLTYPE ResolveName(ULONG_PTR, ULONG, LPWSTR, LPADRLIST) override {
    return MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE Address(ULONG_PTR*, LPADRPARM, LPADRLIST*) override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE Details(ULONG_PTR* uiParam, LPFNDISMISS dismiss, LPVOID dismissContext,
                                    ULONG size, LPENTRYID entryId, LPFNBUTTON button, LPVOID buttonContext,
                                    LPWSTR buttonText, ULONG flags) override;
  HRESULT STDMETHODCALLTYPE RecipOptions(ULONG_PTR, ULONG, LPADRENTRY) override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE QueryDefaultRecipOpt(LPWSTR, ULONG, ULONG*, LPSPropValue*) override {
    return MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE GetPAB(ULONG* size, LPENTRYID* entryId) override;
  HRESULT STDMETHODCALLTYPE SetPAB(ULONG size, LPENTRYID entryId) override;
  HRESULT STDMETHODCALLTYPE GetDefaultDir(ULONG* size, LPENTRYID* entryId) override;
  HRESULT STDMETHODCALLTYPE SetDefaultDir(ULONG size, LPENTRYID entryId) override;
  HRESULT STDMETHODCALLTYPE GetSearchPath(ULONG flags, LPSRowSet* path) override;
  HRESULT STDMETHODCALLTYPE SetSearchPath(ULONG flags, LPSRowSet path) override;
  HRESULT STDMETHODCALLTYPE PrepareRecips(ULONG flags, LPSPropTagArray tags, LPADRLIST recipients) override;

 private:
  explicit CAddrBook(std::unique_ptr<SettingsStore> settings);
  static CAddrBook* FindLiving(const IAddrBook* book);
  ~CAddrBook() override;

  bool Supports(REFIID iid) const override;
  HRESULT CheckUsable() const override;

  HRESULT Initialize(CABServiceList* providers);
  void RepairSearchPath();

  // The provider that issued the identifier; borrowed.
  HRESULT FindProvider(ULONG size, const ENTRYID* entryId, IAddrBook** provider) const;
  // The checks and the way that all methods with an entry identifier share; `call` gets the provider.
  template <class Call>
  HRESULT Forward(ULONG size, const ENTRYID* entryId, Call&& call);
  HRESULT OpenRoot(ULONG* type, LPUNKNOWN* object);
  HRESULT RecordAdvise(ULONG providerConnection, IAddrBook& provider, ULONG* connection);

  // A setting: one of the three properties that the store knows, in a block of its own.
  HRESULT ReadSetting(ULONG tag, MapiBuffer<SPropValue>& value) const;
  HRESULT WriteSetting(const SPropValue& value, bool persistent);
  HRESULT GetDefault(ULONG tag, ULONG flags, ULONG* size, LPENTRYID* entryId);
  HRESULT FindDefault(ULONG tag, ULONG flags, EntryId& found);
  HRESULT SetDefault(ULONG tag, ULONG flags, const SBinary& entryId, bool persistent);
  std::vector<SBinary> UsablePath(const SBinaryArray& path);
  HRESULT StoreSearchPath(std::span<SBinary> path, bool persistent);

  // Who is inside, here or in a root container; closed when the session ends.
  const std::shared_ptr<Rundown> calls_;
  // The session, as far as this object knows one: null after its end. The end's affair alone.
  std::unique_ptr<SettingsStore> settings_;
  ComPtr<CABServiceList> providers_;
  ComPtr<CABAdviseCList> advises_;
  CAddrBook* nextLiving_ = nullptr;
};

}  // namespace orv
