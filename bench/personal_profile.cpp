#include "bench/personal_profile.h"

#include <memory>

#include "bench/harness.h"
#include "orv/orvbook.h"
#include "orv/orvtags.h"
#include "profiles/registry_store.h"
#include "providers/book/store.h"

namespace orv::bench {
namespace {

constexpr const wchar_t* kSyllables[] = {L"ber", L"lin", L"ma",  L"ros", L"tal", L"wen", L"kor", L"dis",
                                         L"fal", L"gun", L"hol", L"jan", L"nor", L"pet", L"san", L"vik"};

formats::Contact MakePerson(std::size_t number) {
  const std::wstring name = NameOfPerson(number);
  formats::Contact contact;
  contact.name.assign(name.begin(), name.end());
  contact.company = "Nordhamn " + std::to_string(number % 997);
  contact.numbers.resize(1);
  contact.numbers[0].kind = formats::NumberKind::kFax;
  contact.numbers[0].text = "+46 31 " + std::to_string(Scatter(number));
  return contact;
}

}  // namespace

uint32_t Scatter(std::size_t number) { return static_cast<uint32_t>(number) * 2654435761u; }

std::wstring NameOfPerson(std::size_t number) {
  std::wstring name = L"Anna ";
  const uint32_t bits = Scatter(number);
  for (int shift = 0; shift < 32; shift += 4) name += kSyllables[bits >> shift & 15];
  return name;
}

void FillBook(const std::wstring& path, std::size_t count) {
  std::shared_ptr<book::Store> store;
  std::unique_ptr<book::Import> import;
  Require(book::Store::Open(path, {}, &store) == S_OK, "the book was not opened");
  Require(store->BeginImport(false, &import) == S_OK, "no import");
  for (std::size_t i = 0; i < count; ++i) {
    book::PutResult result{};
    Require(import->Put(MakePerson(i), &result, nullptr) == S_OK && result == book::PutResult::kAdded,
            "a contact was not added");
  }
  Require(import->Commit() == S_OK, "the import was not committed");
}

void StorePersonalProfile(const std::wstring& path) {
  const std::string uid(sizeof(MAPIUID), 'u');
  SPropValue values[4]{};
  values[0].ulPropTag = PR_SERVICE_UID;
  values[0].Value.bin = {sizeof(MAPIUID), reinterpret_cast<LPBYTE>(const_cast<char*>(uid.data()))};
  values[1].ulPropTag = PR_SERVICE_DLL_NAME_W;
  values[1].Value.lpszW = const_cast<LPWSTR>(L"xhtpaba.dll");
  values[2].ulPropTag = PR_SERVICE_ENTRY_NAME;
  values[2].Value.lpszA = const_cast<LPSTR>("PersonalServiceEntry");
  values[3].ulPropTag = PR_ORV_BOOK_FILE_W;
  values[3].Value.lpszW = const_cast<LPWSTR>(path.c_str());
  RowList rows;
  Require(rows.Add({0, std::size(values), values}, 0) == S_OK, "the row was not made");
  Require(registry_store::SaveServiceRows(rows, L"P") == S_OK, "the profile was not stored");
}

sdk::ComPtr<IABContainer> OpenContainer(IAddrBook& book) {
  ULONG type = 0;
  sdk::ComPtr<IABContainer> root, container;
  Require(book.OpenEntry(0, nullptr, nullptr, 0, &type, root.PutUnknown()) == S_OK, "no root container");
  sdk::ComPtr<IMAPITable> table;
  Require(root->GetHierarchyTable(MAPI_UNICODE | CONVENIENT_DEPTH, table.Put()) == S_OK, "no hierarchy");
  sdk::RowSet rows(&OrvFreeBuffer);
  Require(table->QueryRows(10, 0, rows.Put()) == S_OK && rows->cRows != 0, "no containers");
  for (ULONG i = 0; i < rows->cRows; ++i) {
    const sdk::ValueView row(rows->aRow[i]);
    const SBinary id = row.Binary(PR_ENTRYID);
    if ((row.Number(PR_CONTAINER_FLAGS) & AB_RECIPIENTS) == 0) continue;
    Require(book.OpenEntry(id.cb, reinterpret_cast<LPENTRYID>(id.lpb), nullptr, 0, &type,
                           container.PutUnknown()) == S_OK,
            "no container");
  }
  return container;
}

}  // namespace orv::bench
