// What a provider's code meets when it is tried in a process of its own: a support object without a session and a
// section of settings that nobody stores.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "orv/kit/prop_object.hpp"
#include "tools/orvctl/library.h"

namespace orvctl {

// Takes changes after every SaveChanges, as the library's does. They stay in it, unless a class overrides Save.
class MemorySection : public orv::kit::PropObject<IProfSect> {
 public:
  MemorySection(const orv::sdk::Allocator& buffers, orv::kit::PropList values);

  HRESULT STDMETHODCALLTYPE SaveChanges(ULONG flags) override {
    return DoSaveChanges(flags | KEEP_OPEN_READWRITE);
  }

 protected:
  HRESULT Save(orv::kit::Changes&) override { return S_OK; }
};

// A copy of what is stored of the service.
ComPtr<IProfSect> CopySection(const Library& library, const std::string& profile, const Bytes& uid);
// One that holds these values.
ComPtr<IProfSect> MakeSection(const Library& library, const ValueView& values);

class LoneSupport : public orv::sdk::Object<IOrvSupport2, IOrvSupport> {
 public:
  // On any thread of the provider's.
  using Report = std::function<void(HRESULT code, const std::string& text)>;

  // Without `report` it is that of an entry function, which may register nothing and to which nothing can be reported.
  explicit LoneSupport(const Library::Buffers& buffers, Report report = {})
      : buffers_(buffers), report_(std::move(report)) {}

  // Those that were registered.
  std::vector<MAPIUID> Uids();

  HRESULT STDMETHODCALLTYPE GetLastError(HRESULT, ULONG, LPMAPIERROR*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetMemAllocRoutines(LPALLOCATEBUFFER* root, LPALLOCATEMORE* more,
                                                LPFREEBUFFER* free) override;
  HRESULT STDMETHODCALLTYPE SetProviderUID(const MAPIUID* uid) override;
  ORV_REFUSE(Reserved7, MAPI_E_NO_SUPPORT)
  HRESULT STDMETHODCALLTYPE DoCopyTo(LPCIID, LPVOID source, ULONG, LPCIID, LPSPropTagArray exclude, ULONG_PTR,
                                     LPMAPIPROGRESS, LPCIID iid, LPVOID target, ULONG flags,
                                     LPSPropProblemArray* problems) override;
  HRESULT STDMETHODCALLTYPE DoCopyProps(LPCIID, LPVOID source, LPSPropTagArray include, ULONG_PTR,
                                        LPMAPIPROGRESS, LPCIID iid, LPVOID target, ULONG flags,
                                        LPSPropProblemArray* problems) override;
  ORV_REFUSE(Reserved10, MAPI_E_NO_SUPPORT)
  // There is no address book round it.
  HRESULT STDMETHODCALLTYPE OpenEntry(ULONG, LPENTRYID, LPCIID, ULONG, ULONG*, LPUNKNOWN*) override {
    return report_ ? MAPI_E_END_OF_SESSION : MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE ReportProblem(HRESULT code, LPCWSTR text) override;

 private:
  Allocator Functions() const { return {buffers_.root, buffers_.more, buffers_.free}; }

  const Library::Buffers buffers_;
  const Report report_;
  orv::sdk::Lock lock_;
  std::vector<MAPIUID> uids_;
};

}  // namespace orvctl
