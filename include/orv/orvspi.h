/*
 * The provider's side: what a provider library exports and what it is given.
 *
 * A provider is one library beside the address book library, named by its row in the service catalogue. It
 * exports ABProviderOpen, undecorated, and a service entry function whose name the catalogue tells. Its file
 * name is a bare one and its whole path has fewer than 260 characters, else it is not found. Providers never
 * link to the library: whatever they need comes in through the arguments below. What they throw ends as
 * MAPI_E_CALL_FAILED, memory exhaustion as MAPI_E_NOT_ENOUGH_MEMORY; only what else ABProviderOpen throws
 * passes on to the caller of OrvOpen.
 */
#ifndef ORV_ORVSPI_H
#define ORV_ORVSPI_H

#include "orv/orvapi.h"

/* The tool takes tables of methods apart. */
/* clang-format off */

/*
 * IOrvSupport: given to each provider call, valid during the call; a provider that wants it longer adds a
 * reference.
 *
 * GetLastError         success, nothing written.
 * GetMemAllocRoutines  addresses of OrvAllocateBuffer, OrvAllocateMore and OrvFreeBuffer. All three pointers
 *                      are required: nothing is written when one is bad (MAPI_E_INVALID_PARAMETER).
 * SetProviderUID       entry identifiers whose bytes 4 to 19 are this MAPIUID come to this provider from now
 *                      on. May be called for several UIDs, on any thread; others may route identifiers
 *                      meanwhile. The same one twice: MAPI_E_COLLISION; in a service entry call:
 *                      MAPI_E_NO_SUPPORT; after the provider was unloaded: MAPI_E_INVALID_PARAMETER. Where two
 *                      providers register one UID, the one loaded later is asked.
 * Reserved7, Reserved10
 *                      MAPI_E_NO_SUPPORT.
 * DoCopyTo             IMAPIProp::CopyTo between any two objects that have IMAPIProp; lpSrcInterface and
 *                      lpDestInterface name what the pointers are: IMAPIProp, IProfSect, IMailUser, IDistList
 *                      or IABContainer, else MAPI_E_INTERFACE_NOT_SUPPORTED (IMAPIContainer as destination:
 *                      MAPI_E_NO_SUPPORT). An entry is never copied onto itself: MAPI_E_NO_ACCESS. Binary and
 *                      object properties are left out, except that the contents of a container are copied
 *                      when PR_CONTAINER_CONTENTS is among the tags. Excluded interfaces, window and progress
 *                      object are not looked at; lppProblems may be null.
 * DoCopyProps          the same for the tags named; they are required.
 */
#define ORV_IORVSUPPORT_METHODS                                                                              \
  ORV_METHOD(GetLastError)(THIS_ HRESULT hResult, ULONG ulFlags, LPMAPIERROR* lppMAPIError) PURE;            \
  ORV_METHOD(GetMemAllocRoutines)(THIS_ LPALLOCATEBUFFER* lppAllocateBuffer, LPALLOCATEMORE* lppAllocateMore,\
                                  LPFREEBUFFER* lppFreeBuffer) PURE;                                         \
  ORV_METHOD(SetProviderUID)(THIS_ const MAPIUID* lpProviderUID) PURE;                                       \
  ORV_METHOD(Reserved7)(THIS) PURE;                                                                          \
  ORV_METHOD(DoCopyTo)(THIS_ LPCIID lpSrcInterface, LPVOID lpSrcObj, ULONG ciidExclude, LPCIID rgiidExclude, \
                       LPSPropTagArray lpExcludeProps, ULONG_PTR ulUIParam, LPMAPIPROGRESS lpProgress,       \
                       LPCIID lpDestInterface, LPVOID lpDestObj, ULONG ulFlags,                              \
                       LPSPropProblemArray* lppProblems) PURE;                                               \
  ORV_METHOD(DoCopyProps)(THIS_ LPCIID lpSrcInterface, LPVOID lpSrcObj, LPSPropTagArray lpIncludeProps,      \
                          ULONG_PTR ulUIParam, LPMAPIPROGRESS lpProgress, LPCIID lpDestInterface,            \
                          LPVOID lpDestObj, ULONG ulFlags, LPSPropProblemArray* lppProblems) PURE;           \
  ORV_METHOD(Reserved10)(THIS) PURE;

#undef INTERFACE
#define INTERFACE IOrvSupport
ORV_INTERFACE(IOrvSupport, IUnknown) {
  ORV_INHERITED(ORV_IUNKNOWN_METHODS)
  ORV_IORVSUPPORT_METHODS
};

/*
 * IOrvSupport2: what the support object of a provider answers a query for besides, in a service entry call too. Both
 * methods may be called on any thread, a provider's own included: MAPI_E_NO_SUPPORT in a service entry call,
 * MAPI_E_END_OF_SESSION before the address book exists (in ABProviderOpen, and until the logon is over) and once the
 * session's end has begun. That end waits for a call that is inside, so a provider that waits for its thread in its
 * last Release is not kept waiting by one.
 *
 * OpenEntry      IAddrBook::OpenEntry of the session: any identifier of it, those of other providers too.
 * ReportProblem  tells whoever uses the session of something that went wrong and that no call's result tells: a code
 *                and a text, of which ORV_MAX_PROBLEM_TEXT characters are kept (IOrvSession2::GetProblems). The text
 *                is required.
 */
#undef INTERFACE
#define INTERFACE IOrvSupport2
ORV_INTERFACE(IOrvSupport2, IOrvSupport) {
  ORV_INHERITED(ORV_IUNKNOWN_METHODS)
  ORV_INHERITED(ORV_IORVSUPPORT_METHODS)
  ORV_METHOD(OpenEntry)(THIS_ ULONG cbEntryID, LPENTRYID lpEntryID, LPCIID lpInterface, ULONG ulFlags,
                        ULONG* lpulObjType, LPUNKNOWN* lppUnk) PURE;
  ORV_METHOD(ReportProblem)(THIS_ HRESULT hResult, LPCWSTR lpszText) PURE;
};
  /* clang-format on */

#ifdef __cplusplus
extern "C" {
#endif

/*
 * ABProviderOpen: called at logon, once a service. hResource is the library's language resource module (null
 * when there is none), an ordinary module whose file name may be asked. lpProfSect is the service's profile
 * section; keep a reference to use it later. ulFlags are the logon flags with MAPI_UNICODE. The three
 * addresses stay valid while the library is loaded.
 *
 * On success *lppProvider is the provider object, with one reference for the library. It has the method order
 * of IAddrBook; the library calls:
 * - GetProps for PR_DISPLAY_NAME_W, PR_ENTRYID, PR_OBJECT_TYPE, PR_CONTAINER_FLAGS and PR_DEPTH: the
 *   provider's row in the root container; PR_ENTRYID must open, through OpenEntry, the provider's own root
 *   container;
 * - OpenEntry, Advise, Unadvise, NewEntry, Details, PrepareRecips, with the client's arguments. PrepareRecips
 *   comes to every provider, with an empty list too.
 * A failure fails the logon, and *lppProvider is not looked at. The object is released, then the module
 * freed, at the end of the session. Calls may come on any of the client's threads, several at once, but none
 * is under way any more when the session ends: it waits for them. Then Unadvise comes for what is still
 * registered, after which that sink is not notified any more. Threads of the provider's own must have ended
 * when the last Release returns.
 */
typedef HRESULT(STDAPICALLTYPE ABPROVIDEROPEN)(HINSTANCE hResource, LPORVSUPPORT lpSupport,
                                               LPPROFSECT lpProfSect, ULONG_PTR ulUIParam, ULONG ulFlags,
                                               LPALLOCATEBUFFER lpAllocateBuffer,
                                               LPALLOCATEMORE lpAllocateMore, LPFREEBUFFER lpFreeBuffer,
                                               LPADRBOOK* lppProvider, ULONG_PTR ulCallerContext);
typedef ABPROVIDEROPEN* LPABPROVIDEROPEN;

/* Name under which a provider library exports it (ours). */
#define ORV_PROVIDER_OPEN_NAME "ABProviderOpen"

/*
 * Service entry function: called to install, create, configure or remove a service; the library is loaded for
 * the call and freed after it. ulContext is one of MSG_SERVICE_INSTALL, _CREATE, _CONFIGURE, _UNINSTALL and
 * ORV_SERVICE_EXTRA_CONFIG; an unknown one deserves MAPI_E_NO_SUPPORT.
 *
 * MSG_SERVICE_INSTALL, MSG_SERVICE_UNINSTALL: no values, no section; flags MAPI_UNICODE | SERVICE_UI_ALLOWED.
 * MSG_SERVICE_CREATE: no values; the section is that of the new service. A failure takes it out again.
 * MSG_SERVICE_CONFIGURE: the caller's values and flags; SERVICE_UI_ALWAYS asks for the configuration window.
 * ORV_SERVICE_EXTRA_CONFIG: one value, its Value.lpszW the extra configuration string, its tag 0 on purpose.
 *
 * What the function stores in the section is kept once it called SaveChanges. MAPI_E_USER_CANCEL shows no
 * message.
 */
typedef HRESULT(STDAPICALLTYPE ORVSERVICEENTRY)(HINSTANCE hResource, ULONG_PTR ulUIParam, ULONG ulFlags,
                                                ULONG ulContext, ULONG cValues, LPSPropValue lpProps,
                                                LPPROFSECT lpProfSect, LPORVSUPPORT lpSupport,
                                                ULONG_PTR ulCallerContext);
typedef ORVSERVICEENTRY* LPORVSERVICEENTRY;

#ifdef __cplusplus
}
#endif

#endif
