// What a provider is handed while it is checked: a support object, a profile section kept in memory, a sink. They count
// their references visibly.
#pragma once

#include <atomic>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <vector>

#include "orv/orvbase.hpp"
#include "tools/orvctl/values.h"

namespace orvctl::check {

// Lives as long as its maker says, whoever holds references: the maker asks for their number.
template <class Interface>
class Counted : public Interface {
 public:
  explicit Counted(std::initializer_list<GUID> identifiers) : identifiers_(identifiers) {}
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) final {
    *object = nullptr;
    for (const GUID& each : identifiers_) {
      if (IsEqualGUID(each, iid)) *object = static_cast<Interface*>(this);
    }
    if (*object == nullptr) return MAPI_E_INTERFACE_NOT_SUPPORTED;
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() final { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() final { return --references_; }

  // Those of others; the maker's own is not counted.
  ULONG held() const { return references_ - 1; }

 protected:
  ~Counted() = default;

 private:
  const std::vector<GUID> identifiers_;
  std::atomic<ULONG> references_{1};
};

// A copy of one value, with all that it points at.
class Stored {
 public:
  explicit Stored(const SPropValue& value);
  ULONG tag() const { return tag_; }
  // The value as part of a root of the ledger's.
  SPropValue CopyInto(const orv::sdk::Allocator& allocator, void* root) const;
  bool operator==(const Stored&) const = default;

 private:
  ULONG tag_ = 0;
  LONGLONG number_ = 0;
  Bytes bytes_;  // of a text, with its terminator
  std::vector<WideString> texts_;
};

// What is stored of a service, by property identifier.
using Profile = std::map<ULONG, Stored>;

// A copy of the profile's, written back by SaveChanges alone.
class Section final : public Counted<IProfSect> {
 public:
  explicit Section(Profile& profile);

  HRESULT result = S_OK;  // of GetProps, where it is to fail

  HRESULT STDMETHODCALLTYPE SaveChanges(ULONG) override;
  HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray tags, ULONG flags, ULONG* count,
                                     LPSPropValue* values) override;
  HRESULT STDMETHODCALLTYPE GetPropList(ULONG flags, LPSPropTagArray* tags) override;
  HRESULT STDMETHODCALLTYPE SetProps(ULONG count, LPSPropValue values,
                                     LPSPropProblemArray* problems) override;
  HRESULT STDMETHODCALLTYPE DeleteProps(LPSPropTagArray tags, LPSPropProblemArray* problems) override;
  ORV_REFUSE(GetLastError, MAPI_E_NO_SUPPORT, HRESULT, ULONG, LPMAPIERROR*)
  ORV_REFUSE(OpenProperty, MAPI_E_NO_SUPPORT, ULONG, LPCIID, ULONG, ULONG, LPUNKNOWN*)
  ORV_REFUSE(CopyTo, MAPI_E_NO_SUPPORT, ULONG, LPCIID, LPSPropTagArray, ULONG_PTR, LPMAPIPROGRESS, LPCIID,
             LPVOID, ULONG, LPSPropProblemArray*)
  ORV_REFUSE(CopyProps, MAPI_E_NO_SUPPORT, LPSPropTagArray, ULONG_PTR, LPMAPIPROGRESS, LPCIID, LPVOID, ULONG,
             LPSPropProblemArray*)
  ORV_REFUSE(GetNamesFromIDs, MAPI_E_NO_SUPPORT, LPSPropTagArray*, LPGUID, ULONG, ULONG*, LPMAPINAMEID**)
  ORV_REFUSE(GetIDsFromNames, MAPI_E_NO_SUPPORT, ULONG, LPMAPINAMEID*, ULONG, LPSPropTagArray*)

 private:
  std::vector<ULONG> OwnTags() const;

  Profile& profile_;
  orv::sdk::Lock lock_;
  Profile copy_;
};

// The support object of a logon, or of an entry function, which may register nothing. There is no address book behind
// it.
class Support final : public Counted<IOrvSupport2> {
 public:
  explicit Support(bool isLogon);

  HRESULT result = S_OK;  // of SetProviderUID, where it is to fail
  std::vector<MAPIUID> Uids();

  HRESULT STDMETHODCALLTYPE GetLastError(HRESULT, ULONG, LPMAPIERROR*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetMemAllocRoutines(LPALLOCATEBUFFER* root, LPALLOCATEMORE* more,
                                                LPFREEBUFFER* free) override;
  HRESULT STDMETHODCALLTYPE SetProviderUID(const MAPIUID* uid) override;
  ORV_REFUSE(Reserved7, MAPI_E_NO_SUPPORT)
  HRESULT STDMETHODCALLTYPE DoCopyTo(LPCIID, LPVOID source, ULONG, LPCIID, LPSPropTagArray exclude, ULONG_PTR,
                                     LPMAPIPROGRESS, LPCIID, LPVOID target, ULONG,
                                     LPSPropProblemArray* problems) override;
  HRESULT STDMETHODCALLTYPE DoCopyProps(LPCIID, LPVOID source, LPSPropTagArray include, ULONG_PTR,
                                        LPMAPIPROGRESS, LPCIID, LPVOID target, ULONG,
                                        LPSPropProblemArray* problems) override;
  ORV_REFUSE(Reserved10, MAPI_E_NO_SUPPORT)
  HRESULT STDMETHODCALLTYPE OpenEntry(ULONG, LPENTRYID, LPCIID, ULONG, ULONG*, LPUNKNOWN*) override {
    return isLogon_ ? MAPI_E_END_OF_SESSION : MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE ReportProblem(HRESULT, LPCWSTR text) override {
    if (text == nullptr) return MAPI_E_INVALID_PARAMETER;
    return isLogon_ ? MAPI_E_END_OF_SESSION : MAPI_E_NO_SUPPORT;
  }

 private:
  const bool isLogon_;
  orv::sdk::Lock lock_;
  std::vector<MAPIUID> uids_;
};

// Notes what it is told, or does what it is asked to.
class Sink final : public Counted<IMAPIAdviseSink> {
 public:
  Sink() : Counted({IID_IUnknown, IID_IMAPIAdviseSink}) {}

  struct Event {
    ULONG type = 0;
    Bytes entry, parent;
  };
  std::function<void()> onNotify;  // must not throw
  std::vector<Event> Events();

  ULONG STDMETHODCALLTYPE OnNotify(ULONG count, LPNOTIFICATION notifications) override;

 private:
  orv::sdk::Lock lock_;
  std::vector<Event> events_;
};

}  // namespace orvctl::check
