#include "providers/book/provider/session_directory.h"

#include <servprov.h>

#include <algorithm>

#include "orv/kit/boundary.hpp"

namespace book {

namespace sdk = orv::sdk;

namespace {

constexpr LONG kRowsAtOnce = 50;
// The system's, spelled out so that nothing has to be linked for it.
constexpr GUID kServiceProvider = {
    0x6D5140C1, 0x7436, 0x11CE, {0x80, 0x34, 0x00, 0xAA, 0x00, 0x60, 0x09, 0xFA}};

EntryId BytesIn(const SBinary& bytes) { return {bytes.lpb, bytes.lpb + bytes.cb}; }
std::wstring TextIn(const wchar_t* text) { return text != nullptr ? text : std::wstring(); }

bool BeginsWith(const std::wstring& name, const std::wstring& text) {
  const auto size = static_cast<int>(std::min(name.size(), text.size()));
  return CompareStringEx(LOCALE_NAME_USER_DEFAULT, NORM_IGNORECASE | NORM_IGNORENONSPACE, name.data(), size,
                         text.data(), static_cast<int>(text.size()), nullptr, nullptr, 0) == CSTR_EQUAL;
}

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
  sdk::TagArray columns{PR_DISPLAY_NAME, PR_ENTRYID, PR_EMAIL_ADDRESS};
  HRESULT hr = Open(id, container);
  if (SUCCEEDED(hr))
    hr = kit::CallForeign(table, [&] { return container->GetContentsTable(MAPI_UNICODE, table.Put()); });
  if (SUCCEEDED(hr)) hr = kit::CallForeign([&] { return table->SetColumns(columns.Get(), 0); });
  return hr;
}

// S_FALSE: there are none any more.
template <class Visit>
HRESULT SessionDirectory::ReadRows(IMAPITable& table, LONG count, const Visit& visit) const {
  auto rows = book_.GetHost().buffers.Own<SRowSet>();
  const HRESULT hr = kit::CallForeign(rows, [&] { return table.QueryRows(count, 0, rows.Put()); });
  if (FAILED(hr)) return hr;
  for (ULONG i = 0; i < rows->cRows; ++i) visit(sdk::ValueView(rows->aRow[i]));
  return rows->cRows != 0 ? S_OK : S_FALSE;
}

void SessionDirectory::ReadContainers() {
  Table table;
  sdk::TagArray columns{PR_DISPLAY_NAME, PR_ENTRYID, PR_CONTAINER_FLAGS};
  HRESULT hr = OpenHierarchy(table);
  if (SUCCEEDED(hr)) hr = kit::CallForeign([&] { return table->SetColumns(columns.Get(), 0); });
  while (hr == S_OK) {
    hr = ReadRows(*table.Get(), kRowsAtOnce, [this](sdk::ValueView row) {
      const bool hasEntries = (row.Number(PR_CONTAINER_FLAGS) & AB_RECIPIENTS) != 0;
      if (hasEntries)
        containers_.push_back({TextIn(row.Text(PR_DISPLAY_NAME)), BytesIn(row.Binary(PR_ENTRYID))});
    });
  }
  std::stable_partition(containers_.begin(), containers_.end(),
                        [this](const Container& each) { return IsOwn(each.id); });
  tables_.resize(containers_.size());
}

bool SessionDirectory::IsOwn(const EntryId& id) const {
  kit::EntryRef ref;
  return SUCCEEDED(book_.Ids().Read(id.size(), id.data(), &ref)) && ref.kind == kContainer;
}

const std::vector<Directory::Container>& SessionDirectory::Containers() {
  if (!isRead_) ReadContainers();
  isRead_ = true;
  return containers_;
}

// By what the container knows people by; where it cannot, and for the first letter, which most of a large book would
// have somewhere, from the first name on that begins so. S_FALSE: there is none.
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
  hr = table.FindRow(&restriction, BOOKMARK_BEGINNING, 0);
  return hr == MAPI_E_NOT_FOUND ? S_FALSE : hr;
}

HRESULT SessionDirectory::FindIn(IMAPITable& table, const std::wstring& text, size_t most,
                                 std::vector<FoundEntry>* found) const {
  const HRESULT hr = kit::CallForeign([&] { return Seek(table, text); });
  if (hr != S_OK) return hr;
  return ReadRows(table, static_cast<LONG>(most), [&](sdk::ValueView row) {
    FoundEntry entry{TextIn(row.Text(PR_DISPLAY_NAME)), TextIn(row.Text(PR_EMAIL_ADDRESS)),
                     BytesIn(row.Binary(PR_ENTRYID))};
    const bool fits = text.size() != 1 || BeginsWith(entry.name, text);
    if (fits && !entry.id.empty()) found->push_back(std::move(entry));
  });
}

// The table is held meanwhile: its provider may let messages in, and with them another letter. A table that fails is
// opened anew for the next letter: its book may have come back.
HRESULT SessionDirectory::Find(size_t container, const std::wstring& text, size_t most,
                               std::vector<FoundEntry>* found) {
  const EntryId& id = containers_[container].id;
  if (IsOwn(id)) return book_.FindEntries(text, most, found);
  Table table = tables_[container];
  HRESULT hr = table ? S_OK : OpenContents(id, table);
  if (SUCCEEDED(hr)) hr = FindIn(*table.Get(), text, most, found);
  tables_[container] = SUCCEEDED(hr) ? table : Table();
  return hr == MAPI_E_NO_SUPPORT ? S_OK : hr;
}

HRESULT SessionDirectory::Show(HWND owner, const EntryId& id) {
  const auto services = session_.As<IServiceProvider>(kServiceProvider);
  sdk::ComPtr<IAddrBook> book;
  if (!services) return MAPI_E_NO_SUPPORT;
  const HRESULT hr = kit::CallForeign(book, [&] {
    return services->QueryService(IID_IAddrBook, IID_IAddrBook, reinterpret_cast<void**>(book.Put()));
  });
  if (FAILED(hr)) return hr;
  EntryId copy = id;
  auto parent = reinterpret_cast<ULONG_PTR>(owner);
  return kit::CallForeign([&] {
    return book->Details(&parent, nullptr, nullptr, static_cast<ULONG>(copy.size()),
                         reinterpret_cast<LPENTRYID>(copy.data()), nullptr, nullptr, nullptr, DIALOG_MODAL);
  });
}

}  // namespace book
