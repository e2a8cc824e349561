// The methods of IMAPIProp over a list of values. The lock is never held while a hook runs.
#include "orv/kit/prop_object.hpp"

#include <algorithm>

#include "orv/orvtags.h"

namespace orv::kit {
namespace {

using Guard = std::lock_guard<sdk::Lock>;

bool SameProperty(ULONG one, ULONG other) noexcept { return PROP_ID(one) == PROP_ID(other); }

bool Contains(const std::vector<ULONG>& tags, ULONG tag) noexcept {
  return std::any_of(tags.begin(), tags.end(), [tag](ULONG each) { return SameProperty(each, tag); });
}
bool Contains(const SPropTagArray* tags, ULONG tag) noexcept {
  return std::any_of(tags->aulPropTag, tags->aulPropTag + tags->cValues,
                     [tag](ULONG each) { return SameProperty(each, tag); });
}
void AddOnce(std::vector<ULONG>& tags, ULONG tag) {
  if (!Contains(tags, tag)) tags.push_back(tag);
}
void TakeOut(std::vector<ULONG>& tags, ULONG tag) noexcept {
  std::erase_if(tags, [tag](ULONG each) { return SameProperty(each, tag); });
}

bool HoldsNothing(ULONG tag) noexcept { return PROP_TYPE(tag) == PT_NULL || PROP_TYPE(tag) == PT_ERROR; }

bool IsFailure(const SPropValue& value) noexcept { return PROP_TYPE(value.ulPropTag) == PT_ERROR; }

// What the other end keeps for itself, or cannot be handed over as a value.
bool IsCopied(ULONG tag) noexcept {
  const ULONG type = PROP_TYPE(tag);
  const bool isBytes = type == PT_BINARY || type == PT_MV_BINARY;
  return !isBytes && type != PT_OBJECT && !HoldsNothing(tag) && !IsComputed(tag);
}

// What an object answered to GetProps.
struct Answer {
  explicit Answer(const sdk::Allocator& buffers) : values(buffers.Own<SPropValue>()) {}
  sdk::ValueView View() const { return {values.Get(), count}; }

  sdk::Buffer<SPropValue> values;
  ULONG count = 0;
};

HRESULT Read(IMAPIProp& object, const SPropTagArray* tags, Answer& answer) {
  return object.GetProps(const_cast<LPSPropTagArray>(tags), MAPI_UNICODE, &answer.count, answer.values.Put());
}

// What is to be set of what the source has.
PropList Chosen(sdk::ValueView values, const SPropTagArray* exclude, sdk::ValueView existing) {
  PropList chosen;
  for (const SPropValue& each : values) {
    const SPropValue* there = FindValue(existing, each.ulPropTag);
    const bool isThere = there != nullptr && !HoldsNothing(there->ulPropTag);
    const bool isExcluded = exclude != nullptr && Contains(exclude, each.ulPropTag);
    if (isThere || isExcluded || !IsCopied(each.ulPropTag)) continue;
    if (FAILED(chosen.Set(each))) continue;  // of no type that can be handed on
  }
  return chosen;
}

// All values, where no tags say which. No values, no array.
HRESULT HandOut(const sdk::Allocator& buffers, sdk::ValueView all, const SPropTagArray* tags, ULONG* count,
                LPSPropValue* values) {
  HRESULT result = S_OK;
  auto copy = buffers.Own<SPropValue>();
  const auto size = tags != nullptr ? tags->cValues : static_cast<ULONG>(all.end() - all.begin());
  if (tags != nullptr) {
    copy = CopyProps(buffers, all, tags->aulPropTag, size, &result);
  } else if (size != 0) {
    copy = CopyAll(buffers, all);
    if (std::any_of(all.begin(), all.end(), IsFailure)) result = MAPI_W_ERRORS_RETURNED;
  }
  *count = size;
  *values = copy.Detach();
  return result;
}

}  // namespace

bool IsComputed(ULONG tag) noexcept {
  switch (PROP_ID(tag)) {
    case PROP_ID(PR_ACCESS):
    case PROP_ID(PR_INSTANCE_KEY):
    case PROP_ID(PR_ACCESS_LEVEL):
    case PROP_ID(PR_OBJECT_TYPE):
    case PROP_ID(PR_ENTRYID):
    case PROP_ID(PR_SEARCH_KEY):
    case PROP_ID(PR_CONTAINER_FLAGS):
    case PROP_ID(PR_AB_PROVIDER_ID):
    case PROP_ID(PR_DISPLAY_TYPE):
    case PROP_ID(PR_CREATION_TIME):
    case PROP_ID(PR_LAST_MODIFICATION_TIME):
      return true;
    default:
      return false;
  }
}

// The problems of a call, in a root that is there before anything is changed.
class PropBody::Problems {
 public:
  Problems(const sdk::Allocator& buffers, ULONG most, LPSPropProblemArray* out)
      : out_(out), array_(buffers.Own<SPropProblemArray>()) {
    if (out_ == nullptr) return;
    *out_ = nullptr;
    array_ = buffers.Make<SPropProblemArray>(CbNewSPropProblemArray(size_t{most} + 1));
  }

  void Note(ULONG index, ULONG tag, HRESULT code) noexcept {
    if (SUCCEEDED(code) || out_ == nullptr) return;
    array_->aProblem[array_->cProblem++] = {index, tag, code};
  }
  HRESULT HandOut() noexcept {
    if (out_ != nullptr && array_->cProblem != 0) *out_ = array_.Detach();
    return S_OK;
  }

 private:
  LPSPropProblemArray* out_;
  sdk::Buffer<SPropProblemArray> array_;
};

HRESULT PropBody::Compute(ULONG, PropList&) { return MAPI_E_NOT_FOUND; }
HRESULT PropBody::CheckSet(const SPropValue&) { return S_OK; }
HRESULT PropBody::CheckDelete(ULONG) { return S_OK; }
HRESULT PropBody::Save(Changes&) { return MAPI_E_NO_SUPPORT; }

Access PropBody::GetAccess() const {
  const Guard guard(lock_);
  return access_;
}

PropList PropBody::Values() const {
  const Guard guard(lock_);
  return values_;
}

// Those of the computed ones that were asked for, behind all others.
PropList PropBody::WithComputed(const std::vector<ULONG>& computed, const SPropTagArray* tags) {
  PropList all = Values();
  for (const ULONG tag : computed) {
    if (tags != nullptr && !Contains(tags, tag)) continue;
    const HRESULT hr = sdk::Guarded([&] { return Compute(tag, all); });
    const bool isTold = FAILED(hr) && (tags != nullptr || hr != MAPI_E_NOT_FOUND);
    if (FAILED(hr)) all.Remove(tag);
    if (isTold) all.Set(CHANGE_PROP_TYPE(tag, PT_ERROR), hr);
  }
  return all;
}

HRESULT PropBody::DoGetProps(const SPropTagArray* tags, ULONG flags, ULONG* count, LPSPropValue* values) {
  if (count == nullptr || values == nullptr) return MAPI_E_INVALID_PARAMETER;
  if ((flags & MAPI_UNICODE) == 0) return MAPI_E_BAD_CHARWIDTH;
  if (tags != nullptr && tags->cValues == 0) return MAPI_E_INVALID_PARAMETER;
  return sdk::Guarded([&] {
    const std::vector<ULONG> computed = ComputedTags();
    if (!computed.empty())
      return HandOut(host_->buffers, WithComputed(computed, tags).View(), tags, count, values);
    const Guard guard(lock_);
    return HandOut(host_->buffers, values_.View(), tags, count, values);
  });
}

HRESULT PropBody::DoGetPropList(ULONG flags, LPSPropTagArray* tags) {
  if (tags == nullptr) return MAPI_E_INVALID_PARAMETER;
  if ((flags & MAPI_UNICODE) == 0) return MAPI_E_BAD_CHARWIDTH;
  return sdk::Guarded([&] {
    std::vector<ULONG> all = Values().Tags();
    for (const ULONG tag : ComputedTags()) AddOnce(all, tag);
    *tags = static_cast<LPSPropTagArray>(host_->buffers.CopyTags(all).release());
    return S_OK;
  });
}

HRESULT PropBody::CheckOneSet(const SPropValue& value) {
  const ULONG tag = value.ulPropTag;
  if (PROP_TYPE(tag) == PT_OBJECT) return MAPI_E_NO_ACCESS;
  if (IsComputed(tag) || Contains(ComputedTags(), tag)) return MAPI_E_COMPUTED;
  if (const HRESULT hr = CheckValue(value); FAILED(hr)) return hr;
  return CheckSet(value);
}

HRESULT PropBody::SetOne(const SPropValue& value) {
  if (HoldsNothing(value.ulPropTag)) return S_OK;
  if (const HRESULT hr = CheckOneSet(value); FAILED(hr)) return hr;
  const Guard guard(lock_);
  AddOnce(set_, value.ulPropTag);
  const HRESULT hr = values_.Set(value);
  TakeOut(removed_, value.ulPropTag);
  return hr;
}

HRESULT PropBody::DeleteOne(ULONG tag) {
  if (IsComputed(tag)) return MAPI_E_NOT_FOUND;
  if (const HRESULT hr = CheckDelete(tag); FAILED(hr)) return hr;
  const Guard guard(lock_);
  AddOnce(removed_, tag);
  if (values_.Remove(tag)) {
    TakeOut(set_, tag);
    return S_OK;
  }
  TakeOut(removed_, tag);
  return MAPI_E_NOT_FOUND;
}

HRESULT PropBody::DoSetProps(ULONG count, const SPropValue* values, LPSPropProblemArray* problems) {
  if (count != 0 && values == nullptr) return MAPI_E_INVALID_PARAMETER;
  if (GetAccess() == Access::kRead) return MAPI_E_NO_ACCESS;
  return sdk::Guarded([&] {
    Problems found(host_->buffers, count, problems);
    for (ULONG i = 0; i < count; ++i) {
      found.Note(i, values[i].ulPropTag, sdk::Guarded([&] { return SetOne(values[i]); }));
    }
    return found.HandOut();
  });
}

HRESULT PropBody::DoDeleteProps(const SPropTagArray* tags, LPSPropProblemArray* problems) {
  if (tags == nullptr) return MAPI_E_INVALID_PARAMETER;
  if (GetAccess() == Access::kRead) return MAPI_E_NO_ACCESS;
  return sdk::Guarded([&] {
    Problems found(host_->buffers, tags->cValues, problems);
    for (ULONG i = 0; i < tags->cValues; ++i) {
      const ULONG tag = tags->aulPropTag[i];
      found.Note(i, tag, sdk::Guarded([&] { return DeleteOne(tag); }));
    }
    return found.HandOut();
  });
}

HRESULT PropBody::DoSaveChanges(ULONG flags) {
  return sdk::Guarded([&] {
    HRESULT hr = S_OK;
    {
      const Guard guard(saving_);
      hr = SaveOnce(flags);
    }
    if (SUCCEEDED(hr)) Saved();
    return hr;
  });
}

// Changes that come while Save runs belong to the next SaveChanges.
HRESULT PropBody::SaveOnce(ULONG flags) {
  PropList values;
  Changes changes{values, {}, {}, (flags & FORCE_SAVE) != 0};
  {
    const Guard guard(lock_);
    if (access_ == Access::kRead) return MAPI_E_NO_ACCESS;
    values = values_;
    changes.set.swap(set_);
    changes.removed.swap(removed_);
  }
  const HRESULT hr = sdk::Guarded([&] { return Save(changes); });
  if (FAILED(hr)) {
    PutBack(changes);
    return hr;
  }
  TakeOver(values);
  if ((flags & KEEP_OPEN_READWRITE) == 0) {
    const Guard guard(lock_);
    access_ = Access::kRead;
  }
  return hr;
}

// What Save made of the values, under what was changed meanwhile.
void PropBody::TakeOver(const PropList& saved) {
  PropList values = saved;
  const Guard guard(lock_);
  for (const ULONG tag : set_) {
    const SPropValue* later = values_.Find(tag);
    if (later != nullptr) static_cast<void>(values.Set(*later));  // sound: it was set before
  }
  for (const ULONG tag : removed_) values.Remove(tag);
  values_ = std::move(values);
}

void PropBody::PutBack(const Changes& unsaved) {
  const Guard guard(lock_);
  for (const ULONG tag : unsaved.set) {
    if (!Contains(removed_, tag)) AddOnce(set_, tag);
  }
  for (const ULONG tag : unsaved.removed) {
    if (!Contains(set_, tag)) AddOnce(removed_, tag);
  }
}

HRESULT CopyBetween(const sdk::Allocator& buffers, IMAPIProp& source, const SPropTagArray* include,
                    const SPropTagArray* exclude, LPCIID iid, LPVOID target, ULONG flags,
                    LPSPropProblemArray* problems) {
  if (iid == nullptr || target == nullptr) return MAPI_E_INVALID_PARAMETER;
  sdk::ComPtr<IMAPIProp> object =
      sdk::ComPtr<IUnknown>::Share(static_cast<IUnknown*>(target)).As<IMAPIProp>();
  if (!object) return MAPI_E_INTERFACE_NOT_SUPPORTED;
  Answer values(buffers), existing(buffers);
  if (const HRESULT hr = Read(source, include, values); FAILED(hr)) return hr;
  if ((flags & MAPI_NOREPLACE) != 0) {
    if (const HRESULT hr = Read(*object, include, existing); FAILED(hr)) return hr;
  }
  PropList chosen = Chosen(values.View(), exclude, existing.View());
  return object->SetProps(static_cast<ULONG>(chosen.size()), const_cast<LPSPropValue>(chosen.View().begin()),
                          problems);
}

}  // namespace orv::kit
