// While a provider is called the dialog may be destroyed with its owner, and Release comes in: so every call stands on
// references of its own.
#include "ui/address/open_container.h"

#include <utility>

#include "orv/orvflags.h"
#include "platform/boundary.h"
#include "ui/address/entry_facts.h"
#include "ui/address/entry_rows.h"

namespace orv::ui {
namespace {

constexpr ULONG kContainerEvents = fnevObjectCreated | fnevObjectDeleted | fnevObjectModified |
                                   fnevObjectMoved | fnevObjectCopied | fnevTableModified;

}  // namespace

HRESULT OpenContainer::Open(const EntryId& container) {
  EntryId entryId = container;
  ComPtr<IABContainer> opened;
  const HRESULT hr = OpenListed(book_, entryId, opened);
  Close();
  if (FAILED(hr)) return hr;
  container_ = std::move(opened);
  entryId_ = std::move(entryId);
  return hr;
}

void OpenContainer::Watch() {
  const ComPtr<CAdviseSink> sink = sink_;
  if (!sink) return;
  ULONG connection = 0;
  const EntryId entryId = entryId_;
  const HRESULT hr = GuardedForeign(
      [&] { return book_.Advise(entryId.Size(), entryId.Get(), kContainerEvents, sink.Get(), &connection); });
  if (SUCCEEDED(hr)) connection_ = connection;
}

void OpenContainer::StopWatching() {
  if (connection_ == 0) return;
  (void)GuardedForeign([&] { return book_.Unadvise(std::exchange(connection_, 0)); });
}

HRESULT OpenContainer::ReadEntries(const EntryIcons& icons, EntryListBox box) const {
  const ComPtr<IABContainer> container = container_;
  if (!container) return MAPI_E_NOT_FOUND;
  ComPtr<IMAPITable> table;
  const HRESULT hr = HandedOut(table, [&] { return container->GetContentsTable(MAPI_UNICODE, table.Put()); });
  return FAILED(hr) ? hr : AppendRows(table, icons, box);
}

HRESULT OpenContainer::DeleteEntries(const std::vector<EntryId>& entries) const {
  const ComPtr<IABContainer> container = container_;
  if (!container) return MAPI_E_NOT_FOUND;
  std::vector<SBinary> binaries;
  for (const EntryId& entry : entries) binaries.push_back(entry.Binary());
  ENTRYLIST list{static_cast<ULONG>(binaries.size()), binaries.data()};
  return GuardedForeign([&] { return container->DeleteEntries(&list, 0); });
}

void OpenContainer::Release() {
  StopWatching();
  if (sink_) sink_->Detach();
  sink_.Reset();
  Close();
}

void OpenContainer::Close() {
  StopWatching();
  container_.Reset();
  entryId_ = EntryId();
}

}  // namespace orv::ui
