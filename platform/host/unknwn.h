// IUnknown, IMalloc and the task allocator of the native build.
#pragma once

#include <windows.h>

inline constexpr IID IID_IUnknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

struct IUnknown {
  virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppvObject) = 0;
  virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
  virtual ULONG STDMETHODCALLTYPE Release() = 0;
};
using LPUNKNOWN = IUnknown*;

struct IMalloc : IUnknown {
  virtual void* STDMETHODCALLTYPE Alloc(SIZE_T size) = 0;
  virtual void* STDMETHODCALLTYPE Realloc(void* block, SIZE_T size) = 0;
  virtual void STDMETHODCALLTYPE Free(void* block) = 0;
  virtual SIZE_T STDMETHODCALLTYPE GetSize(void* block) = 0;
  virtual int STDMETHODCALLTYPE DidAlloc(void* block) = 0;
  virtual void STDMETHODCALLTYPE HeapMinimize() = 0;
};
using LPMALLOC = IMalloc*;

namespace orv_host {
// The process's own heap behind the task allocator's interface; it lives as long as the process.
class ProcessMalloc final : public IMalloc {
 public:
  HRESULT QueryInterface(REFIID, void** object) override {
    *object = this;
    return S_OK;
  }
  ULONG AddRef() override { return 2; }
  ULONG Release() override { return 1; }
  void* Alloc(SIZE_T size) override { return std::malloc(size); }
  void* Realloc(void* block, SIZE_T size) override { return std::realloc(block, size); }
  void Free(void* block) override { std::free(block); }
  SIZE_T GetSize(void*) override { return static_cast<SIZE_T>(-1); }
  int DidAlloc(void*) override { return -1; }
  void HeapMinimize() override {}
};
}  // namespace orv_host

inline HRESULT CoGetMalloc(DWORD, LPMALLOC* allocator) {
  static orv_host::ProcessMalloc process;
  *allocator = &process;
  return S_OK;
}
