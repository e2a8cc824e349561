#include "fake_host.h"

#include <cstring>
#include <mutex>

namespace orv::test {
namespace {

sdk::Lock bufferLock;
std::map<void*, std::vector<void*>> liveRoots;  // each with what hangs off it
int allocationsLeft = -1;

bool MayAllocate() { return allocationsLeft < 0 || allocationsLeft-- > 0; }

}  // namespace

SCODE STDAPICALLTYPE Buffers::Allocate(ULONG size, LPVOID* buffer) {
  const std::lock_guard guard(bufferLock);
  *buffer = MayAllocate() ? std::calloc(1, size + 1) : nullptr;
  if (*buffer == nullptr) return MAPI_E_NOT_ENOUGH_MEMORY;
  liveRoots[*buffer];
  return S_OK;
}

SCODE STDAPICALLTYPE Buffers::AllocateMore(ULONG size, LPVOID root, LPVOID* buffer) {
  const std::lock_guard guard(bufferLock);
  *buffer = nullptr;
  const auto found = liveRoots.find(root);
  EXPECT_NE(found, liveRoots.end()) << "hung off what is no root";
  if (found == liveRoots.end()) return MAPI_E_INVALID_PARAMETER;
  if (!MayAllocate()) return MAPI_E_NOT_ENOUGH_MEMORY;
  *buffer = std::calloc(1, size + 1);
  found->second.push_back(*buffer);
  return S_OK;
}

ULONG STDAPICALLTYPE Buffers::Free(LPVOID buffer) {
  const std::lock_guard guard(bufferLock);
  const auto found = liveRoots.find(buffer);
  EXPECT_NE(found, liveRoots.end()) << "freed what is no root";
  if (found == liveRoots.end()) return static_cast<ULONG>(MAPI_E_INVALID_PARAMETER);
  for (void* child : found->second) std::free(child);
  std::free(buffer);
  liveRoots.erase(found);
  return 0;
}

size_t Buffers::LiveRoots() {
  const std::lock_guard guard(bufferLock);
  return liveRoots.size();
}

void Buffers::FailAfter(int successes) {
  const std::lock_guard guard(bufferLock);
  allocationsLeft = successes;
}

void FreeRows::operator()(SRowSet* rows) const {
  for (ULONG i = 0; i < rows->cRows; ++i) Buffers::Free(rows->aRow[i].lpProps);
  Buffers::Free(rows);
}

HRESULT FakeSection::GetProps(LPSPropTagArray tags, ULONG flags, ULONG* count, LPSPropValue* values) {
  if ((flags & MAPI_UNICODE) == 0) return MAPI_E_BAD_CHARWIDTH;
  void* root = nullptr;
  const HRESULT hr = Buffers::Allocate(tags->cValues * static_cast<ULONG>(sizeof(SPropValue)), &root);
  if (FAILED(hr)) return hr;
  auto* value = *values = static_cast<LPSPropValue>(root);
  *count = tags->cValues;
  for (const ULONG tag : sdk::TagsOf(*tags)) {
    value->ulPropTag = tag;
    if (tag == PR_SERVICE_UID && !serviceUid.empty()) {
      value->Value.bin = {static_cast<ULONG>(serviceUid.size()), serviceUid.data()};
    } else if (const auto found = texts.find(tag); found != texts.end()) {
      value->Value.lpszW = found->second.data();
    } else {
      value->ulPropTag = CHANGE_PROP_TYPE(tag, PT_ERROR);
      value->Value.err = MAPI_E_NOT_FOUND;
    }
    ++value;
  }
  return S_OK;
}

HRESULT FakeSection::SetProps(ULONG count, LPSPropValue values, LPSPropProblemArray*) {
  for (ULONG i = 0; i < count; ++i) texts[values[i].ulPropTag] = values[i].Value.lpszW;
  return S_OK;
}

ULONG References(IUnknown* object) {
  object->AddRef();
  return object->Release();
}

ProviderLibrary::ProviderLibrary(const wchar_t* file, const char* entryName)
    : file_(file), module_(LoadLibraryW(file)) {
  EXPECT_NE(module_, nullptr) << GetLastError();
  if (module_ == nullptr) return;
  open = reinterpret_cast<LPABPROVIDEROPEN>(
      reinterpret_cast<void*>(GetProcAddress(module_, ORV_PROVIDER_OPEN_NAME)));
  serviceEntry =
      reinterpret_cast<LPORVSERVICEENTRY>(reinterpret_cast<void*>(GetProcAddress(module_, entryName)));
  EXPECT_TRUE(open != nullptr && serviceEntry != nullptr);
}

ProviderLibrary::~ProviderLibrary() {
  FreeLibrary(module_);
  EXPECT_EQ(GetModuleHandleW(file_.c_str()), nullptr) << "the library stays loaded";
}

}  // namespace orv::test
