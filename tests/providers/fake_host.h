// What the library is to a provider: an allocator that knows its live buffers and fails on demand, a profile section
// in memory, a support object that remembers what it was asked; and the provider library, loaded for one test.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "orv/orvbase.hpp"

namespace orv::test {

// The buffers of the process. Freeing what is no live root fails the test.
class Buffers {
 public:
  static SCODE STDAPICALLTYPE Allocate(ULONG size, LPVOID* buffer);
  static SCODE STDAPICALLTYPE AllocateMore(ULONG size, LPVOID root, LPVOID* buffer);
  static ULONG STDAPICALLTYPE Free(LPVOID buffer);

  static size_t LiveRoots();
  // The allocation after `successes` more fails, once; -1: none.
  static void FailAfter(int successes);
};

struct FreeBuffer {
  void operator()(void* buffer) const { Buffers::Free(buffer); }
};
struct FreeRows {
  void operator()(SRowSet* rows) const;
};
using RowSet = std::unique_ptr<SRowSet, FreeRows>;
template <class T>
using Buffer = std::unique_ptr<T, FreeBuffer>;

// Text and binary properties, and what SaveChanges made of them.
class FakeSection final : public sdk::RefusingProp<IProfSect, IMAPIProp> {
 public:
  std::map<ULONG, std::wstring> texts;
  std::map<ULONG, std::wstring> saved;
  std::vector<BYTE> serviceUid = std::vector<BYTE>(16, 0x5A);

  HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray tags, ULONG flags, ULONG* count,
                                     LPSPropValue* values) override;
  HRESULT STDMETHODCALLTYPE SetProps(ULONG count, LPSPropValue values,
                                     LPSPropProblemArray* problems) override;
  HRESULT STDMETHODCALLTYPE SaveChanges(ULONG) override {
    saved = texts;
    return S_OK;
  }
};

class FakeSupport final : public sdk::Object<IOrvSupport> {
 public:
  std::vector<MAPIUID> registered;
  HRESULT registerResult = S_OK;
  std::vector<GUID> copiedFrom;  // interface of the source of each copy

  ORV_REFUSE(GetLastError, S_OK, HRESULT, ULONG, LPMAPIERROR*)
  ORV_REFUSE(Reserved7, MAPI_E_NO_SUPPORT)
  ORV_REFUSE(Reserved10, MAPI_E_NO_SUPPORT)
  HRESULT STDMETHODCALLTYPE GetMemAllocRoutines(LPALLOCATEBUFFER* root, LPALLOCATEMORE* more,
                                                LPFREEBUFFER* free) override {
    *root = &Buffers::Allocate;
    *more = &Buffers::AllocateMore;
    *free = &Buffers::Free;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE SetProviderUID(const MAPIUID* uid) override {
    if (SUCCEEDED(registerResult)) registered.push_back(*uid);
    return registerResult;
  }
  HRESULT STDMETHODCALLTYPE DoCopyTo(LPCIID source, LPVOID, ULONG, LPCIID, LPSPropTagArray, ULONG_PTR,
                                     LPMAPIPROGRESS, LPCIID, LPVOID, ULONG, LPSPropProblemArray*) override {
    copiedFrom.push_back(*source);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE DoCopyProps(LPCIID source, LPVOID, LPSPropTagArray, ULONG_PTR, LPMAPIPROGRESS,
                                        LPCIID, LPVOID, ULONG, LPSPropProblemArray*) override {
    copiedFrom.push_back(*source);
    return S_OK;
  }
};

// References that are still held, the caller's included.
ULONG References(IUnknown* object);

// A provider library in the folder of the test program.
class ProviderLibrary {
 public:
  ProviderLibrary(const wchar_t* file, const char* serviceEntry);
  ~ProviderLibrary();  // fails the test when the library stays loaded
  ProviderLibrary(const ProviderLibrary&) = delete;
  ProviderLibrary& operator=(const ProviderLibrary&) = delete;

  LPABPROVIDEROPEN open = nullptr;
  LPORVSERVICEENTRY serviceEntry = nullptr;

 private:
  std::wstring file_;
  HMODULE module_;
};

}  // namespace orv::test
