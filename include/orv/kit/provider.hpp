// The two functions that a provider library exports, on the kit. With a Book (book.hpp) and Settings (settings.hpp)
// of its own a library comes to this:
//
//   ORV_SERVICE_ENTRY(MyServiceEntry, orv::kit::ServiceHandler(MySettings()))
//   ORV_PROVIDER(MyBook, MySettings())
//
// and a .def file with EXPORTS ABProviderOpen MyServiceEntry.
#pragma once

#include "orv/kit/book.hpp"
#include "orv/kit/boundary.hpp"
#include "orv/kit/recipients.hpp"
#include "orv/kit/service.hpp"
#include "orv/kit/unload.hpp"

namespace orv::kit {

// The arguments of ABProviderOpen that matter.
struct OpenCall {
  IOrvSupport* support;
  IProfSect* section;
  ULONG flags;
  LPALLOCATEBUFFER allocate;
  LPALLOCATEMORE allocateMore;
  LPFREEBUFFER free;
  LPADRBOOK* provider;
  HINSTANCE resource = nullptr;  // Logon::resource
};

using MakeBook = std::function<std::shared_ptr<Book>(const Logon&)>;

// ABProviderOpen: MAPI_E_INVALID_PARAMETER for a null argument; reads the settings, registers the service's
// PR_SERVICE_UID (or `uid`, for a directory that is the same for everybody), keeps support object and section, makes
// the book, opens it and hands out the provider object, which has one reference. What fails is the result, *provider
// is then untouched and nothing kept.
//
// The provider object answers GetProps with the book's root, OpenEntry and CompareEntryIDs for the book's identifiers
// (MAPI_E_UNKNOWN_ENTRYID for others), PrepareRecips, Advise and Unadvise, and Details and NewEntry by the book's
// windows; the rest is MAPI_E_NO_SUPPORT.
HRESULT OpenProvider(const OpenCall& call, const Settings& settings, const MakeBook& make,
                     const MAPIUID* uid = nullptr) noexcept;

}  // namespace orv::kit

// Libraries built with mingw give back what their run-time took (unload.hpp). ORV_PROVIDER has it in; a library whose
// ABProviderOpen is written by hand, over OpenProvider, puts ORV_PROVIDER_UNLOAD beside it, once. One with a DllMain
// of its own calls GiveBackRunTime there instead.
#ifdef __MINGW32__
#define ORV_PROVIDER_UNLOAD                                                                         \
  extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID processEnds) {             \
    if (reason == DLL_PROCESS_DETACH && processEnds == nullptr) orv::sdk::GiveBackRunTime(library); \
    return TRUE;                                                                                    \
  }
#else
#define ORV_PROVIDER_UNLOAD
#endif

// Defines ABProviderOpen, and DllMain where one is needed. `book` is a class derived from Book that is made from a
// Logon, `settings` an expression.
#define ORV_PROVIDER(book, settings)                                                                       \
  extern "C" HRESULT STDAPICALLTYPE ABProviderOpen(HINSTANCE resource, LPORVSUPPORT support,               \
                                                   LPPROFSECT section, ULONG_PTR, ULONG flags,             \
                                                   LPALLOCATEBUFFER allocate, LPALLOCATEMORE allocateMore, \
                                                   LPFREEBUFFER free, LPADRBOOK* provider, ULONG_PTR) {    \
    return orv::sdk::Guarded([&] {                                                                         \
      return orv::kit::OpenProvider(                                                                       \
          {support, section, flags, allocate, allocateMore, free, provider, resource}, settings,           \
          [](const orv::kit::Logon& logon) { return std::make_shared<book>(logon); });                     \
    });                                                                                                    \
  }                                                                                                        \
  ORV_PROVIDER_UNLOAD
