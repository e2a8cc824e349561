/*
 * The interfaces and the exported functions: all that a client needs, and what a provider implements.
 *
 * Rules that hold everywhere:
 * - Interfaces are COM shaped: a table of methods in published order, QueryInterface, AddRef and Release
 *   first. From C a method is reached through lpVtbl. An object that a call hands out carries one reference
 *   for the caller. QueryInterface knows IUnknown, the interface itself and the published ones it
 *   derives from; every other is MAPI_E_INTERFACE_NOT_SUPPORTED with *ppvObject null.
 * - Results are HRESULTs of orvcodes.h; test with FAILED(). No exception leaves a method.
 * - Buffers handed out are roots of the library's allocator: one OrvFreeBuffer frees a whole result (row
 *   sets: OrvFreeProws, address lists: OrvFreePadrlist). Arguments stay the caller's, and are not kept after
 *   the call.
 * - Methods of the library's objects may be called from any thread, on several at once, unless a comment
 *   says who has to serialise them. Who calls holds a reference of his own meanwhile. Property objects and
 *   tables deal with one call at a time; a table has one position, which all its readers share.
 * - MAPI_UNICODE is required in the flags of GetProps, GetPropList and CopyTo, of profile and service
 *   administration, and of the exports that open something, else MAPI_E_BAD_CHARWIDTH; comments name the
 *   exceptions. The other methods of the library do not ask for it; flags that go to a provider are the
 *   provider's to judge, so give it to GetHierarchyTable and GetContentsTable too.
 * - Pointers are checked: one that cannot be written or read is MAPI_E_INVALID_PARAMETER. Arrays are checked
 *   for as many elements as their count says, names to their end. Not checked: what the buffer functions are
 *   given, and arguments that a comment says are not looked at.
 * - An out argument is untouched after a failure, unless its comment says otherwise.
 */
#ifndef ORV_ORVAPI_H
#define ORV_ORVAPI_H

#include "orv/orvcodes.h"
#include "orv/orvguids.h"
#include "orv/orvtypes.h"

/*
 * How the interfaces are declared, in C++ and in C (ours). In C a table repeats the methods of its bases; in C++ it
 * inherits them. CINTERFACE gives C++ the tables of C. The platform's macros would promise that no method throws,
 * and a compiler that believes it drops the handlers round calls of methods; these promise nothing.
 */
#if defined(__cplusplus) && !defined(CINTERFACE)
#define ORV_INHERITED(...)
#define ORV_METHOD(name) virtual HRESULT STDMETHODCALLTYPE name
#define ORV_METHOD_(type, name) virtual type STDMETHODCALLTYPE name
#ifdef _MSC_VER
#define ORV_INTERFACE(name, base) struct __declspec(novtable) name : public base
#else
#define ORV_INTERFACE(name, base) struct name : public base
#endif
#else
#define ORV_INHERITED(...) __VA_ARGS__
#define ORV_METHOD(name) HRESULT(STDMETHODCALLTYPE* name)
#define ORV_METHOD_(type, name) type(STDMETHODCALLTYPE* name)
#ifdef CONST_VTABLE
#define ORV_CONST_TABLE const
#else
#define ORV_CONST_TABLE
#endif
#define ORV_INTERFACE(name, base)              \
  typedef struct name##Vtbl name##Vtbl;        \
  struct name {                                \
    ORV_CONST_TABLE struct name##Vtbl* lpVtbl; \
  };                                           \
  struct name##Vtbl
#endif

/* The tool takes tables of methods apart. */
/* clang-format off */

#define ORV_IUNKNOWN_METHODS                                                                                 \
  ORV_METHOD(QueryInterface)(THIS_ REFIID riid, void** ppvObject) PURE;                                      \
  ORV_METHOD_(ULONG, AddRef)(THIS) PURE;                                                                     \
  ORV_METHOD_(ULONG, Release)(THIS) PURE;

/* ---- Published interfaces ---- */

/*
 * IMAPIProp: an object with properties.
 *
 * GetLastError  text for a result of this object. The library's objects have none: they answer
 *               MAPI_E_NO_SUPPORT, or success without writing lppMAPIError where their own comment says so.
 * SaveChanges   makes changes permanent (KEEP_OPEN_READWRITE: go on using the object; the library's objects
 *               do not look at the flags and stay usable). Unsaved changes are lost.
 * GetProps      values of the tags, in their order, as one root buffer; null: all. The stored type wins over
 *               the type asked for; a missing one comes back as PT_ERROR with MAPI_E_NOT_FOUND, and the
 *               result is then MAPI_W_ERRORS_RETURNED (library objects: only when the last tag was missing).
 *               A count of 0 is MAPI_E_INVALID_PARAMETER. An object without properties gives count 0, no array.
 * GetPropList   tags of all properties, one root buffer.
 * OpenProperty  opens a PT_OBJECT property as the interface named; most objects answer MAPI_E_NO_SUPPORT.
 * SetProps      stores copies of the values; PR_NULL and PT_ERROR values are skipped. Succeeds also when
 *               single values fail: those are listed in *lppProblems (null when there are none; a root buffer
 *               otherwise; lppProblems may be null).
 * DeleteProps   removes the properties; problems as above, MAPI_E_NOT_FOUND for one that is not there or is
 *               read-only.
 * CopyTo        copies all but the excluded properties into the object lpDestObj, seen through lpInterface.
 *               Excluding every one is MAPI_E_INVALID_PARAMETER from the library's objects.
 * CopyProps     copies the properties named. MAPI_NOREPLACE keeps what the destination has. *lppProblems
 *               comes from the destination's SetProps. The library's objects copy no binary and no object
 *               properties, and look at neither excluded interfaces nor window nor progress object.
 * GetNamesFromIDs, GetIDsFromNames
 *               named properties; the library's objects answer MAPI_E_NO_SUPPORT.
 */
#define ORV_IMAPIPROP_METHODS                                                                                \
  ORV_METHOD(GetLastError)(THIS_ HRESULT hResult, ULONG ulFlags, LPMAPIERROR* lppMAPIError) PURE;            \
  ORV_METHOD(SaveChanges)(THIS_ ULONG ulFlags) PURE;                                                         \
  ORV_METHOD(GetProps)(THIS_ LPSPropTagArray lpPropTagArray, ULONG ulFlags, ULONG* lpcValues,                \
                       LPSPropValue* lppPropArray) PURE;                                                     \
  ORV_METHOD(GetPropList)(THIS_ ULONG ulFlags, LPSPropTagArray* lppPropTagArray) PURE;                       \
  ORV_METHOD(OpenProperty)(THIS_ ULONG ulPropTag, LPCIID lpiid, ULONG ulInterfaceOptions, ULONG ulFlags,     \
                           LPUNKNOWN* lppUnk) PURE;                                                          \
  ORV_METHOD(SetProps)(THIS_ ULONG cValues, LPSPropValue lpPropArray,                                        \
                       LPSPropProblemArray* lppProblems) PURE;                                               \
  ORV_METHOD(DeleteProps)(THIS_ LPSPropTagArray lpPropTagArray, LPSPropProblemArray* lppProblems) PURE;      \
  ORV_METHOD(CopyTo)(THIS_ ULONG ciidExclude, LPCIID rgiidExclude, LPSPropTagArray lpExcludeProps,           \
                     ULONG_PTR ulUIParam, LPMAPIPROGRESS lpProgress, LPCIID lpInterface, LPVOID lpDestObj,   \
                     ULONG ulFlags, LPSPropProblemArray* lppProblems) PURE;                                  \
  ORV_METHOD(CopyProps)(THIS_ LPSPropTagArray lpIncludeProps, ULONG_PTR ulUIParam,                           \
                        LPMAPIPROGRESS lpProgress, LPCIID lpInterface, LPVOID lpDestObj, ULONG ulFlags,      \
                        LPSPropProblemArray* lppProblems) PURE;                                              \
  ORV_METHOD(GetNamesFromIDs)(THIS_ LPSPropTagArray* lppPropTags, LPGUID lpPropSetGuid, ULONG ulFlags,       \
                              ULONG* lpcPropNames, LPMAPINAMEID** lpppPropNames) PURE;                       \
  ORV_METHOD(GetIDsFromNames)(THIS_ ULONG cPropNames, LPMAPINAMEID* lppPropNames, ULONG ulFlags,             \
                              LPSPropTagArray* lppPropTags) PURE;

#undef INTERFACE
#define INTERFACE IMAPIProp
ORV_INTERFACE(IMAPIProp, IUnknown) {
  ORV_INHERITED(ORV_IUNKNOWN_METHODS)
  ORV_IMAPIPROP_METHODS
};

/*
 * IProfSect: the property set that one message service keeps in a profile. A copy in memory, filled when
 * opened and written back by SaveChanges alone, property by property: what was deleted from the section stays
 * stored. Two sections open on one service do not see each other. SaveChanges: MAPI_E_NOT_FOUND when the
 * service has gone or nothing is held. Copies go to IMAPIProp or IProfSect, else
 * MAPI_E_INTERFACE_NOT_SUPPORTED.
 */
#undef INTERFACE
#define INTERFACE IProfSect
ORV_INTERFACE(IProfSect, IMAPIProp) {
  ORV_INHERITED(ORV_IUNKNOWN_METHODS ORV_IMAPIPROP_METHODS)
};

/* IMailUser: one addressable entry. */
#undef INTERFACE
#define INTERFACE IMailUser
ORV_INTERFACE(IMailUser, IMAPIProp) {
  ORV_INHERITED(ORV_IUNKNOWN_METHODS ORV_IMAPIPROP_METHODS)
};

/*
 * IMAPIContainer: an object with entries and containers below it.
 *
 * GetContentsTable   the entries, one row each.
 * GetHierarchyTable  the containers below; CONVENIENT_DEPTH: of every level.
 * OpenEntry          opens an entry below it, as IAddrBook::OpenEntry.
 * SetSearchCriteria, GetSearchCriteria
 *                    a container that holds what a search found.
 *
 * Of the root container (IAddrBook::OpenEntry without an identifier): its hierarchy table lists one row a
 * provider with PR_DISPLAY_NAME_W, PR_ENTRYID, PR_OBJECT_TYPE, PR_CONTAINER_FLAGS, PR_DEPTH in this order, each
 * followed under CONVENIENT_DEPTH by the provider's containers one level deeper; a provider that fails is left
 * out, but the failure of the last one is the method's. OpenProperty answers the same table for
 * PR_CONTAINER_HIERARCHY with IID_IMAPITable, all else is MAPI_E_INTERFACE_NOT_SUPPORTED. OpenEntry is of no
 * use: it looks at no identifier and leaves *lppUnk as it is; open by the address book. Properties, contents,
 * search criteria, CreateEntry, CopyEntries (of an entry or more) and ResolveNames: MAPI_E_NO_SUPPORT.
 */
#define ORV_IMAPICONTAINER_METHODS                                                                           \
  ORV_METHOD(GetContentsTable)(THIS_ ULONG ulFlags, LPMAPITABLE* lppTable) PURE;                             \
  ORV_METHOD(GetHierarchyTable)(THIS_ ULONG ulFlags, LPMAPITABLE* lppTable) PURE;                            \
  ORV_METHOD(OpenEntry)(THIS_ ULONG cbEntryID, LPENTRYID lpEntryID, LPCIID lpInterface, ULONG ulFlags,       \
                        ULONG* lpulObjType, LPUNKNOWN* lppUnk) PURE;                                         \
  ORV_METHOD(SetSearchCriteria)(THIS_ LPSRestriction lpRestriction, LPENTRYLIST lpContainerList,             \
                                ULONG ulSearchFlags) PURE;                                                   \
  ORV_METHOD(GetSearchCriteria)(THIS_ ULONG ulFlags, LPSRestriction* lppRestriction,                         \
                                LPENTRYLIST* lppContainerList, ULONG* lpulSearchState) PURE;

#undef INTERFACE
#define INTERFACE IMAPIContainer
ORV_INTERFACE(IMAPIContainer, IMAPIProp) {
  ORV_INHERITED(ORV_IUNKNOWN_METHODS ORV_IMAPIPROP_METHODS)
  ORV_IMAPICONTAINER_METHODS
};

/*
 * IABContainer: a container of an address book.
 *
 * CreateEntry    a new entry after the template lpEntryID; it exists once its SaveChanges succeeded.
 * CopyEntries    copies entries of any provider into the container.
 * DeleteEntries  deletes entries; the root container spreads them over their providers and reports none of
 *                their failures.
 * ResolveNames   fills in the entries of lpAdrList that are still MAPI_UNRESOLVED in lpFlagList and that it
 *                knows.
 */
#define ORV_IABCONTAINER_METHODS                                                                             \
  ORV_METHOD(CreateEntry)(THIS_ ULONG cbEntryID, LPENTRYID lpEntryID, ULONG ulCreateFlags,                   \
                          LPMAPIPROP* lppMAPIPropEntry) PURE;                                                \
  ORV_METHOD(CopyEntries)(THIS_ LPENTRYLIST lpEntries, ULONG_PTR ulUIParam, LPMAPIPROGRESS lpProgress,       \
                          ULONG ulFlags) PURE;                                                               \
  ORV_METHOD(DeleteEntries)(THIS_ LPENTRYLIST lpEntries, ULONG ulFlags) PURE;                                \
  ORV_METHOD(ResolveNames)(THIS_ LPSPropTagArray lpPropTagArray, ULONG ulFlags, LPADRLIST lpAdrList,         \
                           LPFlagList lpFlagList) PURE;

#undef INTERFACE
#define INTERFACE IABContainer
ORV_INTERFACE(IABContainer, IMAPIContainer) {
  ORV_INHERITED(ORV_IUNKNOWN_METHODS ORV_IMAPIPROP_METHODS ORV_IMAPICONTAINER_METHODS)
  ORV_IABCONTAINER_METHODS
};

/*
 * IDistList: an entry that stands for others; the methods of IABContainer, its contents table lists the
 * members.
 */
#undef INTERFACE
#define INTERFACE IDistList
ORV_INTERFACE(IDistList, IMAPIContainer) {
  ORV_INHERITED(ORV_IUNKNOWN_METHODS ORV_IMAPIPROP_METHODS ORV_IMAPICONTAINER_METHODS)
  ORV_IABCONTAINER_METHODS
};

/*
 * IMAPITable: rows to read. The library's tables are snapshots; what they refuse is MAPI_E_NO_SUPPORT and
 * marked (-).
 *
 * Advise, Unadvise (-)  notifications of changes.
 * GetStatus             TBLSTAT_* and TBLTYPE_*.
 * SetColumns            which columns a row has from now on, and their order; PR_NULL keeps a place empty.
 * QueryColumns          the column set; with TBL_ALL_COLUMNS, or before SetColumns, the columns of the first
 *                       row (MAPI_E_TABLE_EMPTY without one). One root buffer.
 * GetRowCount           number of rows.
 * SeekRow               moves by rows from a bookmark; stops at either end with success; *lplRowsSought
 *                       (optional) tells how far. An unknown bookmark is MAPI_E_INVALID_BOOKMARK.
 * SeekRowApprox         moves to ulNumerator / ulDenominator of the table.
 * QueryPosition         current row, and the same as a fraction.
 * FindRow, Restrict, CreateBookmark, FreeBookmark, SortTable, QuerySortOrder (-)
 * QueryRows             rows from the position on (lRowCount > 0) or before it (< 0), always in table order;
 *                       TBL_NOADVANCE keeps the position, and a read backward leaves it where it was. No
 *                       rows left: success with cRows 0, and the library's tables then stand at the
 *                       beginning again. lRowCount 0 is MAPI_E_INVALID_PARAMETER. Free with OrvFreeProws.
 * Abort                 ends a pending operation; the library's tables have none.
 * ExpandRow, CollapseRow, WaitForCompletion, GetCollapseState, SetCollapseState (-)
 */
#define ORV_IMAPITABLE_METHODS                                                                               \
  ORV_METHOD(GetLastError)(THIS_ HRESULT hResult, ULONG ulFlags, LPMAPIERROR* lppMAPIError) PURE;            \
  ORV_METHOD(Advise)(THIS_ ULONG ulEventMask, LPMAPIADVISESINK lpAdviseSink, ULONG* lpulConnection) PURE;    \
  ORV_METHOD(Unadvise)(THIS_ ULONG ulConnection) PURE;                                                       \
  ORV_METHOD(GetStatus)(THIS_ ULONG* lpulTableStatus, ULONG* lpulTableType) PURE;                            \
  ORV_METHOD(SetColumns)(THIS_ LPSPropTagArray lpPropTagArray, ULONG ulFlags) PURE;                          \
  ORV_METHOD(QueryColumns)(THIS_ ULONG ulFlags, LPSPropTagArray* lppPropTagArray) PURE;                      \
  ORV_METHOD(GetRowCount)(THIS_ ULONG ulFlags, ULONG* lpulCount) PURE;                                       \
  ORV_METHOD(SeekRow)(THIS_ BOOKMARK bkOrigin, LONG lRowCount, LONG* lplRowsSought) PURE;                    \
  ORV_METHOD(SeekRowApprox)(THIS_ ULONG ulNumerator, ULONG ulDenominator) PURE;                              \
  ORV_METHOD(QueryPosition)(THIS_ ULONG* lpulRow, ULONG* lpulNumerator, ULONG* lpulDenominator) PURE;        \
  ORV_METHOD(FindRow)(THIS_ LPSRestriction lpRestriction, BOOKMARK bkOrigin, ULONG ulFlags) PURE;            \
  ORV_METHOD(Restrict)(THIS_ LPSRestriction lpRestriction, ULONG ulFlags) PURE;                              \
  ORV_METHOD(CreateBookmark)(THIS_ BOOKMARK* lpbkPosition) PURE;                                             \
  ORV_METHOD(FreeBookmark)(THIS_ BOOKMARK bkPosition) PURE;                                                  \
  ORV_METHOD(SortTable)(THIS_ LPSSortOrderSet lpSortCriteria, ULONG ulFlags) PURE;                           \
  ORV_METHOD(QuerySortOrder)(THIS_ LPSSortOrderSet* lppSortCriteria) PURE;                                   \
  ORV_METHOD(QueryRows)(THIS_ LONG lRowCount, ULONG ulFlags, LPSRowSet* lppRows) PURE;                       \
  ORV_METHOD(Abort)(THIS) PURE;                                                                              \
  ORV_METHOD(ExpandRow)(THIS_ ULONG cbInstanceKey, LPBYTE pbInstanceKey, ULONG ulRowCount, ULONG ulFlags,    \
                        LPSRowSet* lppRows, ULONG* lpulMoreRows) PURE;                                       \
  ORV_METHOD(CollapseRow)(THIS_ ULONG cbInstanceKey, LPBYTE pbInstanceKey, ULONG ulFlags,                    \
                          ULONG* lpulRowCount) PURE;                                                         \
  ORV_METHOD(WaitForCompletion)(THIS_ ULONG ulFlags, ULONG ulTimeout, ULONG* lpulTableStatus) PURE;          \
  ORV_METHOD(GetCollapseState)(THIS_ ULONG ulFlags, ULONG cbInstanceKey, LPBYTE lpbInstanceKey,              \
                               ULONG* lpcbCollapseState, LPBYTE* lppbCollapseState) PURE;                    \
  ORV_METHOD(SetCollapseState)(THIS_ ULONG ulFlags, ULONG cbCollapseState, LPBYTE pbCollapseState,           \
                               BOOKMARK* lpbkLocation) PURE;

#undef INTERFACE
#define INTERFACE IMAPITable
ORV_INTERFACE(IMAPITable, IUnknown) {
  ORV_INHERITED(ORV_IUNKNOWN_METHODS)
  ORV_IMAPITABLE_METHODS
};

/*
 * IMAPIAdviseSink: implemented by whoever wants notifications. OnNotify may come on any thread, even before
 * Advise has returned; the events are valid during the call only. The result is ignored: return 0. Do not
 * release a session for the last time in it: the thread may be the provider's, which that unloads.
 */
#undef INTERFACE
#define INTERFACE IMAPIAdviseSink
ORV_INTERFACE(IMAPIAdviseSink, IUnknown) {
  ORV_INHERITED(ORV_IUNKNOWN_METHODS)
  ORV_METHOD_(ULONG, OnNotify)(THIS_ ULONG cNotif, LPNOTIFICATION lpNotifications) PURE;
};

/* IMAPIProgress: implemented by a caller that shows how far a long call has come. */
#undef INTERFACE
#define INTERFACE IMAPIProgress
ORV_INTERFACE(IMAPIProgress, IUnknown) {
  ORV_INHERITED(ORV_IUNKNOWN_METHODS)
  ORV_METHOD(Progress)(THIS_ ULONG ulValue, ULONG ulCount,
                       ULONG ulTotal) PURE; /* ulValue between the limits */
  ORV_METHOD(GetFlags)(THIS_ ULONG* lpulFlags) PURE;        /* MAPI_TOP_LEVEL or 0 */
  ORV_METHOD(GetMax)(THIS_ ULONG* lpulMax) PURE;
  ORV_METHOD(GetMin)(THIS_ ULONG* lpulMin) PURE;
  ORV_METHOD(SetLimits)(THIS_ ULONG* lpulMin, ULONG* lpulMax,
                        ULONG* lpulFlags) PURE; /* null keeps a value */
};

/*
 * IAddrBook: the address book of a session; also the shape of the object that a provider hands to the
 * library.
 *
 * Of the address book: every IMAPIProp method but GetLastError (success, nothing written) is
 * MAPI_E_NO_SUPPORT. A call that carries an entry identifier goes, arguments unchanged, to the provider that
 * registered the identifier's MAPIUID, and its result comes back (MAPI_E_CALL_FAILED where it throws).
 * MAPI_E_INVALID_ENTRYID: null, under 20 bytes, or the user's own details; MAPI_E_NOT_FOUND: no provider
 * registered it; MAPI_E_END_OF_SESSION, from QueryInterface too: the session is gone, or its end waits for calls
 * of other threads. The remaining methods then answer as without providers: an empty hierarchy of the root
 * container, nothing to unadvise. Any thread may call, several at once; no lock is held while a provider runs,
 * but by the root container's DeleteEntries its own.
 *
 * OpenEntry        opens the entry; null lpEntryID: the root container. lpInterface null: the object's own
 *                  interface. *lpulObjType becomes MAPI_ABCONT, MAPI_MAILUSER or MAPI_DISTLIST.
 * CompareEntryIDs  the address book cannot tell: MAPI_E_UNKNOWN_ENTRYID, *lpulResult untouched.
 * Advise           registers the sink for events (fnev*) of the entry; *lpulConnection is 0 on failure. Without
 *                  an identifier: MAPI_E_INVALID_PARAMETER.
 * Unadvise         ends a registration; MAPI_E_NOT_FOUND for an unknown number.
 * CreateOneOff, ResolveName, Address, RecipOptions, QueryDefaultRecipOpt
 *                  MAPI_E_NO_SUPPORT from the address book. The address dialog is OrvAddress.
 * NewEntry         lets a provider make an entry, in the container named or else by the template named;
 *                  neither: MAPI_E_NO_SUPPORT.
 * Details          shows the entry; *lpulUIParam is the parent window, of which 4 bytes must be writable.
 * GetPAB, GetDefaultDir
 *                  entry identifier of the default personal address book (AB_MODIFIABLE) and default
 *                  directory (AB_RECIPIENTS): the one stored, or the first container fit for it, which
 *                  stands for this session. One root buffer. None: MAPI_E_CALL_FAILED, both outs zero.
 * SetPAB, SetDefaultDir
 *                  stores one; MAPI_E_CALL_FAILED when it is no such container. Kept when the session ends.
 * GetSearchPath    containers searched, one row each with PR_ENTRYID; MAPI_E_NOT_FOUND when there are none.
 * SetSearchPath    stores the rows whose first property is the PR_ENTRYID of an AB_RECIPIENTS container; no
 *                  such row: MAPI_E_INVALID_PARAMETER.
 * PrepareRecips    gives each recipient the properties asked for, by its provider. The list comes back
 *                  grouped by provider, recipients of no provider last: those get the tags asked for in
 *                  front, PT_ERROR for what they lack. ulFlags is 0, else MAPI_E_INVALID_PARAMETER.
 */
#define ORV_IADDRBOOK_METHODS                                                                                \
  ORV_METHOD(OpenEntry)(THIS_ ULONG cbEntryID, LPENTRYID lpEntryID, LPCIID lpInterface, ULONG ulFlags,       \
                        ULONG* lpulObjType, LPUNKNOWN* lppUnk) PURE;                                         \
  ORV_METHOD(CompareEntryIDs)(THIS_ ULONG cbEntryID1, LPENTRYID lpEntryID1, ULONG cbEntryID2,                \
                              LPENTRYID lpEntryID2, ULONG ulFlags, ULONG* lpulResult) PURE;                  \
  ORV_METHOD(Advise)(THIS_ ULONG cbEntryID, LPENTRYID lpEntryID, ULONG ulEventMask,                          \
                     LPMAPIADVISESINK lpAdviseSink, ULONG* lpulConnection) PURE;                             \
  ORV_METHOD(Unadvise)(THIS_ ULONG ulConnection) PURE;                                                       \
  ORV_METHOD(CreateOneOff)(THIS_ LPWSTR lpszName, LPWSTR lpszAdrType, LPWSTR lpszAddress, ULONG ulFlags,     \
                           ULONG* lpcbEntryID, LPENTRYID* lppEntryID) PURE;                                  \
  ORV_METHOD(NewEntry)(THIS_ ULONG_PTR ulUIParam, ULONG ulFlags, ULONG cbEIDContainer,                       \
                       LPENTRYID lpEIDContainer, ULONG cbEIDNewEntryTpl, LPENTRYID lpEIDNewEntryTpl,         \
                       ULONG* lpcbEIDNewEntry, LPENTRYID* lppEIDNewEntry) PURE;                              \
  ORV_METHOD(ResolveName)(THIS_ ULONG_PTR ulUIParam, ULONG ulFlags, LPWSTR lpszNewEntryTitle,                \
                          LPADRLIST lpAdrList) PURE;                                                         \
  ORV_METHOD(Address)(THIS_ ULONG_PTR* lpulUIParam, LPADRPARM lpAdrParms, LPADRLIST* lppAdrList) PURE;       \
  ORV_METHOD(Details)(THIS_ ULONG_PTR* lpulUIParam, LPFNDISMISS lpfnDismiss, LPVOID lpvDismissContext,       \
                      ULONG cbEntryID, LPENTRYID lpEntryID, LPFNBUTTON lpfButtonCallback,                    \
                      LPVOID lpvButtonContext, LPWSTR lpszButtonText, ULONG ulFlags) PURE;                   \
  ORV_METHOD(RecipOptions)(THIS_ ULONG_PTR ulUIParam, ULONG ulFlags, LPADRENTRY lpRecip) PURE;               \
  ORV_METHOD(QueryDefaultRecipOpt)(THIS_ LPWSTR lpszAdrType, ULONG ulFlags, ULONG* lpcValues,                \
                                   LPSPropValue* lppOptions) PURE;                                           \
  ORV_METHOD(GetPAB)(THIS_ ULONG* lpcbEntryID, LPENTRYID* lppEntryID) PURE;                                  \
  ORV_METHOD(SetPAB)(THIS_ ULONG cbEntryID, LPENTRYID lpEntryID) PURE;                                       \
  ORV_METHOD(GetDefaultDir)(THIS_ ULONG* lpcbEntryID, LPENTRYID* lppEntryID) PURE;                           \
  ORV_METHOD(SetDefaultDir)(THIS_ ULONG cbEntryID, LPENTRYID lpEntryID) PURE;                                \
  ORV_METHOD(GetSearchPath)(THIS_ ULONG ulFlags, LPSRowSet* lppSearchPath) PURE;                             \
  ORV_METHOD(SetSearchPath)(THIS_ ULONG ulFlags, LPSRowSet lpSearchPath) PURE;                               \
  ORV_METHOD(PrepareRecips)(THIS_ ULONG ulFlags, LPSPropTagArray lpPropTagArray, LPADRLIST lpRecipList) PURE;

#undef INTERFACE
#define INTERFACE IAddrBook
ORV_INTERFACE(IAddrBook, IMAPIProp) {
  ORV_INHERITED(ORV_IUNKNOWN_METHODS ORV_IMAPIPROP_METHODS)
  ORV_IADDRBOOK_METHODS
};

/* ---- Interfaces of ours ---- */

/*
 * IOrvSession: what a logon gives. Its last Release ends the session: the address book's changed settings are
 * written and the providers unloaded, newest first. Any thread may call, several at once.
 *
 * That Release first waits for the calls of other threads that are inside the address book, its root container,
 * ExpandRecipients or an address dialog over the book; meanwhile it dispatches what they send to windows of its
 * thread. Calls of other threads that come later are refused at once. So hold nothing that a call inside waits
 * for. Released from within such a call (in a provider's callback, on behalf of a dialog), the session ends when
 * the outermost call of that thread is over. Objects that providers handed out must have been released before:
 * calls of theirs are not waited for.
 *
 * GetLastError       success, nothing written.
 * AllocateBuffer ... FreePadrlist
 *                    the exports of the same names.
 * OpenAddressBook    the session's address book, one more reference each time. ulFlags is 0, else
 *                    MAPI_E_UNKNOWN_FLAGS; so in the two methods below that take flags.
 * ExpandRecipients   replaces every distribution list in the list, recursively, by its members with the
 *                    list's PR_RECIPIENT_TYPE; no entry identifier appears twice, cycles end. Entries need
 *                    PR_OBJECT_TYPE and PR_ENTRYID, lists PR_RECIPIENT_TYPE too, else
 *                    MAPI_E_MISSING_REQUIRED_COLUMN. The given list may be freed: *lppAdrList is the result,
 *                    after a failure too (what was collected, or null), except that refused arguments, an
 *                    empty list among them, change nothing. The session's lock is held while providers are
 *                    called: other threads wait meanwhile that expand recipients, open something of the
 *                    session or change its references, so a provider must not wait for one that does.
 * GetSessionEntryID  a constant of 20 bytes, one root buffer.
 * AdminServices      the administration object of the profile's services, one more reference.
 */
#define ORV_IORVSESSION_METHODS                                                                              \
  ORV_METHOD(GetLastError)(THIS_ HRESULT hResult, ULONG ulFlags, LPMAPIERROR* lppMAPIError) PURE;            \
  ORV_METHOD_(SCODE, AllocateBuffer)(THIS_ ULONG cbSize, LPVOID* lppBuffer) PURE;                            \
  ORV_METHOD_(SCODE, AllocateMore)(THIS_ ULONG cbSize, LPVOID lpObject, LPVOID* lppBuffer) PURE;             \
  ORV_METHOD_(ULONG, FreeBuffer)(THIS_ LPVOID lpBuffer) PURE;                                                \
  ORV_METHOD_(void, FreeProws)(THIS_ LPSRowSet lpRows) PURE;                                                 \
  ORV_METHOD_(void, FreePadrlist)(THIS_ LPADRLIST lpAdrList) PURE;                                           \
  ORV_METHOD(OpenAddressBook)(THIS_ ULONG ulFlags, LPADRBOOK* lppAdrBook) PURE;                              \
  ORV_METHOD(ExpandRecipients)(THIS_ ULONG ulFlags, LPADRLIST* lppAdrList) PURE;                             \
  ORV_METHOD(GetSessionEntryID)(THIS_ ULONG* lpcbEntryID, LPENTRYID* lppEntryID) PURE;                       \
  ORV_METHOD(AdminServices)(THIS_ ULONG ulFlags, LPABSERVICEADMIN* lppServiceAdmin) PURE;

#undef INTERFACE
#define INTERFACE IOrvSession
ORV_INTERFACE(IOrvSession, IUnknown) {
  ORV_INHERITED(ORV_IUNKNOWN_METHODS)
  ORV_IORVSESSION_METHODS
};

/*
 * IOrvSession2: what a session answers a query for besides.
 *
 * GetProblems  what providers reported (IOrvSupport2) and what the library saw go wrong with them while it answered
 *              with the rest (a hierarchy that fails or never ends), oldest first, since the logon; the last
 *              ORV_MAX_PROBLEMS are kept, and reading takes none away. A row has PR_ORV_PROBLEM_CODE,
 *              PR_ORV_PROBLEM_TEXT_W and, for the service that it is about, PR_SERVICE_UID, PR_DISPLAY_NAME_W and
 *              PR_SERVICE_DLL_NAME_W. The caller frees the set with OrvFreeProws; one without rows is a set too.
 *              ulFlags is 0, else MAPI_E_UNKNOWN_FLAGS. Waits for no other call.
 */
#undef INTERFACE
#define INTERFACE IOrvSession2
ORV_INTERFACE(IOrvSession2, IOrvSession) {
  ORV_INHERITED(ORV_IUNKNOWN_METHODS)
  ORV_INHERITED(ORV_IORVSESSION_METHODS)
  ORV_METHOD(GetProblems)(THIS_ ULONG ulFlags, LPSRowSet* lppProblems) PURE;
};

/*
 * IOrvProfAdmin: the profiles of the current user. Every method but GetLastError (success, nothing written)
 * needs MAPI_UNICODE. A new name holds 1 to 64 characters and no backslash: MAPI_E_INVALID_PARAMETER,
 * MAPI_E_STRING_TOO_LONG; one that exists, in any spelling of case, is MAPI_E_NO_ACCESS. An unknown profile
 * is MAPI_E_NOT_FOUND, names being compared with case, but an unknown old one of CopyProfile and RenameProfile
 * MAPI_E_CALL_FAILED. A null name is MAPI_E_INVALID_PARAMETER unless a method says otherwise. A registry that
 * refuses is MAPI_E_CALL_FAILED. A change is whole or not there, whenever the process ends; other programs that
 * use the profile wait for it, and what one of them does not let go of within ten seconds is MAPI_E_BUSY.
 * GetProfileTable and AdminServices may be called from any thread at any time,
 * calls of the others on one object must be serialised by the caller; objects of their own need not be.
 *
 * GetProfileTable    PR_DISPLAY_NAME_W and PR_DEFAULT_PROFILE, a row a profile. A default name of more than 31
 *                    characters marks no row. The table is shared with later callers until the next change,
 *                    its position included; it does not follow changes. *lppTable is null on failure, and
 *                    lppTable is tested for null only.
 * CreateProfile      MAPI_DEFAULT_SERVICES: with the catalogue's default services, whose libraries are not
 *                    called. MAPI_DIALOG: the user edits the services first; cancelled: MAPI_E_USER_CANCEL and
 *                    no profile. However else the editing fails, the profile is deleted again.
 * DeleteProfile      with everything stored in it; it stays named as the default if it was. A null name is
 *                    MAPI_E_NOT_FOUND.
 * ConfigureProfile   the user edits the services; cancelled: MAPI_E_USER_CANCEL and the services as before, as
 *                    after any failure.
 * CopyProfile        the services, with their UIDs, not the address book's settings.
 * RenameProfile      the same, then deletes the old one and moves the default along, unless the shared table
 *                    has been read beyond the old profile's row.
 * SetDefaultProfile  null: no default, MAPI_E_CALL_FAILED when there was none.
 * AdminServices      the administration object of the profile's services; *lppServiceAdmin is null on
 *                    failure.
 */
#define ORV_IORVPROFADMIN_METHODS                                                                            \
  ORV_METHOD(GetLastError)(THIS_ HRESULT hResult, ULONG ulFlags, LPMAPIERROR* lppMAPIError) PURE;            \
  ORV_METHOD(GetProfileTable)(THIS_ ULONG ulFlags, LPMAPITABLE* lppTable) PURE;                              \
  ORV_METHOD(CreateProfile)(THIS_ LPCWSTR lpszProfileName, ULONG_PTR ulUIParam, ULONG ulFlags) PURE;         \
  ORV_METHOD(DeleteProfile)(THIS_ LPCWSTR lpszProfileName, ULONG ulFlags) PURE;                              \
  ORV_METHOD(ConfigureProfile)(THIS_ LPCWSTR lpszProfileName, ULONG_PTR ulUIParam, ULONG ulFlags) PURE;      \
  ORV_METHOD(CopyProfile)                                                                                    \
  (THIS_ LPCWSTR lpszOldProfileName, LPCWSTR lpszNewProfileName, ULONG ulFlags) PURE;                        \
  ORV_METHOD(RenameProfile)                                                                                  \
  (THIS_ LPCWSTR lpszOldProfileName, LPCWSTR lpszNewProfileName, ULONG ulFlags) PURE;                        \
  ORV_METHOD(SetDefaultProfile)(THIS_ LPCWSTR lpszProfileName, ULONG ulFlags) PURE;                          \
  ORV_METHOD(AdminServices)(THIS_ LPCWSTR lpszProfileName, ULONG ulFlags, LPABSERVICEADMIN* lppServiceAdmin) PURE;

#undef INTERFACE
#define INTERFACE IOrvProfAdmin
ORV_INTERFACE(IOrvProfAdmin, IUnknown) {
  ORV_INHERITED(ORV_IUNKNOWN_METHODS)
  ORV_IORVPROFADMIN_METHODS
};

/*
 * IOrvProfAdmin2: what profile administration answers a query for besides; it sees the stored services one by one,
 * those included that cannot be read (a half-written row, a damaged value). A profile with a row that cannot be read is
 * neither administered nor logged on to (MAPI_E_CALL_FAILED and the codes of a damaged value) until the row is deleted.
 * Both methods may be called from any thread at any time; arguments, codes and waiting are those of IOrvProfAdmin.
 *
 * GetStoredServiceTable  a row a service in the registry's order: the columns of GetMsgServiceTable (PT_ERROR in the
 *                        place of one that is not stored or cannot be read), PR_ORV_SERVICE_KEY_W and
 *                        PR_ORV_SERVICE_STATUS. The status is 0 for a row that can be used,
 *                        MAPI_E_MISSING_REQUIRED_COLUMN for one without PR_SERVICE_UID, MAPI_E_CORRUPT_DATA for one
 *                        whose UID has not 16 bytes or is not its key's name, else the failure of reading it. The
 *                        table is the caller's alone and released by him; *lppTable is null on failure.
 * DeleteStoredService    takes out the row in the key of that name, whatever lies in it; MAPI_E_NOT_FOUND without such a
 *                        key. The service is not asked and its files stay.
 */
#define ORV_IORVPROFADMIN2_METHODS                                                                           \
  ORV_METHOD(GetStoredServiceTable)(THIS_ LPCWSTR lpszProfileName, ULONG ulFlags, LPMAPITABLE* lppTable) PURE;\
  ORV_METHOD(DeleteStoredService)(THIS_ LPCWSTR lpszProfileName, LPCWSTR lpszKeyName, ULONG ulFlags) PURE;

#undef INTERFACE
#define INTERFACE IOrvProfAdmin2
ORV_INTERFACE(IOrvProfAdmin2, IOrvProfAdmin) {
  ORV_INHERITED(ORV_IUNKNOWN_METHODS)
  ORV_INHERITED(ORV_IORVPROFADMIN_METHODS)
  ORV_IORVPROFADMIN2_METHODS
};

/*
 * IOrvProfAdmin3: what profile administration answers a query for besides, to find and mend what keeps profiles from
 * being listed or used. Called, and answering, as IOrvProfAdmin2.
 *
 * GetStoredProfileTable  a row a key where profiles lie, PR_DISPLAY_NAME_W its name and PR_ORV_PROFILE_STATUS: 0, or
 *                        MAPI_E_STRING_TOO_LONG for a name of more than ORV_MAX_PROFILE_NAME characters, which is
 *                        no profile's and keeps all of them from being listed. The key "WAB" is not among them. The
 *                        table is the caller's alone; *lppTable is null on failure.
 * SetAsideStoredService  moves the row in the key of that name, whatever lies in it, out of the profile into the key
 *                        "Orv Damaged\<date>" beside that of the profiles, below the profile's name and its own;
 *                        where there is one already a number is put behind. Nothing is deleted before the copy is
 *                        complete. MAPI_E_NOT_FOUND without such a key, MAPI_E_NO_ACCESS for a row that can be read.
 *                        Unlike the other methods it finds the profile also while the profiles cannot be listed.
 */
#undef INTERFACE
#define INTERFACE IOrvProfAdmin3
ORV_INTERFACE(IOrvProfAdmin3, IOrvProfAdmin2) {
  ORV_INHERITED(ORV_IUNKNOWN_METHODS)
  ORV_INHERITED(ORV_IORVPROFADMIN_METHODS ORV_IORVPROFADMIN2_METHODS)
  ORV_METHOD(GetStoredProfileTable)(THIS_ ULONG ulFlags, LPMAPITABLE* lppTable) PURE;
  ORV_METHOD(SetAsideStoredService)(THIS_ LPCWSTR lpszProfileName, LPCWSTR lpszKeyName, ULONG ulFlags) PURE;
};

/*
 * IABServiceAdmin: the message services of one profile. A service is named by the 16 bytes of its
 * PR_SERVICE_UID; an unknown one is MAPI_E_NOT_FOUND. Changes are whole or not there, and programs wait for each
 * other, as for IOrvProfAdmin (MAPI_E_BUSY); nobody waits while an entry function runs.
 *
 * GetLastError         success, nothing written.
 * GetMsgServiceTable   a row a service, with PR_INSTANCE_KEY, PR_SERVICE_NAME_W, PR_PROVIDER_DISPLAY_W,
 *                      PR_DISPLAY_NAME_W, PR_SERVICE_DLL_NAME_W, PR_SERVICE_ENTRY_NAME,
 *                      PR_SERVICE_SUPPORT_FILES_W, PR_SERVICE_DELETE_FILES_W, PR_SERVICE_UID,
 *                      PR_RESOURCE_FLAGS. Rows are in the registry's order, except that the first table after
 *                      a creation begins with the new service. Each table is the caller's alone. Every
 *                      failure, MAPI_UNICODE missing included, is MAPI_E_CALL_FAILED with *lppTable null.
 * CreateMsgService     adds the catalogue's service of that name (with case; MAPI_E_NOT_FOUND) and calls its
 *                      entry function with MSG_SERVICE_CREATE, then with ORV_SERVICE_EXTRA_CONFIG unless
 *                      lpszExtraConfig is null or empty. A failure of either takes the service out again:
 *                      the function's own code, MAPI_E_NOT_FOUND without its library, MAPI_E_CALL_FAILED
 *                      without the function or when it throws. The display name counts where the catalogue
 *                      gives none; ulResourceFlags are added to the catalogue's. A single copy that is there
 *                      already: MAPI_E_COLLISION. While the entry function runs, other threads wait that
 *                      create or list services here or change the object's references.
 * DeleteMsgService     takes it out; the service is not asked and its files stay.
 * ConfigureMsgService  needs MAPI_UNICODE. With SERVICE_UI_ALLOWED or SERVICE_UI_ALWAYS: calls the entry
 *                      function with MSG_SERVICE_CONFIGURE and the values (none: null); the section used comes
 *                      back in *lppProfSect when that was null, whatever the function answers, and is the
 *                      caller's to release. Without: writes the values, of which there must be some, into
 *                      what is stored of the service.
 * OpenProfileSection   a fresh copy of the service's property set; *lppProfSect is null on failure.
 *                      lpInterface and ulFlags are not looked at.
 */
#undef INTERFACE
#define INTERFACE IABServiceAdmin
ORV_INTERFACE(IABServiceAdmin, IUnknown) {
  ORV_INHERITED(ORV_IUNKNOWN_METHODS)
  ORV_METHOD(GetLastError)(THIS_ HRESULT hResult, ULONG ulFlags, LPMAPIERROR* lppMAPIError) PURE;
  ORV_METHOD(GetMsgServiceTable)(THIS_ ULONG ulFlags, LPMAPITABLE* lppTable) PURE;
  ORV_METHOD(CreateMsgService)(THIS_ LPCWSTR lpszService, LPCWSTR lpszDisplayName, LPCWSTR lpszExtraConfig,
                               ULONG ulResourceFlags, ULONG_PTR ulUIParam, ULONG ulFlags) PURE;
  ORV_METHOD(DeleteMsgService)(THIS_ const MAPIUID* lpServiceUID) PURE;
  ORV_METHOD(ConfigureMsgService)(THIS_ const MAPIUID* lpServiceUID, ULONG_PTR ulUIParam, ULONG ulFlags,
                                  ULONG cValues, LPSPropValue lpProps, LPPROFSECT* lppProfSect) PURE;
  ORV_METHOD(OpenProfileSection)(THIS_ const MAPIUID* lpServiceUID, LPCIID lpInterface, ULONG ulFlags,
                                 LPPROFSECT* lppProfSect) PURE;
};

  /* clang-format on */

  /* ---- Exported functions (ours). Each has a type for callers that use GetProcAddress. ---- */

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Logs on to a profile. lpszProfileName is compared with case and ignored under MAPI_USE_DEFAULT. Reserved
 * arguments are null (else MAPI_E_NO_SUPPORT). lppAdrBook is optional; *lppSession is written on success
 * only. ulCallerContext: the first value that is not zero is kept for the process and handed to every
 * provider. MAPI_E_LOGON_FAILED: no such profile (with MAPI_LOGON_UI: MAPI_E_UNKNOWN_FLAGS, since there is no
 * logon dialog). One service that cannot be brought up fails the logon with its code. Only memory exhaustion
 * is turned into a code here: another exception of a provider passes on to the caller.
 */
typedef HRESULT(STDAPICALLTYPE ORVOPEN)(ULONG_PTR ulUIParam, LPCWSTR lpszProfileName, ULONG ulFlags,
                                        LPVOID lpReserved1, LPVOID lpReserved2, LPVOID lpReserved3,
                                        LPADRBOOK* lppAdrBook, LPORVSESSION* lppSession,
                                        ULONG_PTR ulCallerContext);
typedef ORVOPEN* LPORVOPEN;
ORVOPEN OrvOpen;

/*
 * Hands out the profile administration object. ulCallerContext as above. *lppProfAdmin is written on success
 * only.
 */
typedef HRESULT(STDAPICALLTYPE ORVADMINPROFILES)(ULONG ulFlags, LPORVPROFADMIN* lppProfAdmin,
                                                 ULONG_PTR ulCallerContext);
typedef ORVADMINPROFILES* LPORVADMINPROFILES;
ORVADMINPROFILES OrvAdminProfiles;

/*
 * A zero-filled root buffer of cbSize bytes (0 is allowed). On failure *lppBuffer is null:
 * MAPI_E_NOT_ENOUGH_MEMORY.
 */
ALLOCATEBUFFER OrvAllocateBuffer;

/*
 * A zero-filled buffer that is freed with the root lpObject. On failure *lppBuffer is null:
 * MAPI_E_INVALID_PARAMETER when lpObject is no root (a buffer of this very call is none),
 * MAPI_E_NOT_ENOUGH_MEMORY. One chain must not be extended or freed by two threads at once.
 */
ALLOCATEMORE OrvAllocateMore;

/*
 * Frees a root and all that hangs off it. Anything else, null included, is MAPI_E_INVALID_PARAMETER and
 * stays.
 */
FREEBUFFER OrvFreeBuffer;

/* Frees a row set with the property array of each row. Null does nothing. */
FREEPROWS OrvFreeProws;

/* Frees an address list with the property array of each entry. Null does nothing. */
FREEPADRLIST OrvFreePadrlist;

/*
 * Opens the user's own details, one set for all profiles, kept by SaveChanges. lpInterface must be null:
 * every other value is MAPI_E_INTERFACE_NOT_SUPPORTED. *lpulObjType becomes MAPI_MAILUSER.
 */
typedef HRESULT(STDAPICALLTYPE ORVOPENUSERINFO)(LPCIID lpInterface, ULONG* lpulObjType,
                                                LPMAILUSER* lppMailUser);
typedef ORVOPENUSERINFO* LPORVOPENUSERINFO;
ORVOPENUSERINFO OrvOpenUserInfo;

/*
 * Shows the address dialog over an address book. *lppAdrList (null for none) fills the wells and is freed and
 * replaced on success; on failure it stays the caller's, though long names in it may have been shortened.
 * MAPI_E_USER_CANCEL: cancelled; MAPI_E_INVALID_PARAMETER: a bad pointer (texts, titles, identifiers and
 * names of the list included), more than three wells, wells without lpulDestComps; MAPI_E_CALL_FAILED: the
 * dialog cannot be shown or one is open already. Call it on a thread that has a message queue. A session that
 * is released meanwhile on another thread ends when the dialog is closed, which works as ever until then.
 */
typedef HRESULT(STDAPICALLTYPE ORVADDRESS)(ULONG_PTR ulUIParam, LPADRBOOK lpAdrBook, LPADRPARM lpAdrParms,
                                           LPADRLIST* lppAdrList);
typedef ORVADDRESS* LPORVADDRESS;
ORVADDRESS OrvAddress;

/*
 * Opens the main help in a window of its own over ulUIParam (0: over none) and returns at once; the window
 * stays until the user closes it or the process ends. MAPI_E_NOT_FOUND: there is no help file, or HTML Help
 * is missing or shows nothing. Call it on one thread at a time, which goes on dispatching messages.
 */
typedef HRESULT(STDAPICALLTYPE ORVSHOWHELP)(ULONG_PTR ulUIParam);
typedef ORVSHOWHELP* LPORVSHOWHELP;
ORVSHOWHELP OrvShowHelp;

/*
 * What a catalogue offers, and every line that is left out. lpszFile null: the catalogue of this library; MAPI_UNICODE
 * is required. *lppszFile (optional) becomes the file's full path, one root buffer, also where the reading then fails,
 * null where no file is known. Both row sets are the caller's, freed with OrvFreeProws, and null on failure:
 * MAPI_E_CALL_FAILED without the file, MAPI_E_INVALID_PARAMETER without anything in its [Services].
 *
 * lppServices  a row a service, in the list's order: the columns of GetMsgServiceTable (a null value for what the file
 *              does not set), PR_ORV_CATALOGUE_LINE of its line in [Services] and PR_ORV_CATALOGUE_DEFAULT.
 * lppLeftOut   a row a line that offers nothing: PR_ORV_CATALOGUE_LINE, PR_ORV_CATALOGUE_SECTION_W,
 *              PR_SERVICE_NAME_W (empty where the line has none), PR_ORV_CATALOGUE_REASON, PR_ORV_CATALOGUE_STATUS,
 *              PR_ORV_CATALOGUE_TEXT_W. One line may have several reasons.
 * The status tells what comes of the line: MAPI_E_TOO_BIG keeps this one service from profiles,
 * MAPI_E_UNABLE_TO_COMPLETE is no hindrance to the library (a missing support file, a default service that is not
 * offered), and with every other code CreateMsgService, or CreateProfile with the default services, refuses the whole
 * list with that code.
 */
typedef HRESULT(STDAPICALLTYPE ORVOPENCATALOGUE)(LPCWSTR lpszFile, ULONG ulFlags, LPWSTR* lppszFile,
                                                 LPSRowSet* lppServices, LPSRowSet* lppLeftOut);
typedef ORVOPENCATALOGUE* LPORVOPENCATALOGUE;
ORVOPENCATALOGUE OrvOpenCatalogue;

#ifdef __cplusplus
}
#endif

#include "orv/orvcmacros.h"

#endif
