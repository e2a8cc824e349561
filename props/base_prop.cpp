// Reads, sets and deletes the properties of one object, and the checks before that.
#include "props/base_prop.h"

#include <algorithm>
#include <array>

#include "orv/orvtags.h"
#include "props/prop_value.h"

namespace orv {
namespace {

// What the object itself answers for and no client may set.
constexpr std::array kComputedTags = {PR_ACCESS,          PR_INSTANCE_KEY,   PR_ACCESS_LEVEL,
                                      PR_OBJECT_TYPE,     PR_ENTRYID,        PR_SEARCH_KEY,
                                      PR_CONTAINER_FLAGS, PR_AB_PROVIDER_ID, PR_DISPLAY_TYPE};

bool HoldsNothing(ULONG tag) { return tag == PR_NULL || PROP_TYPE(tag) == PT_ERROR; }

}  // namespace

HRESULT CBaseProp::CheckPropTag(ULONG tag) const {
  if (PROP_TYPE(tag) == PT_OBJECT) return MAPI_E_NO_ACCESS;
  const bool computed = std::any_of(kComputedTags.begin(), kComputedTags.end(),
                                    [tag](ULONG own) { return PROP_ID(own) == PROP_ID(tag); });
  return computed ? MAPI_E_COMPUTED : S_OK;
}

HRESULT CBaseProp::CheckPropValue(const SPropValue&) const { return S_OK; }

HRESULT CBaseProp::LoadLocked(std::span<const SPropValue> values) {
  properties_.Clear();
  PropList loaded;
  for (const SPropValue& value : values) {
    if (HoldsNothing(value.ulPropTag)) continue;
    if (const HRESULT hr = loaded.Set(value); FAILED(hr)) return hr;
  }
  properties_ = std::move(loaded);
  return S_OK;
}

HRESULT CBaseProp::GetPropsLocked(const SPropTagArray* tags, PropValues& out) const noexcept {
  return tags != nullptr ? properties_.GetValues(tags, out) : GetAllLocked(out);
}

HRESULT CBaseProp::GetAllLocked(PropValues& out) const noexcept {
  if (properties_.Count() == 0) {
    out = {};
    return S_OK;
  }
  return FAILED(properties_.GetValues(nullptr, out)) ? MAPI_E_NOT_ENOUGH_MEMORY : S_OK;
}

HRESULT CBaseProp::GetOneLocked(ULONG tag, MapiBuffer<SPropValue>& out) const noexcept {
  out.Reset();
  if (HoldsNothing(tag)) return S_OK;
  if (PROP_TYPE(tag) == PT_OBJECT) return MAPI_E_NO_SUPPORT;
  const PropNode* node = properties_.Find(tag);
  if (node == nullptr) return MAPI_E_NOT_FOUND;
  MapiBuffer<SPropValue> value;
  if (const HRESULT hr = value.AllocateArray(1); FAILED(hr)) return hr;
  if (const HRESULT hr = ReadNode(*node, value.Get(), *value); FAILED(hr)) return hr;
  out = std::move(value);
  return S_OK;
}

HRESULT CBaseProp::SetOneLocked(const SPropValue& value) {
  if (HoldsNothing(value.ulPropTag)) return S_OK;
  if (const HRESULT hr = CheckPropTag(value.ulPropTag); FAILED(hr)) return hr;
  if (const HRESULT hr = CheckPropValue(value); FAILED(hr)) return hr;
  return properties_.Set(value);
}

void CBaseProp::SetPropsLocked(std::span<const SPropValue> values, SPropProblemArray* problems) noexcept {
  ULONG index = 0;
  for (const SPropValue& value : values) {
    const HRESULT hr = Guarded([&] { return SetOneLocked(value); });
    if (FAILED(hr)) AddProblem(problems, index, value.ulPropTag, hr);
    ++index;
  }
  modified_ = true;
}

// Absent and read-only are told alike, and computed properties can go: callers know only not-found here.
void CBaseProp::DeletePropsLocked(const SPropTagArray& tags, SPropProblemArray* problems) noexcept {
  for (ULONG i = 0; i < tags.cValues; ++i) {
    PropNodePtr removed;
    properties_.Remove(tags.aulPropTag[i], removed);
    if (!removed) AddProblem(problems, i, tags.aulPropTag[i], MAPI_E_NOT_FOUND);
  }
  modified_ = true;
}

HRESULT CBaseProp::SetNodeFlagsLocked(ULONG tag, ULONG flags, bool set) noexcept {
  PropNode* node = properties_.Find(tag);
  if (node == nullptr) return MAPI_E_NOT_FOUND;
  node->flags = set ? node->flags | flags : node->flags & ~flags;
  return S_OK;
}

namespace prop_methods {

HRESULT CheckGetProps(const SPropTagArray* tags, ULONG flags, ULONG* count, SPropValue** values) {
  if (!(flags & MAPI_UNICODE)) return MAPI_E_BAD_CHARWIDTH;
  if (tags != nullptr && !IsReadableTagArray(tags)) return MAPI_E_INVALID_PARAMETER;
  return AreWritableOuts(count, values) ? S_OK : MAPI_E_INVALID_PARAMETER;
}

HRESULT CheckGetPropList(ULONG flags, SPropTagArray** tags) {
  if (!(flags & MAPI_UNICODE)) return MAPI_E_BAD_CHARWIDTH;
  return IsWritableOut(tags) ? S_OK : MAPI_E_INVALID_PARAMETER;
}

HRESULT CheckSetProps(ULONG count, const SPropValue* values) {
  const bool readable = count == 0 || IsReadable(values, std::size_t{count} * sizeof *values);
  return readable ? S_OK : MAPI_E_INVALID_PARAMETER;
}

HRESULT CheckDeleteProps(const SPropTagArray* tags) {
  return IsReadableTagArray(tags) ? S_OK : MAPI_E_INVALID_PARAMETER;
}

HRESULT AllocateProblems(ULONG count, SPropProblemArray** out, MapiBuffer<SPropProblemArray>& problems) {
  if (out == nullptr) return S_OK;
  if (!IsWritableOut(out)) return MAPI_E_INVALID_PARAMETER;
  *out = nullptr;
  return problems.Allocate(CbNewSPropProblemArray(std::size_t{count}));
}

void HandOutProblems(MapiBuffer<SPropProblemArray>& problems, SPropProblemArray** out) {
  if (problems && problems->cProblem != 0) *out = problems.Detach();
}

HRESULT UnsupportedCopy(ULONG flags) {
  return flags & MAPI_UNICODE ? MAPI_E_NO_SUPPORT : MAPI_E_BAD_CHARWIDTH;
}

}  // namespace prop_methods
}  // namespace orv
