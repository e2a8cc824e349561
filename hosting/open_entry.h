// Opening an entry and requiring what it says to be. Calls providers; what they throw is MAPI_E_CALL_FAILED (memory
// exhaustion its own code).
#pragma once

#include <span>

#include "orv/orvapi.h"
#include "orv/orvguids.h"
#include "platform/boundary.h"
#include "platform/buffer.h"
#include "platform/com_ptr.h"
#include "props/tag_array.h"

namespace orv {

// Another interface of an object; success without one is MAPI_E_INTERFACE_NOT_SUPPORTED.
template <class Interface>
HRESULT Query(IUnknown& object, const IID& iid, ComPtr<Interface>& out) {
  const HRESULT hr =
      HandedOut(out, [&] { return object.QueryInterface(iid, reinterpret_cast<void**>(out.Put())); });
  return FAILED(hr) || out ? hr : MAPI_E_INTERFACE_NOT_SUPPORTED;
}

namespace open_entry {
// One interface of the opened object: the wanted one, or else one that begins with its slots.
HRESULT OpenAs(IAddrBook& book, const SBinary& entryId, std::span<const ULONG> types,
               std::span<const IID* const> interfaces, ULONG* type, void** object);
template <class Interface>
struct Accepted;
template <>
struct Accepted<IMAPIProp> {
  static constexpr const IID* kList[] = {&IID_IMAPIProp, &IID_IMailUser, &IID_IDistList, &IID_IABContainer};
};
template <>
struct Accepted<IMAPIContainer> {
  static constexpr const IID* kList[] = {&IID_IMAPIContainer, &IID_IABContainer, &IID_IDistList};
};
template <>
struct Accepted<IABContainer> {
  static constexpr const IID* kList[] = {&IID_IABContainer};
};
}  // namespace open_entry

// Opens the entry without naming an interface, as what it is, and asks the object for `Interface`. Its type must be one
// of `types` (of any type when that is empty); a provider that does not tell the type is believed to have opened the
// first of them. Another type, or success without an object, is MAPI_E_INVALID_OBJECT. `type` may be null.
template <class Interface>
HRESULT OpenEntryAs(IAddrBook& book, const SBinary& entryId, std::span<const ULONG> types,
                    ComPtr<Interface>& object, ULONG* type = nullptr) {
  return open_entry::OpenAs(book, entryId, types, open_entry::Accepted<Interface>::kList, type,
                            reinterpret_cast<void**>(object.Put()));
}

// The properties of an object, asked for in Unicode; `values` holds what came back on success.
HRESULT ReadProps(IMAPIProp& object, LPSPropTagArray tags, PropValues& values);
template <std::size_t Count>
HRESULT ReadProps(IMAPIProp& object, const TagArray<Count>& tags, PropValues& values) {
  TagArray<Count> copy = tags;
  return ReadProps(object, copy.Get(), values);
}

// The whole hierarchy below the root of an address book; `flags` besides MAPI_UNICODE.
HRESULT OpenHierarchy(IAddrBook& book, ULONG flags, ComPtr<IMAPITable>& table);

}  // namespace orv
