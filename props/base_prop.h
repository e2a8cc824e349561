// The in-memory property object that every property-bearing object of the library derives from. It keeps
// nothing: an owner that wants the values saved writes the list out.
#pragma once

#include <span>

#include "orv/orvapi.h"
#include "orv/orvflags.h"
#include "platform/boundary.h"
#include "platform/com_object.h"
#include "props/prop_list.h"

namespace orv {

// Properties and modified mark. Functions ending in Locked want the object's lock held.
class CBaseProp {
 public:
  CBaseProp(const CBaseProp&) = delete;
  CBaseProp& operator=(const CBaseProp&) = delete;

 protected:
  CBaseProp() = default;
  virtual ~CBaseProp() = default;

  // Asked before a client's value is stored: computed properties and objects are refused.
  virtual HRESULT CheckPropTag(ULONG tag) const;
  virtual HRESULT CheckPropValue(const SPropValue& value) const;

  // Stores the values as given, computed ones too; the first failure empties the list. May throw bad_alloc.
  HRESULT LoadLocked(std::span<const SPropValue> values);

  HRESULT GetPropsLocked(const SPropTagArray* tags, PropValues& out) const noexcept;
  // These two go on after a failure, report it as a problem (unless that is null) and set the modified mark.
  void SetPropsLocked(std::span<const SPropValue> values, SPropProblemArray* problems) noexcept;
  void DeletePropsLocked(const SPropTagArray& tags, SPropProblemArray* problems) noexcept;

  // All properties; none gives count 0 and a null array. Any failure is MAPI_E_NOT_ENOUGH_MEMORY.
  HRESULT GetAllLocked(PropValues& out) const noexcept;
  // One property in a block of its own. PR_NULL and PT_ERROR tags: S_OK with nothing.
  HRESULT GetOneLocked(ULONG tag, MapiBuffer<SPropValue>& out) const noexcept;
  // Sets or clears the node flags of one property; MAPI_E_NOT_FOUND without it.
  HRESULT SetNodeFlagsLocked(ULONG tag, ULONG flags, bool set) noexcept;

  PropList& Properties() noexcept { return properties_; }
  const PropList& Properties() const noexcept { return properties_; }

  // Something was written since the last SaveChanges; the nodes' flags say what. For an owner that keeps values
  // elsewhere; none of ours asks.
  bool IsModified() const noexcept { return modified_; }
  void SetModified(bool modified) noexcept { modified_ = modified; }

 private:
  HRESULT SetOneLocked(const SPropValue& value);

  PropList properties_;
  bool modified_ = false;
};

// The checks and outs of the property methods, shared by all instances of the template below.
namespace prop_methods {
HRESULT CheckGetProps(const SPropTagArray* tags, ULONG flags, ULONG* count, SPropValue** values);
HRESULT CheckGetPropList(ULONG flags, SPropTagArray** tags);
HRESULT CheckSetProps(ULONG count, const SPropValue* values);
HRESULT CheckDeleteProps(const SPropTagArray* tags);
// Clears the caller's out and sizes an array for `count` problems, unless the caller wants none.
HRESULT AllocateProblems(ULONG count, SPropProblemArray** out, MapiBuffer<SPropProblemArray>& problems);
// Hands the array out when it holds a problem.
void HandOutProblems(MapiBuffer<SPropProblemArray>& problems, SPropProblemArray** out);
HRESULT UnsupportedCopy(ULONG flags);
}  // namespace prop_methods

// CBaseProp behind a published interface that derives from IMAPIProp. A derived class says which identifiers
// it answers (Supports) and overrides what it does differently.
template <class Interface>
class PropObject : public ComObject<Interface>, protected CBaseProp {
 public:
  HRESULT STDMETHODCALLTYPE GetLastError(HRESULT, ULONG, LPMAPIERROR*) override { return MAPI_E_NO_SUPPORT; }

  HRESULT STDMETHODCALLTYPE SaveChanges(ULONG) override {
    LockGuard guard(this->ObjectLock());
    SetModified(false);
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray tags, ULONG flags, ULONG* count,
                                     LPSPropValue* values) override {
    if (const HRESULT hr = prop_methods::CheckGetProps(tags, flags, count, values); FAILED(hr)) return hr;
    PropValues found;
    LockGuard guard(this->ObjectLock());
    const HRESULT hr = GetPropsLocked(tags, found);
    if (FAILED(hr)) return hr;
    *count = found.count;
    *values = found.values.Detach();
    return hr;
  }

  HRESULT STDMETHODCALLTYPE GetPropList(ULONG flags, LPSPropTagArray* tags) override {
    if (const HRESULT hr = prop_methods::CheckGetPropList(flags, tags); FAILED(hr)) return hr;
    MapiBuffer<SPropTagArray> found;
    LockGuard guard(this->ObjectLock());
    if (const HRESULT hr = Properties().GetTags(found); FAILED(hr)) return hr;
    *tags = found.Detach();
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE OpenProperty(ULONG, LPCIID, ULONG, ULONG, LPUNKNOWN*) override {
    return MAPI_E_NO_SUPPORT;
  }

  HRESULT STDMETHODCALLTYPE SetProps(ULONG count, LPSPropValue values, LPSPropProblemArray* out) override {
    if (const HRESULT hr = prop_methods::CheckSetProps(count, values); FAILED(hr)) return hr;
    MapiBuffer<SPropProblemArray> problems;
    if (const HRESULT hr = prop_methods::AllocateProblems(count, out, problems); FAILED(hr)) return hr;
    LockGuard guard(this->ObjectLock());
    SetPropsLocked({values, count}, problems.Get());
    prop_methods::HandOutProblems(problems, out);
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE DeleteProps(LPSPropTagArray tags, LPSPropProblemArray* out) override {
    if (const HRESULT hr = prop_methods::CheckDeleteProps(tags); FAILED(hr)) return hr;
    MapiBuffer<SPropProblemArray> problems;
    if (const HRESULT hr = prop_methods::AllocateProblems(tags->cValues, out, problems); FAILED(hr))
      return hr;
    LockGuard guard(this->ObjectLock());
    DeletePropsLocked(*tags, problems.Get());
    prop_methods::HandOutProblems(problems, out);
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE CopyTo(ULONG, LPCIID, LPSPropTagArray, ULONG_PTR, LPMAPIPROGRESS, LPCIID, LPVOID,
                                   ULONG flags, LPSPropProblemArray*) override {
    return prop_methods::UnsupportedCopy(flags);
  }

  HRESULT STDMETHODCALLTYPE CopyProps(LPSPropTagArray, ULONG_PTR, LPMAPIPROGRESS, LPCIID, LPVOID, ULONG flags,
                                      LPSPropProblemArray*) override {
    return prop_methods::UnsupportedCopy(flags);
  }

  HRESULT STDMETHODCALLTYPE GetNamesFromIDs(LPSPropTagArray*, LPGUID, ULONG, ULONG*,
                                            LPMAPINAMEID**) override {
    return MAPI_E_NO_SUPPORT;
  }

  HRESULT STDMETHODCALLTYPE GetIDsFromNames(ULONG, LPMAPINAMEID*, ULONG, LPSPropTagArray*) override {
    return MAPI_E_NO_SUPPORT;
  }
};

}  // namespace orv
