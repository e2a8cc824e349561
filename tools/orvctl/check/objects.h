// What a provider is handed while it is checked: a support object, a profile section kept in memory, a sink. They count
// their references visibly.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "tools/orvctl/lone_objects.h"
#include "tools/orvctl/values.h"

namespace orvctl::check {

namespace kit = orv::kit;

// Lives as long as its maker says, whoever holds references: the maker asks for their number.
template <class Base>
class Counted : public Base {
 public:
  using Base::Base;

  ULONG STDMETHODCALLTYPE AddRef() final { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() final { return --references_; }

  // Those of others; the maker's own is not counted.
  ULONG held() const { return references_ - 1; }

 private:
  std::atomic<ULONG> references_{1};
};

// Names and values, for comparing what there was with what there is.
std::string Written(const orv::sdk::ValueView& values);

// What is stored of a service.
using Profile = kit::PropList;

// A copy of the profile's, written back by SaveChanges alone.
class Section final : public Counted<MemorySection> {
 public:
  explicit Section(Profile& profile);

  HRESULT result = S_OK;  // of GetProps, where it is to fail

  HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray tags, ULONG flags, ULONG* count,
                                     LPSPropValue* values) override;

 protected:
  HRESULT Save(kit::Changes& changes) override;

 private:
  Profile& profile_;
};

// The support object of a logon, or of an entry function, which may register nothing. The session behind it has one
// provider, and one entry of another's.
class Support final : public Counted<LoneSupport> {
 public:
  explicit Support(bool isLogon);

  HRESULT result = S_OK;       // of SetProviderUID, where it is to fail
  kit::PropList foreignEntry;  // that OpenEntry opens by its PR_ENTRYID; to be set before it is asked for

  // From the logon on, to the session's end: null.
  void SetBook(IAddrBook* book) { book_ = book; }

  HRESULT STDMETHODCALLTYPE SetProviderUID(const MAPIUID* uid) override;
  HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID id, LPCIID iid, ULONG flags, ULONG* type,
                                      LPUNKNOWN* object) override;
  HRESULT STDMETHODCALLTYPE ReportProblem(HRESULT code, LPCWSTR text) override;

 private:
  // Without a session: why.
  HRESULT State() const {
    return !isLogon_ ? MAPI_E_NO_SUPPORT : book_ == nullptr ? MAPI_E_END_OF_SESSION : S_OK;
  }

  const bool isLogon_;
  std::atomic<IAddrBook*> book_{nullptr};
};

// What the provider has reported in this process, each once.
std::vector<std::string> Reports();

// Notes what it is told, or does what it is asked to.
class Sink final : public Counted<orv::sdk::Object<IMAPIAdviseSink>> {
 public:
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
