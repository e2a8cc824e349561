// The exports of the fake provider library. Without a script it opens as a provider without containers.
#include "tests/support/fake_provider/fake_script.h"

namespace {

using orv::test::FakeScript;
using orv::test::PlayFake;

FakeScript* g_script = nullptr;

FakeScript& Script() {
  static FakeScript empty;
  return g_script != nullptr ? *g_script : empty;
}

}  // namespace

extern "C" {

void STDAPICALLTYPE FakeProviderUse(FakeScript* script);
void STDAPICALLTYPE FakeProviderUse(FakeScript* script) { g_script = script; }

ABPROVIDEROPEN ABProviderOpen;
HRESULT STDAPICALLTYPE ABProviderOpen(HINSTANCE resources, LPORVSUPPORT support, LPPROFSECT section,
                                      ULONG_PTR uiParam, ULONG flags, LPALLOCATEBUFFER allocate,
                                      LPALLOCATEMORE allocateMore, LPFREEBUFFER freeBuffer,
                                      LPADRBOOK* provider, ULONG_PTR callerContext) {
  FakeScript& script = Script();
  script.opened = {resources, uiParam, flags, callerContext, allocate, allocateMore, freeBuffer};
  for (const MAPIUID& uid : script.registered) script.registration = support->SetProviderUID(&uid);
  if (script.keepsSupport) {
    support->AddRef();
    script.keptSupport = support;
  }
  if (script.keepsSection) {
    section->AddRef();
    script.keptSection = section;
  }
  if (const HRESULT hr = PlayFake(script, "ABProviderOpen"); FAILED(hr)) return hr;
  if (!script.givesNoObject)
    *provider = orv::test::MakeFakeProvider(&script, {allocate, allocateMore, freeBuffer});
  return S_OK;
}

ORVSERVICEENTRY FakeServiceEntry;
HRESULT STDAPICALLTYPE FakeServiceEntry(HINSTANCE resources, ULONG_PTR uiParam, ULONG flags, ULONG context,
                                        ULONG valueCount, LPSPropValue values, LPPROFSECT section,
                                        LPORVSUPPORT support, ULONG_PTR callerContext) {
  orv::test::FakeServiceCall call{
      resources,          uiParam,      flags, context, valueCount, 0, {}, section != nullptr,
      support != nullptr, callerContext};
  if (valueCount != 0 && values != nullptr) {
    call.firstTag = values[0].ulPropTag;
    if (context == ORV_SERVICE_EXTRA_CONFIG) call.firstText = values[0].Value.lpszW;
  }
  Script().OnService(call, section, support);
  return PlayFake(Script(), "ServiceEntry");
}

}  // extern "C"
