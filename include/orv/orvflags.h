/*
 * Constants of the address book interfaces: object types, flags of methods, message services.
 *
 * Everything here is a published name with its published value, unless its comment says "ours". One bit may
 * have several names: which one is meant depends on the method that takes it.
 */
#ifndef ORV_ORVFLAGS_H
#define ORV_ORVFLAGS_H

#include <windows.h>

/* ---- What objects are ---- */

/* Object types, the values of PR_OBJECT_TYPE */
#define MAPI_STORE ((ULONG)0x00000001)
#define MAPI_ADDRBOOK ((ULONG)0x00000002)
#define MAPI_FOLDER ((ULONG)0x00000003)
#define MAPI_ABCONT ((ULONG)0x00000004)
#define MAPI_MESSAGE ((ULONG)0x00000005)
#define MAPI_MAILUSER ((ULONG)0x00000006)
#define MAPI_ATTACH ((ULONG)0x00000007)
#define MAPI_DISTLIST ((ULONG)0x00000008)
#define MAPI_PROFSECT ((ULONG)0x00000009)
#define MAPI_STATUS ((ULONG)0x0000000A)
#define MAPI_SESSION ((ULONG)0x0000000B)
#define MAPI_FORMINFO ((ULONG)0x0000000C)

/* Display types, the values of PR_DISPLAY_TYPE: contents tables, then hierarchy tables */
#define DT_MAILUSER ((ULONG)0x00000000)
#define DT_DISTLIST ((ULONG)0x00000001)
#define DT_FORUM ((ULONG)0x00000002)
#define DT_AGENT ((ULONG)0x00000003)
#define DT_ORGANIZATION ((ULONG)0x00000004)
#define DT_PRIVATE_DISTLIST ((ULONG)0x00000005)
#define DT_REMOTE_MAILUSER ((ULONG)0x00000006)
#define DT_MODIFIABLE ((ULONG)0x00010000)
#define DT_GLOBAL ((ULONG)0x00020000)
#define DT_LOCAL ((ULONG)0x00030000)
#define DT_WAN ((ULONG)0x00040000)
#define DT_NOT_SPECIFIC ((ULONG)0x00050000)
#define DT_FOLDER ((ULONG)0x01000000)
#define DT_FOLDER_LINK ((ULONG)0x02000000)
#define DT_FOLDER_SPECIAL ((ULONG)0x04000000)

/* Container flags, the bits of PR_CONTAINER_FLAGS */
#define AB_RECIPIENTS ((ULONG)0x00000001)    /* entries can be recipients: default directory, search path */
#define AB_SUBCONTAINERS ((ULONG)0x00000002) /* may have containers below it */
#define AB_MODIFIABLE ((ULONG)0x00000004)    /* entries can be added: personal address book */
#define AB_UNMODIFIABLE ((ULONG)0x00000008)
#define AB_FIND_ON_OPEN ((ULONG)0x00000010) /* too large to list before a search was made */
#define AB_NOT_DEFAULT ((ULONG)0x00000020)  /* never the default directory */

/* Access, the bits of PR_ACCESS and PR_ACCESS_LEVEL */
#define MAPI_ACCESS_MODIFY ((ULONG)0x00000001)
#define MAPI_ACCESS_READ ((ULONG)0x00000002)
#define MAPI_ACCESS_DELETE ((ULONG)0x00000004)
#define MAPI_ACCESS_CREATE_HIERARCHY ((ULONG)0x00000008)
#define MAPI_ACCESS_CREATE_CONTENTS ((ULONG)0x00000010)
#define MAPI_ACCESS_CREATE_ASSOCIATED ((ULONG)0x00000020)

/* ---- Flags of methods ---- */

/* Strings in and out are UTF-16, always; methods that require the flag answer MAPI_E_BAD_CHARWIDTH without
 * it. */
#define MAPI_UNICODE ((ULONG)0x80000000)

/* OpenEntry, OpenProperty, OpenProfileSection */
#define MAPI_MODIFY ((ULONG)0x00000001)
#define MAPI_CREATE ((ULONG)0x00000002)
#define MAPI_DEFERRED_ERRORS ((ULONG)0x00000008)
#define MAPI_BEST_ACCESS ((ULONG)0x00000010)

/* SaveChanges */
#define KEEP_OPEN_READONLY ((ULONG)0x00000001)
#define KEEP_OPEN_READWRITE ((ULONG)0x00000002)
#define FORCE_SAVE ((ULONG)0x00000004)

/* CopyTo, CopyProps */
#define MAPI_MOVE ((ULONG)0x00000001)
#define MAPI_NOREPLACE ((ULONG)0x00000002) /* values that the destination has stay */
#define MAPI_DECLINE_OK ((ULONG)0x00000004)

/* CopyTo, CopyProps, CopyEntries, ResolveName, CreateProfile: the call may show a window */
#define MAPI_DIALOG ((ULONG)0x00000008)

/* GetNamesFromIDs */
#define MAPI_NO_STRINGS ((ULONG)0x00000001)
#define MAPI_NO_IDS ((ULONG)0x00000002)

/* GetContentsTable */
#define MAPI_ASSOCIATED ((ULONG)0x00000040)

/* GetHierarchyTable: containers of every level, PR_DEPTH telling which */
#define CONVENIENT_DEPTH ((ULONG)0x00000001)

/* SetSearchCriteria and GetSearchCriteria */
#define STOP_SEARCH ((ULONG)0x00000001)
#define RESTART_SEARCH ((ULONG)0x00000002)
#define RECURSIVE_SEARCH ((ULONG)0x00000004)
#define SHALLOW_SEARCH ((ULONG)0x00000008)
#define FOREGROUND_SEARCH ((ULONG)0x00000010)
#define BACKGROUND_SEARCH ((ULONG)0x00000020)
#define SEARCH_RUNNING ((ULONG)0x00000001)
#define SEARCH_REBUILD ((ULONG)0x00000002)
#define SEARCH_RECURSIVE ((ULONG)0x00000004)
#define SEARCH_FOREGROUND ((ULONG)0x00000008)

/* CreateEntry */
#define CREATE_CHECK_DUP_STRICT ((ULONG)0x00000001)
#define CREATE_CHECK_DUP_LOOSE ((ULONG)0x00000002)
#define CREATE_REPLACE ((ULONG)0x00000004)
#define CREATE_MERGE ((ULONG)0x00000008)

/* CreateOneOff */
#define MAPI_SEND_NO_RICH_INFO ((ULONG)0x00010000)

/* Progress */
#define MAPI_TOP_LEVEL ((ULONG)0x00000001)

/* Logon (OrvOpen); a provider receives the same bits in ABProviderOpen */
#define MAPI_LOGON_UI ((ULONG)0x00000001)
#define MAPI_NEW_SESSION ((ULONG)0x00000002)
#define MAPI_USE_DEFAULT ((ULONG)0x00000040) /* the default profile, whatever name is given */
#define AB_NO_DIALOG ((ULONG)0x00010000)     /* the provider must not show a window */

/* Address, Details; ADRPARM.ulFlags */
#define DIALOG_MODAL ((ULONG)0x00000001)
#define DIALOG_SDI ((ULONG)0x00000002)
#define DIALOG_OPTIONS ((ULONG)0x00000004)
#define ADDRESS_ONE ((ULONG)0x00000008) /* exactly one recipient, no wells */
#define AB_SELECTONLY ((ULONG)0x00000010)
#define AB_RESOLVE ((ULONG)0x00000020)

/* CreateProfile */
#define MAPI_DEFAULT_SERVICES ((ULONG)0x00000001) /* with the catalogue's default services */

/* ---- Message services ---- */

/* Bits of PR_RESOURCE_FLAGS */
#define SERVICE_DEFAULT_STORE ((ULONG)0x00000001)
#define SERVICE_SINGLE_COPY ((ULONG)0x00000002) /* at most once a profile */
#define SERVICE_CREATE_WITH_STORE ((ULONG)0x00000004)
#define SERVICE_PRIMARY_IDENTITY ((ULONG)0x00000008)
#define SERVICE_NO_PRIMARY_IDENTITY ((ULONG)0x00000020)
#define ORV_SERVICE_NOT_REMOVABLE ((ULONG)0x00010000)    /* ours: the dialog offers no Remove */
#define ORV_SERVICE_NOT_CONFIGURABLE ((ULONG)0x00020000) /* ours: the dialog offers no Configure */

/* Flags of CreateMsgService, ConfigureMsgService and of a service entry function */
#define UI_READONLY ((ULONG)0x00000001)
#define SERVICE_UI_ALWAYS ((ULONG)0x00000002) /* show the window even when nothing is missing */
#define UI_SERVICE ((ULONG)0x00000002)
#define UI_CURRENT_PROVIDER_FIRST ((ULONG)0x00000004)
#define SERVICE_UI_ALLOWED ((ULONG)0x00000010) /* a window may be shown when something is missing */
#define SERVICE_LOGON_FAILED ((ULONG)0x00000020)

/* Contexts of a service entry function */
#define MSG_SERVICE_INSTALL ((ULONG)0x00000001)   /* once, when the service comes into the catalogue */
#define MSG_SERVICE_CREATE ((ULONG)0x00000002)    /* the service was put into a profile */
#define MSG_SERVICE_CONFIGURE ((ULONG)0x00000003) /* change its settings */
#define MSG_SERVICE_DELETE ((ULONG)0x00000004)    /* taken out of a profile; the library never calls it */
#define MSG_SERVICE_UNINSTALL ((ULONG)0x00000005) /* once, before the service leaves the catalogue */
#define MSG_SERVICE_PROVIDER_CREATE ((ULONG)0x00000006)
#define MSG_SERVICE_PROVIDER_DELETE ((ULONG)0x00000007)
#define ORV_SERVICE_EXTRA_CONFIG ((ULONG)0x00000010) /* ours: apply the extra configuration string */

/* Ours: why a line of the catalogue is left out (PR_ORV_CATALOGUE_REASON) */
#define ORV_CATALOGUE_BAD_LINE ((ULONG)0x00000001)   /* not "name=text" */
#define ORV_CATALOGUE_DUPLICATE ((ULONG)0x00000002)  /* the name stands further up in the same list */
#define ORV_CATALOGUE_NO_SECTION ((ULONG)0x00000003) /* no section of the service's name, or an empty one */
#define ORV_CATALOGUE_TOO_BIG ((ULONG)0x00000004)    /* the section is longer than 1,048,576 characters */
#define ORV_CATALOGUE_BAD_FORMAT ((ULONG)0x00000005) /* a value with another directive than %c and %% */
#define ORV_CATALOGUE_TOO_LONG ((ULONG)0x00000006) /* a library's name over 15 characters, a list over 259 */
#define ORV_CATALOGUE_MISSING_FILE ((ULONG)0x00000007) /* a support file is not beside the library */
#define ORV_CATALOGUE_NOT_OFFERED ((ULONG)0x00000008)  /* a default service that [Services] does not list */

#define ORV_MAX_PROFILE_NAME 64  /* ours: characters of a profile name, terminator not counted */
#define ORV_MAX_PROBLEMS 100     /* ours: problems that a session keeps */
#define ORV_MAX_PROBLEM_TEXT 512 /* ours: characters of a problem's text, terminator not counted */

#endif
