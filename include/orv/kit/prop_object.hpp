// Objects with properties: what stands behind IMAPIProp in mail users, distribution lists, containers and the
// provider object.
//
// A class names its interface and writes down only what it does differently:
//   class Person final : public kit::PropObject<IMailUser> {
//    public:
//     using PropObject::PropObject;
//   };
//   new Person(host, values);                            // reads `values`, refuses every change
//   new Person(host, values, kit::Access::kModify);      // takes changes; override Save to keep them
//
// What the methods answer is written beside them. All may be called from any thread, several at once.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "orv/kit/values.hpp"

namespace orv::kit {

// What all objects of one logon share. They keep it alive, and with it the support object.
struct Host {
  sdk::Allocator buffers;
  sdk::ComPtr<IOrvSupport> support;  // null where there is none: copies are then made without it
};
using HostPtr = std::shared_ptr<const Host>;

enum class Access { kRead, kModify };

// Properties that are the object's own answer and that no caller may set: identifiers, types, access, container
// flags.
bool IsComputed(ULONG tag) noexcept;

// What SaveChanges is to keep.
struct Changes {
  PropList& values;            // all that the object has now; what Save sets here, the object has afterwards
  std::vector<ULONG> set;      // tags of values that were set since the last SaveChanges
  std::vector<ULONG> removed;  // tags of those that were taken away
  bool force;                  // FORCE_SAVE: also over what somebody else has stored meanwhile
};

// The part of PropObject that does not depend on the interface. Its hooks are called without a lock, on the caller's
// thread; what they throw becomes MAPI_E_NOT_ENOUGH_MEMORY or MAPI_E_CALL_FAILED.
class PropBody {
 public:
  PropBody(HostPtr host, PropList values, Access access = Access::kRead)
      : host_(std::move(host)), values_(std::move(values)), access_(access) {}
  PropBody(const PropBody&) = delete;
  PropBody& operator=(const PropBody&) = delete;

 protected:
  virtual ~PropBody() = default;

  // Properties that are made only when they are asked for: which, and each of them. Compute sets `tag` in `values`;
  // a failure is answered in the place of the value (PT_ERROR), and in an answer of all properties MAPI_E_NOT_FOUND
  // leaves it out.
  virtual std::vector<ULONG> ComputedTags() const { return {}; }
  virtual HRESULT Compute(ULONG tag, PropList& values);

  // Whether a caller may set this value or take away the property, of an object that takes changes. IsComputed and
  // PT_OBJECT were refused before, and values that cannot be copied. A failure is reported as the problem of this one
  // property.
  virtual HRESULT CheckSet(const SPropValue& value);
  virtual HRESULT CheckDelete(ULONG tag);

  // Makes changes permanent. Comes once for each SaveChanges, one at a time for each object, with nothing changed
  // too: a new entry exists from its first SaveChanges on, whatever was set. MAPI_E_OBJECT_CHANGED and
  // MAPI_E_OBJECT_DELETED tell of what others did meanwhile. After a failure the changes are still there to be
  // saved. Call no sink in here: that is for Saved, which comes when all is done and nothing held.
  virtual HRESULT Save(Changes& changes);
  virtual void Saved() {}

  const Host& GetHost() const noexcept { return *host_; }
  const HostPtr& ShareHost() const noexcept { return host_; }
  Access GetAccess() const;
  // A copy of the values as they are now, unsaved changes included; without computed ones.
  PropList Values() const;

  // The methods of IMAPIProp; PropObject passes them on.
  HRESULT DoSaveChanges(ULONG flags);
  HRESULT DoGetProps(const SPropTagArray* tags, ULONG flags, ULONG* count, LPSPropValue* values);
  HRESULT DoGetPropList(ULONG flags, LPSPropTagArray* tags);
  HRESULT DoSetProps(ULONG count, const SPropValue* values, LPSPropProblemArray* problems);
  HRESULT DoDeleteProps(const SPropTagArray* tags, LPSPropProblemArray* problems);

 private:
  class Problems;

  PropList WithComputed(const std::vector<ULONG>& computed, const SPropTagArray* tags);
  HRESULT CheckOneSet(const SPropValue& value);
  HRESULT SetOne(const SPropValue& value);
  HRESULT DeleteOne(ULONG tag);
  HRESULT SaveOnce(ULONG flags);
  void TakeOver(const PropList& saved);
  void PutBack(const Changes& unsaved);

  const HostPtr host_;
  mutable sdk::Lock lock_;  // guards the values, what was changed, and the access
  PropList values_;
  std::vector<ULONG> set_, removed_;
  Access access_;
  sdk::Lock saving_;  // held while Save runs
};

// Copies properties from any object to another that `iid` names, without help of the library: all that are neither
// bytes nor objects nor computed; of `include` (null: of all) without `exclude` (null: none). MAPI_NOREPLACE keeps
// what the target has. Other flags are not looked at. *problems comes from the target's SetProps; null: not wanted.
HRESULT CopyBetween(const sdk::Allocator& buffers, IMAPIProp& source, const SPropTagArray* include,
                    const SPropTagArray* exclude, LPCIID iid, LPVOID target, ULONG flags,
                    LPSPropProblemArray* problems);

// The interface by which the library knows an object when it copies. A provider object is one with properties there.
template <class Interface>
inline constexpr const GUID& kCopiedAs = sdk::kIidOf<Interface>;
template <>
inline constexpr const GUID& kCopiedAs<IAddrBook> = sdk::kIidOf<IMAPIProp>;

// `Bases` are the interfaces between `Interface` and IMAPIProp: IMAPIContainer for IABContainer and IDistList.
template <class Interface, class... Bases>
class PropObject : public sdk::RefusingProp<Interface, IMAPIProp, Bases...>, protected PropBody {
 public:
  using PropBody::PropBody;

  // MAPI_E_NO_ACCESS of an object that takes no changes. KEEP_OPEN_READWRITE: it goes on taking them; otherwise, with
  // KEEP_OPEN_READONLY or no flag, it can only be read after success. FORCE_SAVE: Changes::force.
  HRESULT STDMETHODCALLTYPE SaveChanges(ULONG flags) override { return DoSaveChanges(flags); }

  // MAPI_E_INVALID_PARAMETER: null outs, or tags with a count of 0; MAPI_E_BAD_CHARWIDTH: no MAPI_UNICODE; outs are
  // untouched after a failure. Else as CopyProps of values.hpp says, in the order asked, or all (null) in the order
  // of GetPropList; an object without properties gives count 0 and a null array. The array is one root, the
  // caller's.
  HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray tags, ULONG flags, ULONG* count,
                                     LPSPropValue* values) override {
    return DoGetProps(tags, flags, count, values);
  }

  // The same checks. One root, the caller's.
  HRESULT STDMETHODCALLTYPE GetPropList(ULONG flags, LPSPropTagArray* tags) override {
    return DoGetPropList(flags, tags);
  }

  // MAPI_E_NO_ACCESS of an object that takes no changes; MAPI_E_INVALID_PARAMETER without values or tags. Otherwise
  // a success, and *problems (may be null) a root with what was refused, or null: MAPI_E_COMPUTED, MAPI_E_NO_ACCESS
  // for a PT_OBJECT, codes of CheckValue, of CheckSet and CheckDelete; MAPI_E_NOT_FOUND when there is nothing to
  // delete or it is computed. PT_NULL and PT_ERROR are skipped.
  HRESULT STDMETHODCALLTYPE SetProps(ULONG count, LPSPropValue values,
                                     LPSPropProblemArray* problems) override {
    return DoSetProps(count, values, problems);
  }
  HRESULT STDMETHODCALLTYPE DeleteProps(LPSPropTagArray tags, LPSPropProblemArray* problems) override {
    return DoDeleteProps(tags, problems);
  }

  // The library's work, as orvspi.h says at DoCopyTo and DoCopyProps; without a support object CopyBetween does it.
  HRESULT STDMETHODCALLTYPE CopyTo(ULONG count, LPCIID interfaces, LPSPropTagArray exclude, ULONG_PTR ui,
                                   LPMAPIPROGRESS progress, LPCIID iid, LPVOID target, ULONG flags,
                                   LPSPropProblemArray* problems) override {
    return sdk::Guarded([&] {
      IOrvSupport* support = GetHost().support.Get();
      return support != nullptr
                 ? support->DoCopyTo(&kCopiedAs<Interface>, static_cast<Interface*>(this), count, interfaces,
                                     exclude, ui, progress, iid, target, flags, problems)
                 : CopyBetween(GetHost().buffers, *this, nullptr, exclude, iid, target, flags, problems);
    });
  }
  HRESULT STDMETHODCALLTYPE CopyProps(LPSPropTagArray include, ULONG_PTR ui, LPMAPIPROGRESS progress,
                                      LPCIID iid, LPVOID target, ULONG flags,
                                      LPSPropProblemArray* problems) override {
    return sdk::Guarded([&] {
      if (include == nullptr) return MAPI_E_INVALID_PARAMETER;
      IOrvSupport* support = GetHost().support.Get();
      return support != nullptr
                 ? support->DoCopyProps(&kCopiedAs<Interface>, static_cast<Interface*>(this), include, ui,
                                        progress, iid, target, flags, problems)
                 : CopyBetween(GetHost().buffers, *this, include, nullptr, iid, target, flags, problems);
    });
  }
};

}  // namespace orv::kit
