/*
 * Address books that are kept in a file: import and export, what was deleted, health. Everything here is ours.
 *
 * A container offers it: IMAPIProp::OpenProperty of PR_ORV_CONTACTS for IID_IOrvContacts, with MAPI_MODIFY for what
 * changes the book (else MAPI_E_NO_ACCESS there). A container that keeps no such book answers MAPI_E_NO_SUPPORT or
 * MAPI_E_INTERFACE_NOT_SUPPORTED. What concerns a file that no profile names goes through two functions that the
 * provider's library exports.
 *
 * A container whose file cannot be read says so behind its name: PR_DISPLAY_NAME is "one (damaged)".
 * PR_TRANSMITABLE_DISPLAY_NAME of it, and of its row in a hierarchy table, is the plain name at all times.
 * PR_ORV_BOOK_STATUS is why it cannot be read, 0 where it can. One that may be read only has AB_UNMODIFIABLE in its
 * PR_CONTAINER_FLAGS and 0 there, and every change is MAPI_E_NO_ACCESS.
 */
#ifndef ORV_ORVBOOK_H
#define ORV_ORVBOOK_H

#include <objidl.h>

#include "orv/orv.h"

ORV_DEFINE_IID(IID_IOrvContacts, 0x000203A8);
ORV_DEFINE_IID(IID_IOrvContactReport, 0x000203A9);

/* Of a container: the object of this header, through OpenProperty. It is not in its list of properties. */
#define PR_ORV_CONTACTS PROP_TAG(PT_OBJECT, 0x6610)
/* Rows of the table of deleted entries: when each was deleted. */
#define PR_ORV_DELETED_TIME PROP_TAG(PT_SYSTIME, 0x6611)
/* Of an entry: its UID, by which importing knows it again; nobody may set it. */
#define PR_ORV_CONTACT_UID_W PROP_TAG(PT_UNICODE, 0x6612)
/* Of an entry: other bytes after every change of it. */
#define PR_ORV_CONTACT_VERSION PROP_TAG(PT_BINARY, 0x6613)
/* Of an entry: the identifier that means all of it, also where it was opened by one of its numbers. */
#define PR_ORV_CONTACT_ENTRYID PROP_TAG(PT_BINARY, 0x6616)
/* Of an entry: all that is known of it, as one card of vCard 4.0, which a copy in another book is made of. Set in an
   entry it replaces the whole but for the UID; what is set beside it and differs from the card is set as well. */
#define PR_ORV_CONTACT_CARD_W PROP_TAG(PT_UNICODE, 0x6617)
/* Profile section: the UID of the book that was last found at PR_ORV_BOOK_FILE_W; 16 bytes. */
#define PR_ORV_BOOK_UID PROP_TAG(PT_BINARY, 0x6614)
/* Profile section: the path of PR_ORV_BOOK_FILE_W at which that was; another path there now is checked at the logon, as
   the service's own configuration checks it. */
#define PR_ORV_BOOK_FOUND_W PROP_TAG(PT_UNICODE, 0x6618)
/* Profile section: copies of the book are kept beside it, one a day and seven of them; true unless set. */
#define PR_ORV_BOOK_BACKUPS PROP_TAG(PT_BOOLEAN, 0x6615)
/* Profile section: how tables list and sort the names of people, ORV_NAMES_*; as they are written unless set. Any other
   value is MAPI_E_BAD_VALUE. */
#define PR_ORV_BOOK_NAMES PROP_TAG(PT_LONG, 0x6619)

#define ORV_NAMES_AS_WRITTEN 0l /* "Jane Doe" */
#define ORV_NAMES_LAST_FIRST 1l /* "Doe, Jane", of whom surname and given name are known */

/* Formats of contact files. */
#define ORV_FORMAT_FOUND 0ul   /* importing: told from what the file holds */
#define ORV_FORMAT_VCARD 1ul   /* versions 2.1, 3.0 and 4.0; 4.0 is written */
#define ORV_FORMAT_VCARD30 2ul /* 3.0 is written */
#define ORV_FORMAT_CSV 3ul
#define ORV_FORMAT_LDIF 4ul

/* What became of a record. */
#define ORV_RECORD_ADDED 1ul
#define ORV_RECORD_UPDATED \
  2ul /* the same UID, else the same name and one number in common, and something new */
#define ORV_RECORD_EQUAL 3ul    /* the book knew all of it */
#define ORV_RECORD_REJECTED 4ul /* the reason tells why */
#define ORV_RECORD_REDUCED \
  5ul /* written; the format has no place for what the reason names, each on a line of its own */

/* OrvImportOptions.ulFlags */
#define ORV_IMPORT_TELL_ALL 0x1ul /* every record is told to the report, not only the rejected ones */
#define ORV_IMPORT_DRY_RUN 0x2ul  /* everything is told and counted, nothing stored */

typedef struct OrvImportOptions {
  ULONG cbSize;        /* of the structure */
  ULONG ulFormat;      /* ORV_FORMAT_* */
  ULONG ulFlags;       /* ORV_IMPORT_* */
  LPCWSTR lpszCharset; /* of text that names none and is not UTF-8; null: the system's code page */
  LPCWSTR
  lpszColumns; /* CSV: lines "column=field", a column by its name or number from 1; null: by known names */
} OrvImportOptions;

typedef struct OrvExportOptions {
  ULONG cbSize;   /* of the structure */
  ULONG ulFormat; /* ORV_FORMAT_*; ORV_FORMAT_FOUND stands for ORV_FORMAT_VCARD */
} OrvExportOptions;

/* Entries, so that cLists are counted in the others too. Set to what was done, after a failure as well. */
typedef struct OrvContactCounts {
  ULONGLONG cRead, cAdded, cUpdated, cEqual, cRejected, cLists;
} OrvContactCounts;

/* What a book's file holds, and in which state it is. */
typedef struct OrvBookHealth {
  ULONG cbSize;       /* of the structure; set by the caller */
  HRESULT hrStatus;   /* S_OK: nothing is wrong; else what opening it or looking through it gives */
  ULONG ulFormat;     /* number of the file's format; 0: not known */
  ULONG fReadOnly;    /* it can be read only */
  ULONGLONG cEntries; /* contacts and lists */
  ULONGLONG cLists;
  ULONGLONG cDeleted; /* entries that can be restored */
  ULONGLONG cDamaged; /* entries that cannot be read, in whole or in part */
  ULONGLONG cbFile;
  FILETIME ftChanged; /* the last change; zero: none yet */
  WCHAR szText[512];  /* what is wrong and what to do, a sentence each; empty where nothing is wrong */
} OrvBookHealth;

/* The tool takes tables of methods apart. */
/* clang-format off */

#undef INTERFACE
#define INTERFACE IOrvContactReport
typedef struct IOrvContactReport IOrvContactReport;
/*
 * IOrvContactReport: what a caller of Import, Export and the functions below hands in to hear of progress. Called on
 * the caller's thread; a failure ends the operation and is its result (MAPI_E_USER_CANCEL where somebody asked for
 * it), with everything stored that was told to be.
 *
 * Record    a record of the file: what became of it, the line that it begins with, its name and, of a rejected one,
 *           the reason in words. Texts are good during the call; the name may be empty. While exporting only those
 *           records are told that are reduced.
 * Progress  at least every second: bytes that were read or written, and records.
 */
ORV_INTERFACE(IOrvContactReport, IUnknown) {
  ORV_INHERITED(ORV_IUNKNOWN_METHODS)
  ORV_METHOD(Record)(THIS_ ULONG ulOutcome, ULONGLONG ullLine, LPCWSTR lpszName, LPCWSTR lpszReason) PURE;
  ORV_METHOD(Progress)(THIS_ ULONGLONG ullBytes, ULONGLONG ullRecords) PURE;
};

#undef INTERFACE
#define INTERFACE IOrvContacts
typedef struct IOrvContacts IOrvContacts;
/*
 * IOrvContacts: a whole book at once. Any thread; it may outlive the container, not the session.
 *
 * Import          reads the stream to its end and adds, updates or leaves each record as it is; streamed, in large
 *                 transactions: after a failure or a killed process what was stored stays, and importing the same
 *                 again ends with the same book. Nothing that the file does not name is removed. lpOptions, lpReport
 *                 and lpCounts may be null. MAPI_E_CORRUPT_DATA: the stream is no contact file.
 * Export          writes every entry, sorted by name and then by UID. The same book gives the same bytes.
 * GetDeletedTable entries that were deleted in the last 30 days, the latest first: PR_ENTRYID, PR_DISPLAY_NAME,
 *                 PR_OBJECT_TYPE, PR_ORV_DELETED_TIME; a snapshot. MAPI_UNICODE as for a contents table.
 * RestoreEntries  brings deleted entries back, under their identifiers; the lists that they were in show them as before,
 *                 unless they were taken out meanwhile. MAPI_E_NOT_FOUND for one that is not among them;
 *                 MAPI_W_PARTIAL_COMPLETION where some were restored.
 * GetHealth       looks through the whole book where fDeep is not 0, else only tells its figures. The result is S_OK
 *                 when lpHealth could be filled in, whatever it says.
 */
ORV_INTERFACE(IOrvContacts, IUnknown) {
  ORV_INHERITED(ORV_IUNKNOWN_METHODS)
  ORV_METHOD(Import)(THIS_ IStream* lpSource, const OrvImportOptions* lpOptions, IOrvContactReport* lpReport,
                     OrvContactCounts* lpCounts) PURE;
  ORV_METHOD(Export)(THIS_ IStream* lpTarget, const OrvExportOptions* lpOptions, IOrvContactReport* lpReport,
                     OrvContactCounts* lpCounts) PURE;
  ORV_METHOD(GetDeletedTable)(THIS_ ULONG ulFlags, LPMAPITABLE* lppTable) PURE;
  ORV_METHOD(RestoreEntries)(THIS_ LPENTRYLIST lpEntries, ULONG ulFlags) PURE;
  ORV_METHOD(GetHealth)(THIS_ ULONG fDeep, OrvBookHealth* lpHealth) PURE;
};
  /* clang-format on */

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Exported, undecorated, by a provider library whose books are files; to be called without a session.
 *
 * OrvCheckBook   looks through the file without changing it. Every finding is told to the report, which may be null, as
 *                a rejected record: the entry's number in the place of the line (0: it concerns the file), its name as
 *                far as it can be read, and what is wrong and what to do, a sentence each. The result is S_OK when
 *                lpHealth could be filled in, whatever it says; MAPI_E_INVALID_PARAMETER where lpszFile or lpHealth
 *                is null or cbSize is another.
 * OrvRepairBook  writes what can be read of one file into a new one, which must not exist (MAPI_E_COLLISION). The old
 *                one stays as it is. *lpSaved and *lpLost, which may be null, count the entries; in *lpLost ORV_LOST_MORE
 *                is set besides where the file does not tell whether further ones are lost. What was lost is told to
 *                the report, which may be null, as OrvCheckBook tells findings. A file of which nothing can be saved
 *                is MAPI_E_CORRUPT_DATA. After a failure there is no new file, unless the report's was the failure.
 */
typedef HRESULT(STDAPICALLTYPE ORVCHECKBOOK)(LPCWSTR lpszFile, OrvBookHealth* lpHealth,
                                             IOrvContactReport* lpReport);
typedef HRESULT(STDAPICALLTYPE ORVREPAIRBOOK)(LPCWSTR lpszFile, LPCWSTR lpszNewFile,
                                              IOrvContactReport* lpReport, ULONGLONG* lpSaved,
                                              ULONGLONG* lpLost);
#define ORV_LOST_MORE 0x8000000000000000ull
#define ORV_CHECK_BOOK_NAME "OrvCheckBook"
#define ORV_REPAIR_BOOK_NAME "OrvRepairBook"

#ifdef __cplusplus
}
#endif

#endif
