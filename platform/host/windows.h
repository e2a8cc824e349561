// Stand-ins for the Windows names that the portable core uses, for the native build with sanitizers.
// Only what the core needs; behaviour is that of Windows as far as the core relies on it.
#pragma once

#include <pthread.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using USHORT = std::uint16_t;
using SHORT = std::int16_t;
using INT = std::int32_t;
using UINT = std::uint32_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using DWORD = std::uint32_t;
using BOOL = std::int32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using LONG64 = std::int64_t;
using ULONG_PTR = std::uintptr_t;
using UINT_PTR = std::uintptr_t;
using LONG_PTR = std::intptr_t;
using INT_PTR = std::intptr_t;
using DWORD_PTR = std::uintptr_t;
using SIZE_T = std::size_t;
using HRESULT = std::int32_t;
using SCODE = std::int32_t;
using CHAR = char;
using WCHAR = char16_t;
using UCHAR = unsigned char;
using LPBYTE = BYTE*;
using LPVOID = void*;
using LPCVOID = const void*;
using PVOID = void*;
using LPSTR = char*;
using LPCSTR = const char*;
using LPWSTR = WCHAR*;
using LPCWSTR = const WCHAR*;
using LPULONG = ULONG*;
using LPDWORD = DWORD*;
using LPLONG = LONG*;
using HANDLE = void*;
using HWND = struct HWND__*;
using HINSTANCE = struct HINSTANCE__*;
using HMODULE = HINSTANCE;
using HKEY = struct HKEY__*;

#ifndef FALSE
#define FALSE 0
#define TRUE 1
#endif
#define MAX_PATH 260
#define FAR
#define CONST const
#define VOID void
#define WINAPI
#define CALLBACK
#define APIENTRY
#define STDMETHODCALLTYPE
#define STDMETHODVCALLTYPE
#define STDAPICALLTYPE
#define STDMETHODIMP HRESULT STDMETHODCALLTYPE
#define STDMETHODIMP_(type) type STDMETHODCALLTYPE
#define EXTERN_C extern "C"
#define STDAPI EXTERN_C HRESULT STDAPICALLTYPE
#define STDAPI_(type) EXTERN_C type STDAPICALLTYPE
#define DECLSPEC_SELECTANY
#define UNREFERENCED_PARAMETER(value) (void)(value)

struct GUID {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];
};
using IID = GUID;
using CLSID = GUID;
using LPGUID = GUID*;
using LPIID = IID*;
using REFGUID = const GUID&;
using REFIID = const IID&;
inline bool operator==(const GUID& a, const GUID& b) { return std::memcmp(&a, &b, sizeof a) == 0; }
inline bool operator!=(const GUID& a, const GUID& b) { return !(a == b); }
inline bool IsEqualGUID(const GUID& a, const GUID& b) { return a == b; }
inline bool IsEqualIID(const GUID& a, const GUID& b) { return a == b; }

struct FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
};
using LPFILETIME = FILETIME*;
union LARGE_INTEGER {
  struct {
    DWORD LowPart;
    LONG HighPart;
  } u;
  LONGLONG QuadPart;
};
union ULARGE_INTEGER {
  struct {
    DWORD LowPart;
    DWORD HighPart;
  } u;
  ULONGLONG QuadPart;
};
union CY {
  LONGLONG int64;
};
using CURRENCY = CY;
struct RECT {
  LONG left, top, right, bottom;
};
struct POINT {
  LONG x, y;
};

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005u);
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002u);
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000Eu);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057u);
inline constexpr HRESULT E_ACCESSDENIED = static_cast<HRESULT>(0x80070005u);
#define SUCCEEDED(hr) (static_cast<HRESULT>(hr) >= 0)
#define FAILED(hr) (static_cast<HRESULT>(hr) < 0)

struct CRITICAL_SECTION {
  pthread_mutex_t mutex;
};
inline void InitializeCriticalSection(CRITICAL_SECTION* section) {
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(&section->mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
}
inline void EnterCriticalSection(CRITICAL_SECTION* section) { pthread_mutex_lock(&section->mutex); }
inline void LeaveCriticalSection(CRITICAL_SECTION* section) { pthread_mutex_unlock(&section->mutex); }
inline void DeleteCriticalSection(CRITICAL_SECTION* section) { pthread_mutex_destroy(&section->mutex); }

struct SRWLOCK {
  pthread_mutex_t mutex;
};
#define SRWLOCK_INIT \
  { PTHREAD_MUTEX_INITIALIZER }
inline void AcquireSRWLockExclusive(SRWLOCK* lock) { pthread_mutex_lock(&lock->mutex); }
inline void ReleaseSRWLockExclusive(SRWLOCK* lock) { pthread_mutex_unlock(&lock->mutex); }

// Identifiers of threads, multiples of four and never 0.
inline DWORD GetCurrentThreadId() {
  static DWORD last = 0;
  thread_local const DWORD own = __atomic_add_fetch(&last, 4, __ATOMIC_RELAXED);
  return own;
}

// Events that wake one thread. Natively nobody has windows that others send messages to.
namespace orv_host {
struct Event {
  pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
  pthread_cond_t changed = PTHREAD_COND_INITIALIZER;
  bool isSet = false;
};
}  // namespace orv_host
#define INFINITE 0xFFFFFFFFu
#define WAIT_OBJECT_0 0u
#define QS_SENDMESSAGE 0x0040
#define PM_NOREMOVE 0
#define PM_QS_SENDMESSAGE (QS_SENDMESSAGE << 16)
struct MSG {};
inline BOOL PeekMessageW(MSG*, HWND, UINT, UINT, UINT) { return FALSE; }
inline HANDLE CreateEventW(void*, BOOL, BOOL, LPCWSTR) { return new orv_host::Event; }
inline BOOL CloseHandle(HANDLE handle) {
  delete static_cast<orv_host::Event*>(handle);
  return TRUE;
}
inline BOOL SetEvent(HANDLE handle) {
  auto* event = static_cast<orv_host::Event*>(handle);
  pthread_mutex_lock(&event->mutex);
  event->isSet = true;
  pthread_cond_signal(&event->changed);
  pthread_mutex_unlock(&event->mutex);
  return TRUE;
}
inline DWORD MsgWaitForMultipleObjectsEx(DWORD, const HANDLE* handles, DWORD, DWORD, DWORD) {
  auto* event = static_cast<orv_host::Event*>(*handles);
  pthread_mutex_lock(&event->mutex);
  while (!event->isSet) pthread_cond_wait(&event->changed, &event->mutex);
  event->isSet = false;
  pthread_mutex_unlock(&event->mutex);
  return WAIT_OBJECT_0;
}

inline int lstrlenA(LPCSTR text) { return text ? static_cast<int>(std::strlen(text)) : 0; }
inline int lstrlenW(LPCWSTR text) {
  int length = 0;
  while (text && text[length]) ++length;
  return length;
}
// Rounds to nearest, halves away from zero; -1 for a division by zero.
inline int MulDiv(int number, int numerator, int denominator) {
  if (denominator == 0) return -1;
  LONGLONG product = static_cast<LONGLONG>(number) * numerator;
  LONGLONG divisor = denominator;
  if (divisor < 0) {
    divisor = -divisor;
    product = -product;
  }
  const LONGLONG half = divisor / 2;
  const LONGLONG result = (product < 0 ? product - half : product + half) / divisor;
  return result < INT32_MIN || result > INT32_MAX ? -1 : static_cast<int>(result);
}
// Natively only null and the lowest pages count as bad.
inline BOOL IsBadReadPtr(const void* pointer, UINT_PTR size) {
  return size != 0 && reinterpret_cast<std::uintptr_t>(pointer) < 0x10000;
}
inline BOOL IsBadWritePtr(void* pointer, UINT_PTR size) { return IsBadReadPtr(pointer, size); }
inline BOOL IsBadStringPtrW(LPCWSTR text, UINT_PTR) { return IsBadReadPtr(text, sizeof *text); }

// Natively no library can be loaded.
#define LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR 0x100
#define LOAD_LIBRARY_SEARCH_SYSTEM32 0x800
inline HMODULE LoadLibraryExW(LPCWSTR, HANDLE, DWORD) { return nullptr; }
inline BOOL FreeLibrary(HMODULE) { return TRUE; }
inline void* GetProcAddress(HMODULE, LPCSTR) { return nullptr; }

#define interface struct
#define DECLARE_INTERFACE(name) struct name
#define DECLARE_INTERFACE_(name, base) struct name : public base
#define BEGIN_INTERFACE
#define END_INTERFACE
#define STDMETHOD(method) virtual HRESULT STDMETHODCALLTYPE method
#define STDMETHOD_(type, method) virtual type STDMETHODCALLTYPE method
#define PURE = 0
#define THIS_
#define THIS void
