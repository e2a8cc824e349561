#include "providers/book/provider/session_directory.h"

#include "orv/kit/boundary.hpp"

namespace book {

namespace sdk = orv::sdk;

namespace {

constexpr LONG kRowsAtOnce = 50;
// As many as a person looks through; of each container.
constexpr LONG kMostFound = 50;

EntryId BytesIn(const SBinary& bytes) { return {bytes.lpb, bytes.lpb + bytes.cb}; }
std::wstring TextIn(const wchar_t* text) { return text != nullptr ? text : std::wstring(); }

SPropValue TextValue(ULONG tag, const std::wstring& text) {
  SPropValue value{};
  value.ulPropTag = tag;
  value.Value.lpszW = const_cast<wchar_t*>(text.c_str());
  return value;
}

}  // namespace

SessionDirectory::SessionDirectory(LocalBook& book)
    : book_(book),
      session_(book.GetHost().support ? book.GetHost().support.As<IOrvSupport2>(IID_IOrvSupport2)
                                      : sdk::ComPtr<IOrvSupport2>()) {}

template <class Interface>
HRESULT SessionDirectory::Open(EntryId id, sdk::ComPtr<Interface>& object) const {
  ULONG type = 0;
  if (!session_) return MAPI_E_NO_SUPPORT;
  const auto size = static_cast<ULONG>(id.size());
  return kit::CallForeign(object, [&] {
    return session_->OpenEntry(size, size != 0 ? reinterpret_cast<LPENTRYID>(id.data()) : nullptr,
                               size != 0 ? &sdk::kIidOf<Interface> : nullptr, 0, &type, object.PutUnknown());
  });
}

HRESULT SessionDirectory::OpenHierarchy(Table& table) const {
  sdk::ComPtr<IABContainer> root;
  const HRESULT hr = Open({}, root);
  if (FAILED(hr)) return hr;
  return kit::CallForeign(
      table, [&] { return root->GetHierarchyTable(MAPI_UNICODE | CONVENIENT_DEPTH, table.Put()); });
}

HRESULT SessionDirectory::OpenContents(const EntryId& id, Table& table) const {
  sdk::ComPtr<IABContainer> container;
  const HRESULT hr = Open(id, container);
  if (FAILED(hr)) return hr;
  return kit::CallForeign(table, [&] { return container->GetContentsTable(MAPI_UNICODE, table.Put()); });
}

template <class Visit>
HRESULT SessionDirectory::ReadRows(IMAPITable& table, LONG count, const Visit& visit) const {
  auto rows = book_.GetHost().buffers.Own<SRowSet>();
  const HRESULT hr = kit::CallForeign(rows, [&] { return table.QueryRows(count, 0, rows.Put()); });
  if (FAILED(hr)) return hr;
  for (ULONG i = 0; i < rows->cRows; ++i) visit(sdk::ValueView(rows->aRow[i]));
  return rows->cRows != 0 ? S_OK : MAPI_E_NOT_FOUND;
}

void SessionDirectory::ReadContainers() {
  Table table;
  sdk::TagArray columns{PR_DISPLAY_NAME, PR_ENTRYID, PR_CONTAINER_FLAGS};
  HRESULT hr = OpenHierarchy(table);
  if (SUCCEEDED(hr)) hr = kit::CallForeign([&] { return table->SetColumns(columns.Get(), 0); });
  while (SUCCEEDED(hr)) {
    hr = ReadRows(*table.Get(), kRowsAtOnce, [this](sdk::ValueView row) {
      const bool hasEntries = (row.Number(PR_CONTAINER_FLAGS) & AB_RECIPIENTS) != 0;
      if (hasEntries)
        containers_.push_back({TextIn(row.Text(PR_DISPLAY_NAME)), BytesIn(row.Binary(PR_ENTRYID))});
    });
  }
  tables_.resize(containers_.size());
}

const std::vector<Directory::Container>& SessionDirectory::Containers() {
  if (!isRead_) ReadContainers();
  isRead_ = true;
  return containers_;
}

// By what the container knows people by; where it cannot, and for the first letter, which most of a large book would
// have somewhere, from the first name on that begins so.
HRESULT SessionDirectory::Seek(IMAPITable& table, const std::wstring& text) const {
  SPropValue known = TextValue(PR_ANR, text), name = TextValue(PR_DISPLAY_NAME, text);
  SRestriction restriction{};
  restriction.rt = RES_PROPERTY;
  restriction.res.resProperty = {RELOP_EQ, PR_ANR, &known};
  if (text.size() > 1) {
    if (SUCCEEDED(table.Restrict(&restriction, 0))) return table.SeekRow(BOOKMARK_BEGINNING, 0, nullptr);
  }
  HRESULT hr = table.Restrict(nullptr, 0);
  if (SUCCEEDED(hr)) hr = table.SeekRow(BOOKMARK_BEGINNING, 0, nullptr);
  if (FAILED(hr) || text.empty()) return hr;
  restriction.rt = RES_CONTENT;
  restriction.res.resContent = {FL_PREFIX | FL_LOOSE, PR_DISPLAY_NAME, &name};
  return table.FindRow(&restriction, BOOKMARK_BEGINNING, 0);
}

std::vector<FoundEntry> SessionDirectory::FindIn(IMAPITable& table, const std::wstring& text) const {
  std::vector<FoundEntry> found;
  const HRESULT hr = kit::CallForeign([&] { return Seek(table, text); });
  if (FAILED(hr)) return found;
  static_cast<void>(ReadRows(table, kMostFound, [&](sdk::ValueView row) {
    FoundEntry entry{TextIn(row.Text(PR_DISPLAY_NAME)), TextIn(row.Text(PR_EMAIL_ADDRESS)),
                     BytesIn(row.Binary(PR_ENTRYID))};
    if (!entry.id.empty()) found.push_back(std::move(entry));
  }));
  return found;
}

std::vector<FoundEntry> SessionDirectory::Find(size_t container, const std::wstring& text) {
  const EntryId& id = containers_[container].id;
  kit::EntryRef ref;
  const bool isOwn = SUCCEEDED(book_.Ids().Read(id.size(), id.data(), &ref)) && ref.kind == kContainer;
  if (isOwn) return book_.FindEntries(text, kMostFound);
  Table& table = tables_[container];
  sdk::TagArray columns{PR_DISPLAY_NAME, PR_ENTRYID, PR_EMAIL_ADDRESS};
  if (!table) {
    if (FAILED(OpenContents(id, table))) return {};
    if (FAILED(kit::CallForeign([&] { return table->SetColumns(columns.Get(), 0); }))) return {};
  }
  return FindIn(*table.Get(), text);
}

}  // namespace book
