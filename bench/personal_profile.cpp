#include "bench/personal_profile.h"

#include "bench/harness.h"
#include "orv/orvbook.h"
#include "orv/orvtags.h"
#include "profiles/registry_store.h"

namespace orv::bench {

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
