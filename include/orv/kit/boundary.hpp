// Calling what somebody else has made, and handing out what we have made.
#pragma once

#include "orv/orvbase.hpp"

namespace orv::kit {

// Calls code of somebody else's that may throw: a sink, an object that a caller gave. Returns what `body` returns;
// what it throws becomes MAPI_E_CALL_FAILED, memory exhaustion its code.
template <class Body>
HRESULT CallForeign(Body&& body) noexcept {
  return sdk::Guarded(body);
}

// The same for a call that fills an owner (sdk::ComPtr, sdk::Buffer): when it fails, or answers success without
// having handed out anything (MAPI_E_CALL_FAILED), nothing is kept. What a failing call has written is not believed:
// it is neither released nor freed.
template <class Owner, class Body>
HRESULT CallForeign(Owner& owner, Body&& body) noexcept {
  const HRESULT hr = CallForeign(body);
  if (FAILED(hr)) {
    static_cast<void>(owner.Detach());
    return hr;
  }
  return owner ? hr : MAPI_E_CALL_FAILED;
}

// Hands an object out as the interface asked for, null asking for its own; the caller's is one reference.
// MAPI_E_INTERFACE_NOT_SUPPORTED, or what else QueryInterface answers, with *out untouched.
template <class Interface>
HRESULT HandOut(const sdk::ComPtr<Interface>& object, LPCIID iid, LPUNKNOWN* out) {
  void* found = nullptr;
  const HRESULT hr = object->QueryInterface(iid != nullptr ? *iid : sdk::kIidOf<Interface>, &found);
  if (SUCCEEDED(hr)) *out = static_cast<LPUNKNOWN>(found);
  return hr;
}

}  // namespace orv::kit
