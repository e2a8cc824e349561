// Lists: who is in them, entries of other providers and people who have gone among them.
#include <algorithm>

#include "providers/book/provider/local_book.h"
#include "providers/book/provider/row_values.h"
#include "providers/book/text.h"

namespace book {

namespace sdk = orv::sdk;

namespace {

constexpr size_t kWindow = 256;

std::span<const BYTE> BytesOf(const std::string& text) {
  return {reinterpret_cast<const BYTE*>(text.data()), text.size()};
}

// A member is known by what was made a member: a contact stays one when it gets further numbers.
kit::EntryRef RefOf(const EntryKey& list, const Member& member) {
  if (!member.isOurs) return RefOfMember(list, member.id);
  const bool isOnlyNumber = !member.isGone && !member.row.isOneOfSeveral;
  return isOnlyNumber ? RefOfEntry(member.key.entry) : RefOfKey(member.key);
}

void IdentifyForeign(const Member& member, kit::PropList& values) {
  for (const ULONG tag : {PR_ENTRYID, PR_INSTANCE_KEY})
    values.SetBytes(tag, member.foreign.data(), member.foreign.size());
}

// Calls `visit` with each member until it answers true.
template <class Visit>
HRESULT VisitMembers(View& view, const EntryKey& list, const Visit& visit) {
  std::vector<Member> members;
  for (uint64_t first = 0;; first += kWindow) {
    if (const HRESULT hr = view.Members(list, first, kWindow, &members); FAILED(hr)) return hr;
    for (const Member& each : members) {
      if (visit(each)) return S_OK;
    }
    if (members.size() < kWindow) return MAPI_E_NOT_FOUND;
  }
}

}  // namespace

std::vector<BYTE> LocalBook::KeyOfMember(const EntryKey& list, const Member& member) const {
  if (member.foreign.empty()) return Ids().Make(RefOf(list, member));
  const std::span<const BYTE> bytes = BytesOf(member.foreign);
  return {bytes.begin(), bytes.end()};
}

HRESULT LocalBook::DescribeMember(const EntryKey& list, const Member& member, View& view,
                                  std::span<const ULONG> columns, kit::PropList& values) {
  const kit::EntryRef ref = RefOf(list, member);
  if (member.isOurs && !member.isGone) return DescribeRowAs(ref, view, member.row, columns, values);
  const bool isForeign = !member.foreign.empty();
  if (isForeign && SUCCEEDED(DescribeForeign(member, columns, values))) return S_OK;
  DescribeLoneMember(member, values);
  if (!isForeign) Ids().Identify(ref, values);
  if (isForeign) IdentifyForeign(member, values);
  return S_OK;
}

// As its own provider shows it now; one that cannot be opened is shown by what is stored.
HRESULT LocalBook::DescribeForeign(const Member& member, std::span<const ULONG> columns,
                                   kit::PropList& values) {
  sdk::ComPtr<IMAPIProp> entry;
  ULONG type = 0, count = 0;
  HRESULT hr = OpenForeign(member.foreign, entry, &type);
  if (FAILED(hr)) return hr;
  std::vector<ULONG> wanted(columns.begin(), columns.end());
  const sdk::Allocator::Root tags = GetHost().buffers.CopyTags(wanted.empty() ? RowColumns() : wanted);
  auto found = GetHost().buffers.Own<SPropValue>();
  hr = kit::CallForeign(found, [&] {
    return entry->GetProps(static_cast<LPSPropTagArray>(tags.get()), MAPI_UNICODE, &count, found.Put());
  });
  if (FAILED(hr)) return hr;
  for (const SPropValue& each : sdk::ValueView(found.Get(), count)) {
    const ULONG valueType = PROP_TYPE(each.ulPropTag);
    if (valueType != PT_ERROR && valueType != PT_NULL) static_cast<void>(values.Set(each));
  }
  IdentifyForeign(member, values);
  values.Set(PR_OBJECT_TYPE, type);
  return S_OK;
}

HRESULT LocalBook::OpenForeign(std::string id, sdk::ComPtr<IMAPIProp>& entry, ULONG* type) {
  const auto session = GetHost().support.As<IOrvSupport2>(IID_IOrvSupport2);
  if (!session) return MAPI_E_NOT_FOUND;
  return kit::CallForeign(entry, [&] {
    return session->OpenEntry(static_cast<ULONG>(id.size()), reinterpret_cast<LPENTRYID>(id.data()),
                              &IID_IMAPIProp, 0, type, entry.PutUnknown());
  });
}

HRESULT LocalBook::ReadLoneMember(const kit::EntryRef& entry, View& view, kit::PropList& values) {
  const RowKey parts = PartsOf(entry);
  return VisitMembers(view, parts.entry, [&](const Member& member) {
    const bool isIt = member.id == parts.number && !member.isOurs && member.foreign.empty();
    if (isIt) DescribeLoneMember(member, values);
    if (isIt) Ids().Identify(entry, values);
    return isIt;
  });
}

// What the identifier means, to be made a member.
HRESULT LocalBook::MemberOf(std::span<const BYTE> id, View& view, Member* member) {
  kit::EntryRef entry;
  const HRESULT known = Ids().Read(id.size(), id.data(), &entry);
  if (known == MAPI_E_INVALID_ENTRYID && !Ids().IsOurs(id.size(), id.data())) return NameForeign(id, member);
  if (FAILED(known)) return known;
  const std::optional<RowKey> key = RowKeyOf(entry);
  if (!key) return MAPI_E_NO_SUPPORT;
  Row row;
  if (const HRESULT hr = view.RowOf(*key, &row); FAILED(hr)) return hr;
  member->isOurs = true;
  member->key = *key;
  member->name = row.name;
  return S_OK;
}

HRESULT LocalBook::NameForeign(std::span<const BYTE> id, Member* member) {
  kit::PropList values;
  const ULONG name = PR_DISPLAY_NAME;
  member->foreign.assign(id.begin(), id.end());
  const HRESULT hr = DescribeForeign(*member, {&name, 1}, values);
  if (SUCCEEDED(hr)) member->name = ToUtf8(values.Text(PR_DISPLAY_NAME));
  return hr;
}

HRESULT LocalBook::AddMember(const kit::EntryRef& list, std::span<const BYTE> id) {
  std::shared_ptr<Store> store;
  std::unique_ptr<View> view;
  if (const HRESULT hr = OpenToChange(&store); FAILED(hr)) return hr;
  if (const HRESULT hr = store->OpenView(&view); FAILED(hr)) return hr;
  Member member;
  if (const HRESULT hr = MemberOf(id, *view, &member); FAILED(hr)) return hr;
  view.reset();
  return store->AddMembers(PartsOf(list).entry, {&member, 1});
}

HRESULT LocalBook::RemoveMember(const kit::EntryRef& list, std::span<const BYTE> id) {
  std::shared_ptr<Store> store;
  std::unique_ptr<View> view;
  if (const HRESULT hr = OpenToChange(&store); FAILED(hr)) return hr;
  if (const HRESULT hr = store->OpenView(&view); FAILED(hr)) return hr;
  const EntryKey key = PartsOf(list).entry;
  uint32_t found = 0;
  const HRESULT hr = VisitMembers(*view, key, [&](const Member& member) {
    found = member.id;
    return std::ranges::equal(id, KeyOfMember(key, member));
  });
  if (FAILED(hr)) return hr;
  view.reset();
  return store->RemoveMembers(key, {&found, 1});
}

}  // namespace book
