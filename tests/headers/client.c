/*
 * A client in C: every interface is called through lpVtbl, every table has its published number of slots.
 * Compiled only.
 */
#include <stddef.h>

#include "orv/orv.h"

/* Slots of a table, IUnknown's three included: a method lost, doubled or added shows here. */
#define ASSERT_SLOTS(type, count) \
  _Static_assert(sizeof(type##Vtbl) == (count) * sizeof(void*), "methods of " #type)
#define ASSERT_SLOT(type, method, slot) \
  _Static_assert(offsetof(type##Vtbl, method) == (slot) * sizeof(void*), #type " " #method)

ASSERT_SLOTS(IMAPIProp, 14);
ASSERT_SLOTS(IProfSect, 14);
ASSERT_SLOTS(IMailUser, 14);
ASSERT_SLOTS(IMAPIContainer, 19);
ASSERT_SLOTS(IABContainer, 23);
ASSERT_SLOTS(IDistList, 23);
ASSERT_SLOTS(IMAPITable, 26);
ASSERT_SLOTS(IMAPIAdviseSink, 4);
ASSERT_SLOTS(IMAPIProgress, 8);
ASSERT_SLOTS(IAddrBook, 32);
ASSERT_SLOTS(IOrvSession, 13);
ASSERT_SLOTS(IOrvSupport, 10);
ASSERT_SLOTS(IOrvProfAdmin, 12);
ASSERT_SLOTS(IOrvProfAdmin2, 14);
ASSERT_SLOTS(IABServiceAdmin, 9);

ASSERT_SLOT(IMAPIProp, GetProps, 5);
ASSERT_SLOT(IMAPIProp, GetIDsFromNames, 13);
ASSERT_SLOT(IABContainer, GetContentsTable, 14);
ASSERT_SLOT(IABContainer, ResolveNames, 22);
ASSERT_SLOT(IMAPITable, QueryRows, 19);
ASSERT_SLOT(IMAPITable, SetCollapseState, 25);
ASSERT_SLOT(IAddrBook, OpenEntry, 14);
ASSERT_SLOT(IAddrBook, Details, 22);
ASSERT_SLOT(IAddrBook, PrepareRecips, 31);
ASSERT_SLOT(IOrvSession, OpenAddressBook, 9);
ASSERT_SLOT(IOrvSession, AdminServices, 12);
ASSERT_SLOT(IOrvSupport, SetProviderUID, 5);
ASSERT_SLOT(IOrvSupport, DoCopyTo, 7);
ASSERT_SLOT(IOrvProfAdmin, AdminServices, 11);
ASSERT_SLOT(IABServiceAdmin, OpenProfileSection, 8);

HRESULT OpenBookInC(LPORVSESSION* session, LPADRBOOK* book);
HRESULT PrintRootInC(LPADRBOOK book, void (*print)(LPCWSTR));
HRESULT ProviderInC(LPABPROVIDEROPEN open, LPORVSERVICEENTRY entry, LPORVSUPPORT support, LPPROFSECT section);
HRESULT HelpInC(ULONG_PTR window);

HRESULT OpenBookInC(LPORVSESSION* session, LPADRBOOK* book) {
  LPORVPROFADMIN profiles = NULL;
  HRESULT hr = OrvAdminProfiles(MAPI_UNICODE, &profiles, 0);
  if (FAILED(hr)) return hr;
  hr = profiles->lpVtbl->CreateProfile(profiles, L"C", 0, MAPI_UNICODE | MAPI_DEFAULT_SERVICES);
  profiles->lpVtbl->Release(profiles);
  if (FAILED(hr)) return hr;
  return OrvOpen(0, L"C", MAPI_UNICODE, NULL, NULL, NULL, book, session, 0);
}

HRESULT PrintRootInC(LPADRBOOK book, void (*print)(LPCWSTR)) {
  SizedSPropTagArray(2, columns) = {2, {PR_DISPLAY_NAME, PR_ENTRYID}};
  LPMAPITABLE table = NULL;
  LPSRowSet rows = NULL;
  ULONG type = 0;
  LPABCONT root = NULL;
  HRESULT hr = book->lpVtbl->OpenEntry(book, 0, NULL, NULL, MAPI_BEST_ACCESS, &type, (LPUNKNOWN*)&root);
  if (FAILED(hr)) return hr;
  hr = root->lpVtbl->GetHierarchyTable(root, MAPI_UNICODE | CONVENIENT_DEPTH, &table);
  root->lpVtbl->Release(root);
  if (FAILED(hr)) return hr;
  hr = table->lpVtbl->SetColumns(table, (LPSPropTagArray)&columns, 0);
  while (SUCCEEDED(hr) && SUCCEEDED(hr = table->lpVtbl->QueryRows(table, 10, 0, &rows)) && rows->cRows > 0) {
    for (ULONG i = 0; i < rows->cRows; i++) print(rows->aRow[i].lpProps[0].Value.lpszW);
    OrvFreeProws(rows);
  }
  table->lpVtbl->Release(table);
  return hr;
}

HRESULT ProviderInC(LPABPROVIDEROPEN open, LPORVSERVICEENTRY entry, LPORVSUPPORT support,
                    LPPROFSECT section) {
  static const MAPIUID uid = {{ORV_USER_INFO_UID_BYTES}};
  LPADRBOOK provider = NULL;
  HRESULT hr = support->lpVtbl->SetProviderUID(support, &uid);
  if (FAILED(hr)) return hr;
  hr = entry(NULL, 0, MAPI_UNICODE, MSG_SERVICE_CREATE, 0, NULL, section, support, 0);
  if (FAILED(hr)) return hr;
  hr = open(NULL, support, section, 0, MAPI_UNICODE, OrvAllocateBuffer, OrvAllocateMore, OrvFreeBuffer,
            &provider, 0);
  if (FAILED(hr)) return hr;
  void* unknown = NULL;
  hr = provider->lpVtbl->QueryInterface(provider, &IID_IMAPIProp, &unknown);
  provider->lpVtbl->Release(provider);
  return hr;
}

HRESULT HelpInC(ULONG_PTR window) {
  LPORVSHOWHELP help = &OrvShowHelp;
  return help(window);
}
