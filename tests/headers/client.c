/*
 * A client in C: methods are called by the call macros and through lpVtbl, every table has its published number of
 * slots. Compiled only, as C99 and as C11.
 */
#include <stddef.h>

#define COBJMACROS

#include "orv/orv.h"

/* Slots of a table, IUnknown's three included: a method lost, doubled or added shows here. */
#define ASSERT_SLOTS(type, count) \
  ORV_STATIC_ASSERT(sizeof(type##Vtbl) == (count) * sizeof(void*), "methods of " #type)
#define ASSERT_SLOT(type, method, slot) \
  ORV_STATIC_ASSERT(offsetof(type##Vtbl, method) == (slot) * sizeof(void*), #type " " #method)

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
ASSERT_SLOTS(IOrvProfAdmin3, 16);
ASSERT_SLOTS(IOrvSession2, 14);
ASSERT_SLOTS(IOrvSupport2, 12);

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

HRESULT ClientInC(LPABPROVIDEROPEN open, LPORVSERVICEENTRY entry, LPORVSUPPORT support, LPPROFSECT section);

/* What the calls answer does not matter: nobody makes them. */
HRESULT ClientInC(LPABPROVIDEROPEN open, LPORVSERVICEENTRY entry, LPORVSUPPORT support, LPPROFSECT section) {
  static const MAPIUID uid = {{ORV_USER_INFO_UID_BYTES}};
  SizedSPropTagArray(2, columns) = {2, {PR_DISPLAY_NAME, PR_ENTRYID}};
  LPORVPROFADMIN profiles = NULL;
  LPORVSESSION session = NULL;
  LPADRBOOK book = NULL;
  LPABCONT root = NULL;
  LPMAPITABLE table = NULL;
  LPSRowSet rows = NULL;
  ULONG type = (ULONG)(ORV_VERSION >= ORV_MAKE_VERSION(1, 1, 0));
  void* unknown = NULL;
  LPORVSHOWHELP help = &OrvShowHelp;
  LPORVOPENCATALOGUE catalogue = &OrvOpenCatalogue;
  OrvAdminProfiles(MAPI_UNICODE, &profiles, 0);
  IOrvProfAdmin_CreateProfile(profiles, L"C", 0, MAPI_UNICODE | MAPI_DEFAULT_SERVICES);
  IOrvProfAdmin_Release(profiles);
  OrvOpen(0, L"C", MAPI_UNICODE, NULL, NULL, NULL, &book, &session, 0);
  IAddrBook_OpenEntry(book, 0, NULL, NULL, MAPI_BEST_ACCESS, &type, (LPUNKNOWN*)&root);
  IABContainer_GetHierarchyTable(root, MAPI_UNICODE | CONVENIENT_DEPTH, &table);
  IMAPITable_SetColumns(table, (LPSPropTagArray)&columns, 0);
  IMAPITable_QueryRows(table, 10, 0, &rows);
  IMAPITable_Abort(table);
  OrvFreeProws(rows);
  IOrvSupport_SetProviderUID(support, &uid);
  IOrvSupport_DoCopyTo(support, &IID_IProfSect, section, 0, NULL, NULL, 0, NULL, &IID_IMAPIProp, section, 0,
                       NULL);
  entry(NULL, 0, MAPI_UNICODE, MSG_SERVICE_CREATE, 0, NULL, section, support, 0);
  open(NULL, support, section, 0, MAPI_UNICODE, OrvAllocateBuffer, OrvAllocateMore, OrvFreeBuffer, &book, 0);
  book->lpVtbl->QueryInterface(book, &IID_IMAPIProp, &unknown);
  catalogue(NULL, MAPI_UNICODE, NULL, &rows, &rows);
  IOrvSession_FreeProws(session, rows);
  return help(0);
}
