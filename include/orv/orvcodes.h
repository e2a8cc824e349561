/*
 * Result codes of the address book interfaces: published names and values.
 *
 * Codes with the top bit set are failures, MAPI_W_* are successes with a remark; FAILED() and SUCCEEDED()
 * tell them apart.
 */
#ifndef ORV_ORVCODES_H
#define ORV_ORVCODES_H

#include <windows.h>

#define SUCCESS_SUCCESS ((HRESULT)0)

/* General codes shared with the operating system */
#define MAPI_E_CALL_FAILED ((HRESULT)0x80004005)       /* failed for a reason without a code of its own */
#define MAPI_E_NOT_ENOUGH_MEMORY ((HRESULT)0x8007000E) /* memory exhausted */
#define MAPI_E_INVALID_PARAMETER ((HRESULT)0x80070057) /* a pointer, count or value that cannot be used */
#define MAPI_E_INTERFACE_NOT_SUPPORTED ((HRESULT)0x80004002) /* the object has no such interface */
#define MAPI_E_NO_ACCESS ((HRESULT)0x80070005) /* exists already, is read-only, or is not held */

/* Codes of any object */
#define MAPI_E_NO_SUPPORT ((HRESULT)0x80040102)           /* the object never does this */
#define MAPI_E_BAD_CHARWIDTH ((HRESULT)0x80040103)        /* MAPI_UNICODE missing from the flags */
#define MAPI_E_STRING_TOO_LONG ((HRESULT)0x80040105)      /* a name over its limit */
#define MAPI_E_UNKNOWN_FLAGS ((HRESULT)0x80040106)        /* a flag that the call does not define */
#define MAPI_E_INVALID_ENTRYID ((HRESULT)0x80040107)      /* too short, null, or of nobody who opens it */
#define MAPI_E_INVALID_OBJECT ((HRESULT)0x80040108)       /* lacks what every such object has */
#define MAPI_E_OBJECT_CHANGED ((HRESULT)0x80040109)       /* changed by somebody else since it was opened */
#define MAPI_E_OBJECT_DELETED ((HRESULT)0x8004010A)       /* gone since it was opened */
#define MAPI_E_BUSY ((HRESULT)0x8004010B)                 /* in use, try again */
#define MAPI_E_NOT_ENOUGH_DISK ((HRESULT)0x8004010D)      /* no room to store it */
#define MAPI_E_NOT_ENOUGH_RESOURCES ((HRESULT)0x8004010E) /* some limit other than memory */
#define MAPI_E_NOT_FOUND ((HRESULT)0x8004010F)       /* no such property, row, profile, service or file */
#define MAPI_E_VERSION ((HRESULT)0x80040110)         /* made for another version */
#define MAPI_E_LOGON_FAILED ((HRESULT)0x80040111)    /* no profile to log on to */
#define MAPI_E_SESSION_LIMIT ((HRESULT)0x80040112)   /* too many sessions */
#define MAPI_E_USER_CANCEL ((HRESULT)0x80040113)     /* a dialog was cancelled, or could not be shown */
#define MAPI_E_UNABLE_TO_ABORT ((HRESULT)0x80040114) /* cannot be stopped any more */
#define MAPI_E_NETWORK_ERROR ((HRESULT)0x80040115)   /* a provider cannot reach its server */
#define MAPI_E_DISK_ERROR ((HRESULT)0x80040116)      /* reading or writing a file failed */
#define MAPI_E_TOO_COMPLEX ((HRESULT)0x80040117)     /* a restriction or sort order that is too much */
#define MAPI_E_BAD_COLUMN ((HRESULT)0x80040118)      /* the table cannot show or sort by it */
#define MAPI_E_EXTENDED_ERROR ((HRESULT)0x80040119)  /* GetLastError tells more */
#define MAPI_E_COMPUTED ((HRESULT)0x8004011A)        /* the property is the object's own and cannot be set */
#define MAPI_E_CORRUPT_DATA ((HRESULT)0x8004011B)    /* stored data is damaged */
#define MAPI_E_UNCONFIGURED ((HRESULT)0x8004011C)    /* a provider lacks settings that only a user can give */
#define MAPI_E_FAILONEPROVIDER ((HRESULT)0x8004011D) /* leave this provider out */
#define MAPI_E_UNKNOWN_CPID ((HRESULT)0x8004011E)    /* code page not known */
#define MAPI_E_UNKNOWN_LCID ((HRESULT)0x8004011F)    /* locale not known */
#define MAPI_E_PASSWORD_CHANGE_REQUIRED ((HRESULT)0x80040120)
#define MAPI_E_PASSWORD_EXPIRED ((HRESULT)0x80040121)
#define MAPI_E_INVALID_WORKSTATION_ACCOUNT ((HRESULT)0x80040122)
#define MAPI_E_INVALID_ACCESS_TIME ((HRESULT)0x80040123)
#define MAPI_E_ACCOUNT_DISABLED ((HRESULT)0x80040124)

/* Codes of sessions and service providers */
#define MAPI_E_END_OF_SESSION ((HRESULT)0x80040200)          /* the session that made the object is gone */
#define MAPI_E_UNKNOWN_ENTRYID ((HRESULT)0x80040201)         /* entry identifiers that cannot be compared */
#define MAPI_E_MISSING_REQUIRED_COLUMN ((HRESULT)0x80040202) /* a row or recipient lacks a property */
#define MAPI_W_NO_SERVICE ((HRESULT)0x00040203)              /* done, but the service is not there */

/* Codes of properties */
#define MAPI_E_BAD_VALUE ((HRESULT)0x80040301)       /* a value or line against the rules */
#define MAPI_E_INVALID_TYPE ((HRESULT)0x80040302)    /* no such property type */
#define MAPI_E_TYPE_NO_SUPPORT ((HRESULT)0x80040303) /* the object does not keep this type */
#define MAPI_E_UNEXPECTED_TYPE ((HRESULT)0x80040304) /* not the type that the property has */
#define MAPI_E_TOO_BIG ((HRESULT)0x80040305)         /* too large to hand over in one piece */
#define MAPI_E_DECLINE_COPY ((HRESULT)0x80040306)    /* the provider leaves the copying to its caller */
#define MAPI_E_UNEXPECTED_ID ((HRESULT)0x80040307)   /* a named property of that number */
#define MAPI_W_ERRORS_RETURNED ((HRESULT)0x00040380) /* some values came back as PT_ERROR */

/* Codes of tables */
#define MAPI_E_UNABLE_TO_COMPLETE ((HRESULT)0x80040400) /* gave up on the way */
#define MAPI_E_TIMEOUT ((HRESULT)0x80040401)            /* took longer than allowed */
#define MAPI_E_TABLE_EMPTY ((HRESULT)0x80040402)        /* no row from which columns could be told */
#define MAPI_E_TABLE_TOO_BIG ((HRESULT)0x80040403)      /* more rows than asked for */
#define MAPI_E_INVALID_BOOKMARK ((HRESULT)0x80040405)
#define MAPI_W_POSITION_CHANGED ((HRESULT)0x00040481) /* the row of the bookmark moved */
#define MAPI_W_APPROX_COUNT ((HRESULT)0x00040482)     /* the count is a guess */

/* Codes of transports and stores, for providers that pass on what they were told */
#define MAPI_E_WAIT ((HRESULT)0x80040500)           /* come again */
#define MAPI_E_CANCEL ((HRESULT)0x80040501)         /* the sender or user stopped it */
#define MAPI_E_NOT_ME ((HRESULT)0x80040502)         /* somebody else handles it */
#define MAPI_W_CANCEL_MESSAGE ((HRESULT)0x00040580) /* stop this message */
#define MAPI_E_CORRUPT_STORE ((HRESULT)0x80040600)  /* the file of entries is damaged */
#define MAPI_E_NOT_IN_QUEUE ((HRESULT)0x80040601)
#define MAPI_E_NO_SUPPRESS ((HRESULT)0x80040602)
#define MAPI_E_COLLISION ((HRESULT)0x80040604)          /* exists already: a UID, a single-copy service */
#define MAPI_E_NOT_INITIALIZED ((HRESULT)0x80040605)    /* a method came before initialisation */
#define MAPI_E_NON_STANDARD ((HRESULT)0x80040606)       /* done in a way of its own */
#define MAPI_E_NO_RECIPIENTS ((HRESULT)0x80040607)      /* nobody to send to */
#define MAPI_E_SUBMITTED ((HRESULT)0x80040608)          /* on its way already */
#define MAPI_E_HAS_FOLDERS ((HRESULT)0x80040609)        /* containers are still below it */
#define MAPI_E_HAS_MESSAGES ((HRESULT)0x8004060A)       /* entries are still in it */
#define MAPI_E_FOLDER_CYCLE ((HRESULT)0x8004060B)       /* a container inside itself */
#define MAPI_W_PARTIAL_COMPLETION ((HRESULT)0x00040680) /* some of the entries were left out */

/* Codes of name resolution */
#define MAPI_E_AMBIGUOUS_RECIP ((HRESULT)0x80040700) /* more than one entry has the name */

#endif
