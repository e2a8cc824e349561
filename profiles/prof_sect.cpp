// Profile sections over the store of their administration object.
#include "profiles/prof_sect.h"

#include <utility>

#include "hosting/object_copy.h"
#include "platform/com_ptr.h"
#include "platform/pointer_check.h"
#include "profiles/service_admin.h"
#include "props/base_prop.h"
#include "props/prop_value.h"

namespace orv {
namespace {

// Where a copy goes, and where its problems are reported (nowhere when null).
bool IsUsableTarget(LPCIID destinationInterface, LPVOID destination, LPSPropProblemArray* problems) {
  return IsReadable(destinationInterface, sizeof *destinationInterface) &&
         IsReadable(destination, sizeof(void*)) && (problems == nullptr || IsWritableOut(problems));
}

class CProfSect final : public PropObject<IProfSect> {
 public:
  CProfSect(ComPtr<CABServiceAdmin> owner, const MAPIUID& uid) : owner_(std::move(owner)), uid_(uid) {}

  HRESULT Load();

  HRESULT STDMETHODCALLTYPE SaveChanges(ULONG flags) override;
  HRESULT STDMETHODCALLTYPE CopyTo(ULONG excludedCount, LPCIID excluded, LPSPropTagArray excludeProps,
                                   ULONG_PTR uiParam, LPMAPIPROGRESS progress, LPCIID destinationInterface,
                                   LPVOID destination, ULONG flags, LPSPropProblemArray* problems) override;
  HRESULT STDMETHODCALLTYPE CopyProps(LPSPropTagArray includeProps, ULONG_PTR uiParam,
                                      LPMAPIPROGRESS progress, LPCIID destinationInterface,
                                      LPVOID destination, ULONG flags,
                                      LPSPropProblemArray* problems) override;

 private:
  bool Supports(REFIID iid) const override {
    return IsOneOf(iid, IID_IUnknown, IID_IMAPIProp, IID_IProfSect);
  }

  const ComPtr<CABServiceAdmin> owner_;
  const MAPIUID uid_;
};

HRESULT CProfSect::Load() {
  PropValues row;
  if (const HRESULT hr = owner_->ReadService(uid_, row); FAILED(hr)) return hr;
  LockGuard guard(ObjectLock());
  return LoadLocked({row.values.Get(), row.count});
}

// What was deleted from the section stays stored: the write merges, and services rely on keeping what they do not
// know. The section stays usable whatever the flags say.
HRESULT CProfSect::SaveChanges(ULONG) {
  return Guarded([&]() -> HRESULT {
    LockGuard guard(ObjectLock());
    SetModified(false);
    PropValues all;
    if (const HRESULT hr = GetAllLocked(all); FAILED(hr)) return hr;
    return owner_->WriteService(uid_, {all.values.Get(), all.count});
  });
}

HRESULT CProfSect::CopyTo(ULONG, LPCIID, LPSPropTagArray excludeProps, ULONG_PTR uiParam,
                          LPMAPIPROGRESS progress, LPCIID destinationInterface, LPVOID destination,
                          ULONG flags, LPSPropProblemArray* problems) {
  if (!IsUsableTarget(destinationInterface, destination, problems)) return MAPI_E_INVALID_PARAMETER;
  if (excludeProps != nullptr && !IsReadableTagArray(excludeProps)) return MAPI_E_INVALID_PARAMETER;
  MapiBuffer<SPropTagArray> tags;
  if (const HRESULT hr = GetPropList(flags & MAPI_UNICODE, tags.Put()); FAILED(hr)) return hr;
  SubtractTags(tags.Get(), excludeProps);
  return CopyProps(tags.Get(), uiParam, progress, destinationInterface, destination, flags, problems);
}

HRESULT CProfSect::CopyProps(LPSPropTagArray includeProps, ULONG_PTR, LPMAPIPROGRESS,
                             LPCIID destinationInterface, LPVOID destination, ULONG flags,
                             LPSPropProblemArray* problems) {
  if (!IsReadableTagArray(includeProps)) return MAPI_E_INVALID_PARAMETER;
  if (!IsUsableTarget(destinationInterface, destination, problems)) return MAPI_E_INVALID_PARAMETER;
  if (!IsOneOf(*destinationInterface, IID_IMAPIProp, IID_IProfSect)) return MAPI_E_INTERFACE_NOT_SUPPORTED;
  return GuardedForeign([&] {
    return CopyCommonProps(includeProps, this, static_cast<IUnknown*>(destination), flags, problems);
  });
}

}  // namespace

HRESULT OpenProfSect(CABServiceAdmin& owner, const MAPIUID& uid, IProfSect** out) {
  auto section = ComPtr<CProfSect>::Adopt(new CProfSect(ComPtr<CABServiceAdmin>::Share(&owner), uid));
  const HRESULT hr = section->Load();
  if (SUCCEEDED(hr)) *out = section.Detach();
  return hr;
}

}  // namespace orv
