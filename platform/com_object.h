// What every object repeats: a lock, a reference count under it, QueryInterface over a list of identifiers,
// destruction at zero. Objects are born with one reference, in a factory that hands them out.
#pragma once

#include "orv/orvcodes.h"
#include "platform/faults.h"
#include "platform/lock.h"
#include "platform/pointer_check.h"
#include "platform/win.h"

namespace orv {

// `Interface` comes first among the bases, so its slots are the first of the vtable in published order; our own
// virtual functions (the destructor among them) follow behind them and disturb nobody.
template <class Interface>
class ComObject : public Interface, private faults::Counted {
 public:
  ComObject(const ComObject&) = delete;
  ComObject& operator=(const ComObject&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    if (!IsWritableOut(out)) return MAPI_E_INVALID_PARAMETER;
    *out = nullptr;
    if (const HRESULT hr = CheckUsable(); FAILED(hr)) return hr;
    if (!Supports(iid)) return MAPI_E_INTERFACE_NOT_SUPPORTED;
    AddRef();
    *out = static_cast<Interface*>(this);
    return S_OK;
  }

  ULONG STDMETHODCALLTYPE AddRef() override {
    LockGuard guard(lock_);
    return ++references_;
  }

  ULONG STDMETHODCALLTYPE Release() override {
    ULONG left = 0;
    {
      LockGuard guard(lock_);
      left = --references_;
    }
    if (left == 0) LastReferenceGone();
    return left;
  }

 protected:
  ComObject() = default;
  virtual ~ComObject() = default;

  // The identifiers that QueryInterface answers with this object.
  virtual bool Supports(REFIID iid) const = 0;
  // Asked before the identifier is looked at; the address book refuses here after its session's end.
  virtual HRESULT CheckUsable() const { return S_OK; }

  // For an object that may have to outlive its last reference.
  virtual void LastReferenceGone() { delete this; }

  Lock& ObjectLock() const { return lock_; }
  // For a factory that hands its object out without the caller's reference; before anyone else sees it.
  void ForgetFirstReference() { references_ = 0; }

 private:
  mutable Lock lock_;
  ULONG references_ = 1;
};

// True when `iid` is one of the list.
template <class... Identifiers>
bool IsOneOf(REFIID iid, const Identifiers&... identifiers) {
  return (IsEqualGUID(iid, identifiers) || ...);
}

}  // namespace orv
