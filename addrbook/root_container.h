// The root of the address book's hierarchy: a row a provider and, if asked for, the containers of each. It
// has no entries and no properties of its own.
#pragma once

#include <memory>

#include "orv/orvapi.h"
#include "platform/com_object.h"
#include "platform/com_ptr.h"
#include "platform/rundown.h"

namespace orv {

class CABServiceList;
class HierarchyRows;

class CABContainer final : public ComObject<IABContainer> {
 public:
  // Until it was initialised every method but those of IUnknown answers MAPI_E_NOT_INITIALIZED. All is shared; list or
  // book null is MAPI_E_INVALID_PARAMETER. Who asks providers comes into `calls`, if any.
  CABContainer();
  HRESULT Initialize(CABServiceList* providers, IAddrBook* book, std::shared_ptr<Rundown> calls = nullptr);

  HRESULT STDMETHODCALLTYPE GetLastError(HRESULT, ULONG, LPMAPIERROR*) override { return Refuse(); }
  HRESULT STDMETHODCALLTYPE SaveChanges(ULONG) override { return Refuse(); }
  HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray, ULONG, ULONG*, LPSPropValue*) override {
    return Refuse();
  }
  HRESULT STDMETHODCALLTYPE GetPropList(ULONG, LPSPropTagArray*) override { return Refuse(); }
  HRESULT STDMETHODCALLTYPE OpenProperty(ULONG tag, LPCIID iid, ULONG options, ULONG flags,
                                         LPUNKNOWN* object) override;
  HRESULT STDMETHODCALLTYPE SetProps(ULONG, LPSPropValue, LPSPropProblemArray*) override { return Refuse(); }
  HRESULT STDMETHODCALLTYPE DeleteProps(LPSPropTagArray, LPSPropProblemArray*) override { return Refuse(); }
  HRESULT STDMETHODCALLTYPE CopyTo(ULONG, LPCIID, LPSPropTagArray, ULONG_PTR, LPMAPIPROGRESS, LPCIID, LPVOID,
                                   ULONG, LPSPropProblemArray*) override {
    return Refuse();
  }
  HRESULT STDMETHODCALLTYPE CopyProps(LPSPropTagArray, ULONG_PTR, LPMAPIPROGRESS, LPCIID, LPVOID, ULONG,
                                      LPSPropProblemArray*) override {
    return Refuse();
  }
  HRESULT STDMETHODCALLTYPE GetNamesFromIDs(LPSPropTagArray*, LPGUID, ULONG, ULONG*,
                                            LPMAPINAMEID**) override {
    return Refuse();
  }
  HRESULT STDMETHODCALLTYPE GetIDsFromNames(ULONG, LPMAPINAMEID*, ULONG, LPSPropTagArray*) override {
    return Refuse();
  }

  HRESULT STDMETHODCALLTYPE GetContentsTable(ULONG flags, LPMAPITABLE* table) override;
  HRESULT STDMETHODCALLTYPE GetHierarchyTable(ULONG flags, LPMAPITABLE* table) override;
  HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID entryId, LPCIID iid, ULONG flags, ULONG* type,
                                      LPUNKNOWN* object) override;
  HRESULT STDMETHODCALLTYPE SetSearchCriteria(LPSRestriction, LPENTRYLIST, ULONG) override {
    return Refuse();
  }
  HRESULT STDMETHODCALLTYPE GetSearchCriteria(ULONG, LPSRestriction*, LPENTRYLIST*, ULONG*) override {
    return Refuse();
  }

  HRESULT STDMETHODCALLTYPE CreateEntry(ULONG size, LPENTRYID templateId, ULONG flags,
                                        LPMAPIPROP* entry) override;
  HRESULT STDMETHODCALLTYPE CopyEntries(LPENTRYLIST entries, ULONG_PTR uiParam, LPMAPIPROGRESS progress,
                                        ULONG flags) override;
  HRESULT STDMETHODCALLTYPE DeleteEntries(LPENTRYLIST entries, ULONG flags) override;
  HRESULT STDMETHODCALLTYPE ResolveNames(LPSPropTagArray tags, ULONG flags, LPADRLIST recipients,
                                         LPFlagList resolved) override;

 private:
  ~CABContainer() override;
  bool Supports(REFIID iid) const override;

  HRESULT CheckInitialized() const { return book_ ? S_OK : MAPI_E_NOT_INITIALIZED; }
  HRESULT Refuse() const { return book_ ? MAPI_E_NO_SUPPORT : MAPI_E_NOT_INITIALIZED; }
  HRESULT AddProviders(HierarchyRows& rows, ULONG flags) const;
  HRESULT DeleteEntriesLocked(const ENTRYLIST& entries);

  ComPtr<CABServiceList> providers_;
  ComPtr<IAddrBook> book_;
  std::shared_ptr<Rundown> calls_;
};

}  // namespace orv
