#include "tools/orvctl/lone_objects.h"

#include <algorithm>

#include "tools/orvctl/administration.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/table.h"

namespace orvctl {
namespace {

namespace kit = orv::kit;

class MemorySection final : public kit::PropObject<IProfSect> {
 public:
  using PropObject::PropObject;

 protected:
  HRESULT Save(kit::Changes&) override { return S_OK; }
};

}  // namespace

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
  const auto host = std::make_shared<const kit::Host>(kit::Host{library.allocator(), {}});
  ComPtr<IProfSect> section;
  *section.Put() = new MemorySection(host, kit::PropList(values), kit::Access::kModify);
  return section;
}

size_t LoneSupport::Uids() {
  const std::lock_guard guard(lock_);
  return uids_.size();
}

HRESULT STDMETHODCALLTYPE LoneSupport::GetMemAllocRoutines(LPALLOCATEBUFFER* root, LPALLOCATEMORE* more,
                                                           LPFREEBUFFER* free) {
  if (root == nullptr || more == nullptr || free == nullptr) return MAPI_E_INVALID_PARAMETER;
  *root = library_.buffers().root;
  *more = library_.buffers().more;
  *free = library_.buffers().free;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE LoneSupport::SetProviderUID(const MAPIUID* uid) {
  if (uid == nullptr) return MAPI_E_INVALID_PARAMETER;
  return orv::sdk::Guarded([&] {
    const std::lock_guard guard(lock_);
    const Bytes bytes(uid->ab, uid->ab + sizeof(uid->ab));
    if (std::find(uids_.begin(), uids_.end(), bytes) != uids_.end()) return MAPI_E_COLLISION;
    uids_.push_back(bytes);
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE LoneSupport::ReportProblem(HRESULT code, LPCWSTR text) {
  if (text == nullptr) return MAPI_E_INVALID_PARAMETER;
  if (!report_) return MAPI_E_NO_SUPPORT;
  return orv::sdk::Guarded([&] {
    report_(code, ToUtf8(text));
    return S_OK;
  });
}

}  // namespace orvctl
