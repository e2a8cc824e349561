#include "tools/orvctl/lone_objects.h"

#include <algorithm>
#include <mutex>

#include "tools/orvctl/administration.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/table.h"

namespace orvctl {

namespace kit = orv::kit;
using orv::sdk::Guarded;

MemorySection::MemorySection(const Allocator& buffers, kit::PropList values)
    : PropObject(std::make_shared<const kit::Host>(kit::Host{buffers, {}}), std::move(values),
                 kit::Access::kModify) {}

ComPtr<IProfSect> CopySection(const Library& library, const std::string& profile, const Bytes& uid) {
  const std::string doing = "read the service's settings";
  MAPIUID wanted{};
  std::copy_n(uid.begin(), std::min(uid.size(), sizeof(wanted.ab)), wanted.ab);
  ComPtr<IProfSect> stored;
  Receive(stored, OpenServices(library, profile)->OpenProfileSection(&wanted, nullptr, 0, stored.Put()),
          doing);
  return MakeSection(library, Properties(library, stored.Get(), nullptr, doing).view());
}

ComPtr<IProfSect> MakeSection(const Library& library, const ValueView& values) {
  return ComPtr<IProfSect>::Adopt(new MemorySection(library.allocator(), kit::PropList(values)));
}

std::vector<MAPIUID> LoneSupport::Uids() {
  const std::lock_guard guard(lock_);
  return uids_;
}

HRESULT LoneSupport::GetMemAllocRoutines(LPALLOCATEBUFFER* root, LPALLOCATEMORE* more, LPFREEBUFFER* free) {
  if (root == nullptr || more == nullptr || free == nullptr) return MAPI_E_INVALID_PARAMETER;
  *root = buffers_.root;
  *more = buffers_.more;
  *free = buffers_.free;
  return S_OK;
}

HRESULT LoneSupport::SetProviderUID(const MAPIUID* uid) {
  if (uid == nullptr) return MAPI_E_INVALID_PARAMETER;
  if (!report_) return MAPI_E_NO_SUPPORT;
  return Guarded([&] {
    const std::lock_guard guard(lock_);
    const bool isKnown = std::any_of(uids_.begin(), uids_.end(),
                                     [uid](const MAPIUID& each) { return IsEqualMAPIUID(&each, uid); });
    if (isKnown) return MAPI_E_COLLISION;
    uids_.push_back(*uid);
    return S_OK;
  });
}

HRESULT LoneSupport::DoCopyTo(LPCIID, LPVOID source, ULONG, LPCIID, LPSPropTagArray exclude, ULONG_PTR,
                              LPMAPIPROGRESS, LPCIID iid, LPVOID target, ULONG flags,
                              LPSPropProblemArray* problems) {
  if (source == nullptr || target == nullptr) return MAPI_E_INVALID_PARAMETER;
  return Guarded([&] {
    return kit::CopyBetween(Functions(), *static_cast<IMAPIProp*>(source), nullptr, exclude, iid, target,
                            flags, problems);
  });
}

HRESULT LoneSupport::DoCopyProps(LPCIID, LPVOID source, LPSPropTagArray include, ULONG_PTR, LPMAPIPROGRESS,
                                 LPCIID iid, LPVOID target, ULONG flags, LPSPropProblemArray* problems) {
  if (source == nullptr || target == nullptr || include == nullptr) return MAPI_E_INVALID_PARAMETER;
  return Guarded([&] {
    return kit::CopyBetween(Functions(), *static_cast<IMAPIProp*>(source), include, nullptr, iid, target,
                            flags, problems);
  });
}

HRESULT LoneSupport::ReportProblem(HRESULT code, LPCWSTR text) {
  if (text == nullptr) return MAPI_E_INVALID_PARAMETER;
  if (!report_) return MAPI_E_NO_SUPPORT;
  return Guarded([&] {
    report_(code, ToUtf8(text));
    return S_OK;
  });
}

}  // namespace orvctl
