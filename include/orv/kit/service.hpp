// The service entry function: installing, creating, configuring and removing a service.
#pragma once

#include "orv/kit/settings.hpp"

namespace orv::kit {

// What the entry function was called with.
struct ServiceCall {
  HINSTANCE resource;  // the library's language resources; may be null
  ULONG_PTR window;    // parent of windows
  ULONG flags;         // MAPI_UNICODE, SERVICE_UI_ALLOWED, SERVICE_UI_ALWAYS
  ULONG context;
  sdk::ValueView values;
  IProfSect* section;    // null on installing and uninstalling
  IOrvSupport* support;  // may be null

  // OrvFreeBuffer, which the support object tells; null without one, or where it does not tell.
  LPFREEBUFFER Free() const;
};

// What a service answers to each context. Derive from it for what needs more than settings. The library is loaded
// for the call and freed after it: keep nothing, start nothing.
class ServiceHandler {
 public:
  explicit ServiceHandler(Settings settings) : settings_(std::move(settings)) {}
  virtual ~ServiceHandler() = default;

  // Calls the method of the context; MAPI_E_NO_SUPPORT for one that is not known. Nothing is thrown.
  HRESULT Run(const ServiceCall& call) noexcept;

 protected:
  // The service comes into the catalogue from a file of the user's. A failure keeps it out.
  virtual HRESULT Install(const ServiceCall&) { return S_OK; }
  // It was put into a profile; a failure takes it out again. Nothing has to be stored: defaults are read.
  virtual HRESULT Create(const ServiceCall&) { return S_OK; }
  // The text that its creator gave, null where there is none; by default the main setting.
  virtual HRESULT ApplyText(const ServiceCall& call, LPCWSTR text);
  // Settings are changed; by default those given are stored. Without any there is nothing to do, and asked to show a
  // window in any case (SERVICE_UI_ALWAYS) a service without one answers as if it had been cancelled.
  virtual HRESULT Configure(const ServiceCall& call);
  // Before it leaves the catalogue; a failure keeps it there.
  virtual HRESULT Uninstall(const ServiceCall&) { return S_OK; }

  const Settings& GetSettings() const noexcept { return settings_; }

 private:
  HRESULT Dispatch(const ServiceCall& call);

  const Settings settings_;
};

}  // namespace orv::kit

// Defines the entry function `name`, which the catalogue names (PR_SERVICE_ENTRY_NAME) and a .def file exports;
// `handler` is an expression that makes a ServiceHandler:
//   ORV_SERVICE_ENTRY(MyServiceEntry, orv::kit::ServiceHandler(MySettings()))
#define ORV_SERVICE_ENTRY(name, handler)                                                                   \
  extern "C" HRESULT STDAPICALLTYPE name(HINSTANCE resource, ULONG_PTR window, ULONG flags, ULONG context, \
                                         ULONG count, LPSPropValue values, LPPROFSECT section,             \
                                         LPORVSUPPORT support, ULONG_PTR) {                                \
    return orv::sdk::Guarded([&]() -> HRESULT {                                                            \
      auto made = handler;                                                                                 \
      return made.Run({resource, window, flags, context, {values, count}, section, support});              \
    });                                                                                                    \
  }
