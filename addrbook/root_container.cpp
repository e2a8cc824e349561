// Providers are found in the session's list and called through it; after the session's end there are none.
#include "addrbook/root_container.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "addrbook/hierarchy_rows.h"
#include "hosting/open_entry.h"
#include "hosting/provider_list.h"
#include "orv/orvflags.h"
#include "orv/orvtags.h"
#include "platform/array_check.h"
#include "platform/boundary.h"
#include "props/foreign_values.h"

namespace orv {
namespace {

bool IsReadableList(const ENTRYLIST* entries) {
  if (!IsReadable(entries, sizeof(ENTRYLIST))) return false;
  if (entries->cValues == 0) return true;
  if (!IsReadable(entries->lpbin, entries->cValues * sizeof(SBinary))) return false;
  return std::all_of(entries->lpbin, entries->lpbin + entries->cValues,
                     [](const SBinary& id) { return IsReadableEntryId(id.cb, id.lpb); });
}

// Opens the provider's own root, which takes the deletion for all of its containers.
HRESULT DeleteFromProvider(IAddrBook& provider, std::vector<SBinary>& ids) {
  static constexpr TagArray kTag{PR_ENTRYID};
  static constexpr ULONG kContainer[] = {MAPI_ABCONT};
  PropValues read;
  if (const HRESULT hr = ReadProps(provider, kTag, read); FAILED(hr)) return hr;
  const SBinary* rootId = BinaryOf(ForeignValues(read).At(0, PR_ENTRYID));
  if (rootId == nullptr) return MAPI_E_NOT_FOUND;
  ComPtr<IABContainer> root;
  if (const HRESULT hr = OpenEntryAs(provider, *rootId, kContainer, root); FAILED(hr)) return hr;
  ENTRYLIST list = {static_cast<ULONG>(ids.size()), ids.data()};
  return GuardedForeign([&] { return root->DeleteEntries(&list, 0); });
}

}  // namespace

// Here, where the provider list is a complete type.
CABContainer::CABContainer() = default;
CABContainer::~CABContainer() = default;

HRESULT CABContainer::Initialize(CABServiceList* providers, IAddrBook* book, std::shared_ptr<Rundown> calls) {
  if (providers == nullptr || book == nullptr) return MAPI_E_INVALID_PARAMETER;
  providers_ = ComPtr<CABServiceList>::Share(providers);
  book_ = ComPtr<IAddrBook>::Share(book);
  calls_ = std::move(calls);
  return S_OK;
}

bool CABContainer::Supports(REFIID iid) const {
  return IsOneOf(iid, IID_IUnknown, IID_IMAPIProp, IID_IMAPIContainer, IID_IABContainer);
}

HRESULT CABContainer::OpenProperty(ULONG tag, LPCIID iid, ULONG, ULONG flags, LPUNKNOWN* object) {
  if (const HRESULT hr = CheckInitialized(); FAILED(hr)) return hr;
  if (tag != PR_CONTAINER_HIERARCHY || iid == nullptr) return MAPI_E_INTERFACE_NOT_SUPPORTED;
  if (!IsReadable(iid, sizeof *iid)) return MAPI_E_INVALID_PARAMETER;
  if (!IsEqualGUID(*iid, IID_IMAPITable)) return MAPI_E_INTERFACE_NOT_SUPPORTED;
  if (!IsWritableOut(object)) return MAPI_E_INVALID_PARAMETER;
  IMAPITable* table = nullptr;
  const HRESULT hr = GetHierarchyTable(flags | MAPI_UNICODE, &table);
  if (SUCCEEDED(hr)) *object = table;
  return hr;
}

HRESULT CABContainer::GetContentsTable(ULONG, LPMAPITABLE* table) {
  if (const HRESULT hr = CheckInitialized(); FAILED(hr)) return hr;
  return IsWritableOut(table) ? MAPI_E_NO_SUPPORT : MAPI_E_INVALID_PARAMETER;
}

HRESULT CABContainer::GetHierarchyTable(ULONG flags, LPMAPITABLE* table) {
  if (const HRESULT hr = CheckInitialized(); FAILED(hr)) return hr;
  if (!IsWritableOut(table)) return MAPI_E_INVALID_PARAMETER;
  const Rundown::Call inside(calls_.get());
  return GuardedForeign([&] {
    HierarchyRows rows(*book_);
    const HRESULT last = inside ? AddProviders(rows, flags) : S_OK;
    // The last provider's answer is the method's: one that fails before it is only left out, so that a broken
    // provider does not hide the others in a dialog, unless it is the one loaded first.
    if (FAILED(last)) return last;
    const HRESULT made = rows.MakeTable(table);
    return FAILED(made) ? made : last;
  });
}

HRESULT CABContainer::AddProviders(HierarchyRows& rows, ULONG flags) const {
  HRESULT last = S_OK;
  for (const auto& record : providers_->All()) {
    if (record->Provider() == nullptr) continue;
    HierarchyRows::Shortage shortage;
    last = rows.AddProvider(*record->Provider(), flags, shortage);
    // Nobody sees in the table what it lacks.
    if (shortage.text != nullptr) providers_->Link().Report(record->Service(), shortage.code, shortage.text);
  }
  return last;
}

// Whatever is asked for, the root is opened once more and kept: *object stays as it was, and the object
// that was opened is never released. Callers take the code and the type from here and open by the address
// book instead.
HRESULT CABContainer::OpenEntry(ULONG, LPENTRYID, LPCIID iid, ULONG flags, ULONG* type, LPUNKNOWN* object) {
  if (const HRESULT hr = CheckInitialized(); FAILED(hr)) return hr;
  if (!IsWritableOut(type) || !IsWritableOut(object)) return MAPI_E_INVALID_PARAMETER;
  IUnknown* kept = nullptr;
  return book_->OpenEntry(0, nullptr, iid, flags, type, &kept);
}

HRESULT CABContainer::CreateEntry(ULONG size, LPENTRYID templateId, ULONG, LPMAPIPROP*) {
  if (const HRESULT hr = CheckInitialized(); FAILED(hr)) return hr;
  return size != 0 && IsReadable(templateId, size) ? MAPI_E_NO_SUPPORT : MAPI_E_INVALID_PARAMETER;
}

HRESULT CABContainer::CopyEntries(LPENTRYLIST entries, ULONG_PTR, LPMAPIPROGRESS, ULONG) {
  if (const HRESULT hr = CheckInitialized(); FAILED(hr)) return hr;
  if (!IsReadableList(entries)) return MAPI_E_INVALID_PARAMETER;
  return entries->cValues == 0 ? S_OK : MAPI_E_NO_SUPPORT;
}

HRESULT CABContainer::DeleteEntries(LPENTRYLIST entries, ULONG) {
  if (const HRESULT hr = CheckInitialized(); FAILED(hr)) return hr;
  if (!IsReadableList(entries)) return MAPI_E_INVALID_PARAMETER;
  if (entries->cValues == 0) return S_OK;
  const Rundown::Call inside(calls_.get());
  if (!inside) return S_OK;
  return GuardedForeign([&] {
    // The providers delete while this is held: two calls on one root do not mix their entries.
    LockGuard guard(ObjectLock());
    return DeleteEntriesLocked(*entries);
  });
}

// Entries of nobody are dropped, and a provider's failure is not told: a client that deletes a selection gets rid of
// what can be.
HRESULT CABContainer::DeleteEntriesLocked(const ENTRYLIST& entries) {
  std::vector<std::vector<SBinary>> groups(providers_->All().size());
  for (ULONG i = 0; i < entries.cValues; ++i) {
    const SBinary& id = entries.lpbin[i];
    IAddrBook* provider = nullptr;
    std::size_t index = 0;
    const auto* entryId = reinterpret_cast<const ENTRYID*>(id.lpb);
    if (SUCCEEDED(providers_->FindByEntryId(id.cb, entryId, &provider, &index))) groups[index].push_back(id);
  }
  auto group = groups.begin();
  for (const auto& record : providers_->All()) {
    if (group == groups.end()) break;
    std::vector<SBinary>& ids = *group++;
    IAddrBook* provider = record->Provider();
    if (provider != nullptr && !ids.empty()) (void)DeleteFromProvider(*provider, ids);
  }
  return S_OK;
}

HRESULT CABContainer::ResolveNames(LPSPropTagArray tags, ULONG, LPADRLIST recipients, LPFlagList) {
  if (const HRESULT hr = CheckInitialized(); FAILED(hr)) return hr;
  const bool readable = IsReadableAddressList(recipients) && (tags == nullptr || IsReadableTagArray(tags));
  return readable ? MAPI_E_NO_SUPPORT : MAPI_E_INVALID_PARAMETER;
}

}  // namespace orv
