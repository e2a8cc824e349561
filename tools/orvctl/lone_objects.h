// What a provider's code meets when it is tried in a process of its own: a support object without a session and a
// section of settings that nobody stores.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "orv/kit/prop_object.hpp"
#include "tools/orvctl/library.h"

namespace orvctl {

// A copy of what is stored of the service. Changes stay in it.
ComPtr<IProfSect> CopySection(const Library& library, const std::string& profile, const Bytes& uid);
// One that holds these values.
ComPtr<IProfSect> MakeSection(const Library& library, const ValueView& values);

class LoneSupport final : public orv::sdk::Object<IOrvSupport2, IOrvSupport> {
 public:
  using Report = std::function<void(HRESULT code, const std::string& text)>;

  // Without `report` it is that of an entry function, to which nothing can be reported.
  explicit LoneSupport(const Library& library, Report report = {})
      : library_(library), report_(std::move(report)) {}

  size_t Uids();

  HRESULT STDMETHODCALLTYPE GetLastError(HRESULT, ULONG, LPMAPIERROR*) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetMemAllocRoutines(LPALLOCATEBUFFER* root, LPALLOCATEMORE* more,
                                                LPFREEBUFFER* free) override;
  HRESULT STDMETHODCALLTYPE SetProviderUID(const MAPIUID* uid) override;
  ORV_REFUSE(Reserved7, MAPI_E_NO_SUPPORT)
  ORV_REFUSE(DoCopyTo, MAPI_E_NO_SUPPORT, LPCIID, LPVOID, ULONG, LPCIID, LPSPropTagArray, ULONG_PTR,
             LPMAPIPROGRESS, LPCIID, LPVOID, ULONG, LPSPropProblemArray*)
  ORV_REFUSE(DoCopyProps, MAPI_E_NO_SUPPORT, LPCIID, LPVOID, LPSPropTagArray, ULONG_PTR, LPMAPIPROGRESS,
             LPCIID, LPVOID, ULONG, LPSPropProblemArray*)
  ORV_REFUSE(Reserved10, MAPI_E_NO_SUPPORT)
  // There is no address book round it.
  HRESULT STDMETHODCALLTYPE OpenEntry(ULONG, LPENTRYID, LPCIID, ULONG, ULONG*, LPUNKNOWN*) override {
    return report_ ? MAPI_E_END_OF_SESSION : MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE ReportProblem(HRESULT code, LPCWSTR text) override;

 private:
  const Library& library_;
  const Report report_;
  orv::sdk::Lock lock_;
  std::vector<Bytes> uids_;
};

}  // namespace orvctl
