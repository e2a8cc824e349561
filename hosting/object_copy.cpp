// The common property copy, and which copy an object's kind calls for.
#include "hosting/object_copy.h"

#include <algorithm>
#include <array>

#include "hosting/container_copy.h"
#include "hosting/open_entry.h"
#include "orv/orvflags.h"
#include "orv/orvguids.h"
#include "orv/orvtags.h"
#include "platform/array_check.h"
#include "platform/com_ptr.h"
#include "props/foreign_values.h"
#include "props/prop_value.h"

namespace orv {
namespace {

// Setting skips what bears PR_NULL.
void TakeOut(SPropValue& value) { value.ulPropTag = PR_NULL; }

// Binary properties, entry identifiers among them, are never copied: they name the source, and the
// destination keeps its own.
void TakeOutUncopied(PropValues& values) {
  for (ULONG i = 0; i < values.count; ++i) {
    const ULONG type = PROP_TYPE(values.values[i].ulPropTag);
    if (type == PT_ERROR || type == PT_OBJECT || type == PT_BINARY || type == PT_MV_BINARY) {
      TakeOut(values.values[i]);
    }
  }
}

HRESULT GetValues(IMAPIProp& object, const SPropTagArray* tags, PropValues& out) {
  const HRESULT hr = ReadProps(object, const_cast<SPropTagArray*>(tags), out);
  if (FAILED(hr)) return hr;
  return ForeignValues(out).Count() == out.count ? hr : MAPI_E_CALL_FAILED;
}

HRESULT TagsOf(const PropValues& values, MapiBuffer<SPropTagArray>& tags) {
  if (const HRESULT hr = tags.Allocate(CbNewSPropTagArray(std::size_t{values.count})); FAILED(hr)) return hr;
  for (ULONG i = 0; i < values.count; ++i) tags->aulPropTag[tags->cValues++] = values.values[i].ulPropTag;
  return S_OK;
}

// Takes out every value that the destination has already.
HRESULT TakeOutExisting(const SPropTagArray* include, IMAPIProp& destination, PropValues& values) {
  if (values.count == 0) return S_OK;
  MapiBuffer<SPropTagArray> all;
  if (include == nullptr) {
    if (const HRESULT hr = TagsOf(values, all); FAILED(hr)) return hr;
    include = all.Get();
  }
  PropValues existing;
  if (const HRESULT hr = GetValues(destination, include, existing); FAILED(hr)) return hr;
  if (existing.count != values.count) return MAPI_E_CALL_FAILED;
  for (ULONG i = 0; i < values.count; ++i) {
    const SPropValue& value = existing.values[i];
    const bool missing = PROP_TYPE(value.ulPropTag) == PT_ERROR && value.Value.err == MAPI_E_NOT_FOUND;
    if (!missing) TakeOut(values.values[i]);
  }
  return S_OK;
}

HRESULT SetValues(IMAPIProp& destination, const PropValues& values, SPropProblemArray** problems) {
  MapiBuffer<SPropProblemArray> found;
  const HRESULT hr =
      HandedOut(found, [&] { return destination.SetProps(values.count, values.values.Get(), found.Put()); });
  if (SUCCEEDED(hr) && problems != nullptr) *problems = found.Detach();
  return hr;
}

enum class Kind {
  kUnknown,
  kProperties,
  kProfileSection,
  kMailUser,
  kContainer,
  kDistList,
  kAddressContainer
};

Kind KindOf(const IID& iid) {
  struct Named {
    IID iid;
    Kind kind;
  };
  static constexpr std::array<Named, 6> kKinds = {{{IID_IMAPIProp, Kind::kProperties},
                                                   {IID_IProfSect, Kind::kProfileSection},
                                                   {IID_IMailUser, Kind::kMailUser},
                                                   {IID_IMAPIContainer, Kind::kContainer},
                                                   {IID_IDistList, Kind::kDistList},
                                                   {IID_IABContainer, Kind::kAddressContainer}}};
  const auto found = std::find_if(kKinds.begin(), kKinds.end(),
                                  [&](const Named& named) { return IsEqualGUID(named.iid, iid); });
  return found == kKinds.end() ? Kind::kUnknown : found->kind;
}

// Notes source and destination, which must be two objects.
HRESULT StartVisiting(const CopyEnds& ends, VisitedEntries& visited) {
  for (IUnknown* end : {ends.source, ends.destination}) {
    EntryId entryId;
    if (const HRESULT hr = ReadEntryId(*end, entryId); FAILED(hr)) return hr;
    if (!visited.Add(std::move(entryId))) return MAPI_E_NO_ACCESS;
  }
  return S_OK;
}

bool AreUsable(const CopyEnds& ends, SPropProblemArray** problems) {
  for (const IID* iid : {ends.sourceInterface, ends.destinationInterface}) {
    if (!IsReadable(iid, sizeof *iid)) return false;
  }
  if (!IsReadableObject(ends.source) || !IsReadableObject(ends.destination)) return false;
  return problems == nullptr || IsWritableOut(problems);
}

HRESULT ReadTags(IUnknown& object, ULONG flags, MapiBuffer<SPropTagArray>& tags) {
  ComPtr<IMAPIProp> source;
  if (const HRESULT hr = Query(object, IID_IMAPIProp, source); FAILED(hr)) return hr;
  const HRESULT hr = HandedOut(tags, [&] { return source->GetPropList(flags & MAPI_UNICODE, tags.Put()); });
  if (FAILED(hr)) return hr;
  return IsReadableTagArray(tags.Get()) ? hr : MAPI_E_CALL_FAILED;
}

}  // namespace

HRESULT CopyCommonProps(const SPropTagArray* include, IUnknown* source, IUnknown* destination, ULONG flags,
                        SPropProblemArray** problems) {
  if (source == nullptr || destination == nullptr) return MAPI_E_INVALID_PARAMETER;
  ComPtr<IMAPIProp> from;
  ComPtr<IMAPIProp> to;
  HRESULT hr = Query(*source, IID_IMAPIProp, from);
  if (FAILED(hr)) return hr;
  hr = Query(*destination, IID_IMAPIProp, to);
  if (FAILED(hr)) return hr;
  PropValues values;
  hr = GetValues(*from, include, values);
  if (FAILED(hr)) return hr;
  TakeOutUncopied(values);
  if (flags & MAPI_NOREPLACE) {
    hr = TakeOutExisting(include, *to, values);
    if (FAILED(hr)) return hr;
  }
  return SetValues(*to, values, problems);
}

HRESULT CopyObjectProps(const CopyEnds& ends, const SPropTagArray* include, ULONG flags,
                        SPropProblemArray** problems) {
  if (!AreUsable(ends, problems) || !IsReadableTagArray(include)) return MAPI_E_INVALID_PARAMETER;
  const Kind from = KindOf(*ends.sourceInterface);
  const Kind to = KindOf(*ends.destinationInterface);
  if (from == Kind::kUnknown || to == Kind::kUnknown) return MAPI_E_INTERFACE_NOT_SUPPORTED;
  VisitedEntries visited;
  if (const HRESULT hr = StartVisiting(ends, visited); FAILED(hr)) return hr;
  if (to == Kind::kContainer) return MAPI_E_NO_SUPPORT;

  // Only lists and address containers hold entries; a list has no hierarchy.
  const bool holdsEntries = to == Kind::kDistList || to == Kind::kAddressContainer;
  const ContainerCopy what = {holdsEntries && HasTag(PR_CONTAINER_CONTENTS, include),
                              to == Kind::kAddressContainer && HasTag(PR_CONTAINER_HIERARCHY, include),
                              flags};
  if (!what.contents && !what.hierarchy) {
    return CopyCommonProps(include, ends.source, ends.destination, flags, problems);
  }
  if (from != Kind::kDistList && from != Kind::kAddressContainer) return MAPI_E_NO_SUPPORT;
  return CopyContainer(*ends.source, *ends.destination, what, visited);
}

HRESULT CopyObject(const CopyEnds& ends, const SPropTagArray* exclude, ULONG flags,
                   SPropProblemArray** problems) {
  if (!AreUsable(ends, problems)) return MAPI_E_INVALID_PARAMETER;
  if (exclude != nullptr && !IsReadableTagArray(exclude)) return MAPI_E_INVALID_PARAMETER;
  MapiBuffer<SPropTagArray> tags;
  if (const HRESULT hr = ReadTags(*ends.source, flags, tags); FAILED(hr)) return hr;
  SubtractTags(tags.Get(), exclude);
  return CopyObjectProps(ends, tags.Get(), flags, problems);
}

}  // namespace orv
