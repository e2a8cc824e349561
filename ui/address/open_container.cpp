// While a provider is called the dialog may be destroyed with its owner, and Release comes in: so every call stands on
// references of its own.
#include "ui/address/open_container.h"

#include <utility>

#include "hosting/open_entry.h"
#include "orv/orvflags.h"
#include "orv/orvtags.h"
#include "platform/boundary.h"
#include "props/foreign_values.h"
#include "props/table_reader.h"
#include "ui/address/entry_facts.h"
#include "ui/address/entry_rows.h"
#include "ui/address/provider_words.h"

namespace orv::ui {
namespace {

constexpr ULONG kContainerEvents = fnevObjectCreated | fnevObjectDeleted | fnevObjectModified |
                                   fnevObjectMoved | fnevObjectCopied | fnevTableModified;
constexpr LONG kRowsAtOnce = 256;

}  // namespace

HRESULT OpenContainer::Open(const EntryId& container) {
  EntryId entryId = container;
  ComPtr<IABContainer> opened;
  const HRESULT hr = OpenListed(book_, entryId, opened);
  Close();
  opened_ = hr;
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
  ComPtr<IMAPITable> table;
  const HRESULT hr = OpenContents(table);
  return FAILED(hr) ? hr : AppendRows(table, icons, box);
}

HRESULT OpenContainer::OpenContents(ComPtr<IMAPITable>& table) const {
  const ComPtr<IABContainer> container = container_;
  if (!container) return FAILED(opened_) ? opened_ : MAPI_E_NOT_FOUND;
  return HandedOut(table, [&] { return container->GetContentsTable(MAPI_UNICODE, table.Put()); });
}

HRESULT OpenContainer::FindListed(const std::vector<EntryId>& entries,
                                  std::set<std::string_view>& listed) const {
  std::set<std::string_view> wanted;
  for (const EntryId& entry : entries) wanted.insert(entry.Bytes());
  ComPtr<IMAPITable> table;
  HRESULT hr = OpenContents(table);
  if (FAILED(hr)) return hr;
  TableReader rows;
  hr = rows.Open(table, TagArray{PR_ENTRYID}, kRowsAtOnce);
  if (FAILED(hr)) return hr;
  while ((hr = rows.Next()) == S_OK) {
    const SBinary* id = BinaryOf(rows.Row().At(0, PR_ENTRYID));
    if (const auto found = id == nullptr ? wanted.end() : wanted.find(EntryId::BytesOf(*id));
        found != wanted.end())
      listed.insert(*found);
  }
  return FAILED(hr) ? hr : S_OK;
}

HRESULT OpenContainer::WhyEmpty() const {
  const ComPtr<IABContainer> container = container_;
  PropValues read;
  if (!container || FAILED(ReadProps(*container, TagArray{PR_ORV_BOOK_STATUS, PR_CONTAINER_FLAGS}, read)))
    return S_OK;
  const ForeignValues values(read);
  const auto status = static_cast<HRESULT>(NumberOf(values.Find(PR_ORV_BOOK_STATUS)));
  if (FAILED(status)) return status;
  const ULONG flags = NumberOf(values.Find(PR_CONTAINER_FLAGS));
  return (flags & (AB_SUBCONTAINERS | AB_RECIPIENTS)) == AB_SUBCONTAINERS ? MAPI_E_NO_SUPPORT : S_OK;
}

WString OpenContainer::WordsFor(HRESULT hr) const {
  const ComPtr<IABContainer> container = container_;
  return container ? WordsOf(*container, hr) : WString();
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
