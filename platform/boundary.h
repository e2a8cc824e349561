// Nothing that we throw leaves a method: memory exhaustion becomes its code here and nowhere else.
#pragma once

#include <new>
#include <utility>

#include "orv/orvcodes.h"
#include "platform/win.h"

namespace orv {

// For bodies that call only our own code.
template <class Body>
HRESULT Guarded(Body&& body) noexcept {
  try {
    return std::forward<Body>(body)();
  } catch (const std::bad_alloc&) {
    return MAPI_E_NOT_ENOUGH_MEMORY;
  } catch (...) {
    return MAPI_E_CALL_FAILED;
  }
}

// For bodies that call providers, entry functions or sinks: their exceptions are not ours and stop here,
// after the body's owners have cleaned up. Not noexcept: a foreign unwinder passes through it.
template <class Body>
HRESULT GuardedForeign(Body&& body) {
  try {
    return std::forward<Body>(body)();
  } catch (const std::bad_alloc&) {
    return MAPI_E_NOT_ENOUGH_MEMORY;
  } catch (...) {
    return MAPI_E_CALL_FAILED;
  }
}

// A foreign call that hands something out through `owner`: one that fails hands out nothing, whatever it wrote.
template <class Owner, class Call>
HRESULT HandedOut(Owner& owner, Call&& call) {
  const HRESULT hr = GuardedForeign(std::forward<Call>(call));
  if (FAILED(hr)) static_cast<void>(owner.Detach());
  return hr;
}

}  // namespace orv
