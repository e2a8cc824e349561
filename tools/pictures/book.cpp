#include "tools/pictures/book.h"

#include <stdexcept>

namespace pictures {
namespace {

using orv::sdk::ComPtr;
using orv::sdk::RowSet;
using orv::sdk::TagArray;
using orv::sdk::ValueView;

constexpr LONG kMostContainers = 100;

void Require(HRESULT hr, const char* what) {
  if (FAILED(hr)) throw std::runtime_error(what);
}

}  // namespace

Book::Book(const std::wstring& profile) {
  Require(
      OrvOpen(0, profile.c_str(), MAPI_UNICODE, nullptr, nullptr, nullptr, book_.Put(), session_.Put(), 0),
      "no session");
}

Book::Book(const std::wstring& profile, ULONG entries) : Book(profile) { OpenWithEntries(entries); }

void Book::Address(Wells wells, ULONG flags) const {
  std::vector<LPWSTR> titles;
  for (std::wstring& title : wells.titles) titles.push_back(title.data());
  ADRPARM parameters = {};
  parameters.ulFlags = DIALOG_MODAL | flags;
  parameters.cDestFields = static_cast<ULONG>(wells.types.size());
  parameters.lpulDestComps = wells.types.data();
  parameters.lppszDestTitles = titles.empty() ? nullptr : titles.data();
  LPADRLIST list = nullptr;
  if (OrvAddress(0, book_.Get(), &parameters, &list) != MAPI_E_USER_CANCEL)
    throw std::runtime_error("no Address dialog");
}

// The services of a new profile come in any order, and so do their containers.
void Book::OpenWithEntries(ULONG entries) {
  const RowSet containers = Containers();
  for (ULONG i = 0; i < containers->cRows; ++i) {
    const ValueView row(containers->aRow[i]);
    const SBinary id = row.Binary(PR_ENTRYID);
    const bool canBeChanged = (row.Number(PR_CONTAINER_FLAGS) & AB_MODIFIABLE) != 0;
    if (!canBeChanged || !HasEntries(id, entries)) continue;
    return Require(book_->SetDefaultDir(id.cb, reinterpret_cast<LPENTRYID>(id.lpb)), "no default container");
  }
  throw std::runtime_error("no container has enough entries");
}

RowSet Book::Containers() const {
  ComPtr<IMAPITable> table;
  Require(Open({0, nullptr})->GetHierarchyTable(MAPI_UNICODE | CONVENIENT_DEPTH, table.Put()),
          "no containers");
  TagArray columns{PR_ENTRYID, PR_CONTAINER_FLAGS};
  Require(table->SetColumns(columns.Get(), 0), "no columns");
  RowSet rows(OrvFreeBuffer);
  Require(table->QueryRows(kMostContainers, 0, rows.Put()), "no rows");
  return rows;
}

bool Book::HasEntries(const SBinary& container, ULONG entries) const {
  ComPtr<IMAPITable> table;
  ULONG count = 0;
  return SUCCEEDED(Open(container)->GetContentsTable(MAPI_UNICODE, table.Put())) &&
         SUCCEEDED(table->GetRowCount(0, &count)) && count >= entries;
}

ComPtr<IABContainer> Book::Open(const SBinary& container) const {
  ULONG type = 0;
  ComPtr<IUnknown> opened;
  Require(book_->OpenEntry(container.cb, reinterpret_cast<LPENTRYID>(container.lpb), nullptr, 0, &type,
                           opened.Put()),
          "a container cannot be opened");
  auto object = opened.As<IABContainer>();
  Require(object ? S_OK : E_NOINTERFACE, "a container is none");
  return object;
}

}  // namespace pictures
