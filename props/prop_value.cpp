// Copies, searches and merges over the published structures.
#include "props/prop_value.h"

#include <algorithm>
#include <cstring>

#include "orv/orvflags.h"
#include "orv/orvtags.h"
#include "platform/com_ptr.h"
#include "props/prop_type.h"

namespace orv {
namespace {

bool Matches(ULONG tag, ULONG wanted) noexcept {
  return PROP_ID(tag) == PROP_ID(wanted) && (PROP_TYPE(wanted) == PT_UNSPECIFIED || tag == wanted);
}

// The array that a merge builds: as many values as were counted beforehand and not one more.
class MergedValues {
 public:
  HRESULT Allocate(ULONG capacity) noexcept {
    capacity_ = capacity;
    return values_.AllocateArray(capacity);
  }
  // The value, or not-found under `tag` when there is none.
  HRESULT Place(const SPropValue* value, ULONG tag) noexcept {
    if (count_ == capacity_) return MAPI_E_CALL_FAILED;
    SPropValue& slot = values_[count_++];
    return value != nullptr ? CopyValue(slot, *value, values_.Get()) : SetNotFound(slot, tag);
  }
  bool Has(ULONG tag) const noexcept { return FindValue(values_.Get(), count_, tag) != nullptr; }
  bool IsFull() const noexcept { return count_ == capacity_; }
  SPropValue* Detach() noexcept { return values_.Detach(); }

 private:
  MapiBuffer<SPropValue> values_;
  ULONG capacity_ = 0;
  ULONG count_ = 0;
};

ULONG MergedCount(const SPropTagArray& tags, const ADRENTRY& target) noexcept {
  const ULONG* end = tags.aulPropTag + tags.cValues;
  return target.cValues + static_cast<ULONG>(std::count_if(tags.aulPropTag, end, [&](ULONG tag) {
           return FindValue(target.rgPropVals, target.cValues, tag) == nullptr;
         }));
}

HRESULT PlaceMerged(const SPropTagArray& tags, const SRow& source, const ADRENTRY& target,
                    MergedValues& merged) noexcept {
  for (ULONG i = 0; i < tags.cValues; ++i) {
    const ULONG tag = tags.aulPropTag[i];
    const SPropValue* value = FindValue(source.lpProps, source.cValues, tag);
    if (value == nullptr) value = FindValue(target.rgPropVals, target.cValues, tag);
    if (const HRESULT hr = merged.Place(value, tag); FAILED(hr)) return hr;
  }
  for (ULONG i = 0; i < target.cValues; ++i) {
    const SPropValue& value = target.rgPropVals[i];
    if (merged.Has(value.ulPropTag)) continue;
    if (const HRESULT hr = merged.Place(&value, value.ulPropTag); FAILED(hr)) return hr;
  }
  return merged.IsFull() ? S_OK : MAPI_E_CALL_FAILED;
}

// Null for values without data out of line. A block that nobody owns would come of a null root.
HRESULT AllocateData(ULONG length, void* root, void** data) noexcept {
  *data = nullptr;
  if (length == 0) return S_OK;
  return root != nullptr ? AllocateToFill(length, root, data) : MAPI_E_INVALID_PARAMETER;
}

}  // namespace

HRESULT CopyValue(SPropValue& destination, const SPropValue& source, void* root) noexcept {
  const SPropValue original = source;
  destination = {};
  destination.ulPropTag = original.ulPropTag;
  const PropForm& form = FormOf(original.ulPropTag);
  if (form.PointsNowhere(original)) return S_OK;
  ULONG length = 0;
  if (const HRESULT hr = form.Length(original, length); FAILED(hr)) return hr;
  void* data = nullptr;
  const HRESULT hr = AllocateData(length, root, &data);
  // An array keeps the source's words when there is no room for its copy.
  if (SUCCEEDED(hr) || (PROP_TYPE(original.ulPropTag) & MV_FLAG)) destination.Value = original.Value;
  if (FAILED(hr) || length == 0) return hr;
  form.Write(original, static_cast<std::byte*>(data), length);
  form.PointAt(destination, static_cast<std::byte*>(data), length);
  return S_OK;
}

HRESULT CopyValues(SPropValue* destination, const SPropValue* source, ULONG count, void* root) noexcept {
  HRESULT result = S_OK;
  for (ULONG i = 0; i < count; ++i) {
    result = CopyValue(destination[i], source[i], root);
    if (SUCCEEDED(result)) continue;
    destination[i].ulPropTag = CHANGE_PROP_TYPE(source[i].ulPropTag, PT_ERROR);
    destination[i].Value.err = result;
  }
  return result;
}

HRESULT DuplicateRow(SRow& destination, const SRow& source) noexcept {
  destination = {};
  MapiBuffer<SPropValue> values;
  if (const HRESULT hr = values.AllocateArray(source.cValues); FAILED(hr)) return hr;
  const HRESULT hr = CopyValues(values.Get(), source.lpProps, source.cValues, values.Get());
  if (FAILED(hr)) return hr;
  destination.cValues = source.cValues;
  destination.lpProps = values.Detach();
  return hr;
}

HRESULT MergeIntoAddressEntry(const SPropTagArray& tags, const SRow& source, ADRENTRY& target) noexcept {
  MergedValues merged;
  const ULONG count = MergedCount(tags, target);
  if (const HRESULT hr = merged.Allocate(count); FAILED(hr)) return hr;
  if (const HRESULT hr = PlaceMerged(tags, source, target, merged); FAILED(hr)) return hr;
  if (target.rgPropVals != nullptr) OrvFreeBuffer(target.rgPropVals);
  target.cValues = count;
  target.rgPropVals = merged.Detach();
  return S_OK;
}

const SPropValue* FindValue(const SPropValue* values, ULONG count, ULONG tag) noexcept {
  if (values == nullptr) return nullptr;
  const auto* end = values + count;
  const auto* found =
      std::find_if(values, end, [tag](const SPropValue& v) { return Matches(v.ulPropTag, tag); });
  return found == end ? nullptr : found;
}

SPropValue* FindValue(SPropValue* values, ULONG count, ULONG tag) noexcept {
  return const_cast<SPropValue*>(FindValue(const_cast<const SPropValue*>(values), count, tag));
}

bool HasTag(ULONG tag, const SPropTagArray* tags) noexcept {
  if (tags == nullptr) return false;
  return std::any_of(tags->aulPropTag, tags->aulPropTag + tags->cValues,
                     [tag](ULONG present) { return Matches(present, tag); });
}

bool SubtractTags(SPropTagArray* tags, const SPropTagArray* exclusions) noexcept {
  if (tags == nullptr || exclusions == nullptr) return false;
  ULONG* const first = tags->aulPropTag;
  ULONG* const last = std::remove_if(first, first + tags->cValues, [exclusions](ULONG tag) {
    return std::any_of(exclusions->aulPropTag, exclusions->aulPropTag + exclusions->cValues,
                       [tag](ULONG excluded) { return Matches(tag, excluded); });
  });
  tags->cValues = static_cast<ULONG>(last - first);
  return true;
}

HRESULT DropBinaryColumns(const SPropTagArray* tags, MapiBuffer<SPropTagArray>& kept) noexcept {
  if (tags == nullptr || tags->cValues == 0) return MAPI_E_INVALID_PARAMETER;
  MapiBuffer<SPropTagArray> rest;
  if (const HRESULT hr = rest.Allocate(CbNewSPropTagArray(std::size_t{tags->cValues})); FAILED(hr)) return hr;
  for (ULONG i = 0; i < tags->cValues; ++i) {
    const ULONG type = PROP_TYPE(tags->aulPropTag[i]);
    if (type == PT_OBJECT || type == PT_BINARY || type == PT_MV_BINARY) continue;
    rest->aulPropTag[rest->cValues++] = tags->aulPropTag[i];
  }
  if (rest->cValues == 0) return MAPI_E_NOT_FOUND;
  kept = std::move(rest);
  return S_OK;
}

HRESULT SetNotFound(SPropValue& value, ULONG tag) noexcept {
  value.ulPropTag = CHANGE_PROP_TYPE(tag, PT_ERROR);
  value.Value.err = MAPI_E_NOT_FOUND;
  return MAPI_W_ERRORS_RETURNED;
}

void AddProblem(SPropProblemArray* problems, ULONG index, ULONG tag, HRESULT error) noexcept {
  if (problems == nullptr) return;
  problems->aProblem[problems->cProblem++] = {index, tag, error};
}

bool DuplicateBinary(MapiBuffer<SBinary>& copy, const SBinary* source) noexcept {
  copy.Reset();
  if (source == nullptr) return true;
  const ULONG size = source->lpb != nullptr ? source->cb : 0;
  if (FAILED(copy.Allocate(sizeof(SBinary) + std::size_t{size}))) return false;
  if (size == 0) return true;
  copy->cb = size;
  copy->lpb = reinterpret_cast<BYTE*>(copy.Get() + 1);
  std::memcpy(copy->lpb, source->lpb, size);
  return true;
}

bool BinaryEqual(const SBinary& a, const SBinary& b) noexcept {
  return a.cb == b.cb && (a.cb == 0 || std::memcmp(a.lpb, b.lpb, a.cb) == 0);
}

}  // namespace orv
