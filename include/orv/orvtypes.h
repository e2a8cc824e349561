/*
 * Basic types, structures and property types of the address book interfaces; flags and constants are in
 * orvflags.h.
 *
 * Everything here is a published name with its published value and layout, unless its comment says "ours".
 * All strings are UTF-16; where the published declaration says LPTSTR it is LPWSTR here.
 * Compiles alone as C99 and as C++20. Sizes hold for 64-bit builds and are asserted beside each structure.
 */
#ifndef ORV_ORVTYPES_H
#define ORV_ORVTYPES_H

#include <stddef.h>
#include <string.h>
#include <windows.h>

#include <unknwn.h>

#include "orv/orvflags.h"

/* Compile-time check that works in C99 and in C++ (ours). */
#ifdef __cplusplus
#define ORV_STATIC_ASSERT(condition, text) static_assert(condition, text)
#elif defined(__GNUC__)
#define ORV_STATIC_ASSERT(condition, text) __extension__ _Static_assert(condition, text)
#else
#define ORV_STATIC_ASSERT(condition, text) _Static_assert(condition, text)
#endif

/* Size of a published structure, and the place of one member in it (ours). */
#define ORV_ASSERT_SIZE(type, bytes) ORV_STATIC_ASSERT(sizeof(type) == (bytes), "published size of " #type)
#define ORV_ASSERT_OFFSET(type, member, bytes) \
  ORV_STATIC_ASSERT(offsetof(type, member) == (bytes), "published place of " #type "." #member)

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Pointers to interfaces: declared here because structures and signatures name them. ---- */

typedef struct IMAPIProp IMAPIProp;
typedef struct IProfSect IProfSect;
typedef struct IMailUser IMailUser;
typedef struct IMAPIContainer IMAPIContainer;
typedef struct IABContainer IABContainer;
typedef struct IDistList IDistList;
typedef struct IMAPITable IMAPITable;
typedef struct IMAPIAdviseSink IMAPIAdviseSink;
typedef struct IMAPIProgress IMAPIProgress;
typedef struct IAddrBook IAddrBook;
typedef struct IOrvSession IOrvSession;         /* ours */
typedef struct IOrvSupport IOrvSupport;         /* ours */
typedef struct IOrvProfAdmin IOrvProfAdmin;     /* ours */
typedef struct IOrvProfAdmin2 IOrvProfAdmin2;   /* ours */
typedef struct IOrvProfAdmin3 IOrvProfAdmin3;   /* ours */
typedef struct IOrvSession2 IOrvSession2;       /* ours */
typedef struct IOrvSupport2 IOrvSupport2;       /* ours */
typedef struct IABServiceAdmin IABServiceAdmin; /* ours */

typedef IMAPIProp* LPMAPIPROP;
typedef IProfSect* LPPROFSECT;
typedef IMailUser* LPMAILUSER;
typedef IMAPIContainer* LPMAPICONTAINER;
typedef IABContainer* LPABCONT;
typedef IDistList* LPDISTLIST;
typedef IMAPITable* LPMAPITABLE;
typedef IMAPIAdviseSink* LPMAPIADVISESINK;
typedef IMAPIProgress* LPMAPIPROGRESS;
typedef IAddrBook* LPADRBOOK;
typedef IOrvSession* LPORVSESSION;
typedef IOrvSupport* LPORVSUPPORT;
typedef IOrvProfAdmin* LPORVPROFADMIN;
typedef IOrvProfAdmin2* LPORVPROFADMIN2;
typedef IOrvProfAdmin3* LPORVPROFADMIN3;
typedef IOrvSession2* LPORVSESSION2;
typedef IOrvSupport2* LPORVSUPPORT2;
typedef IABServiceAdmin* LPABSERVICEADMIN;

typedef const IID* LPCIID; /* a null interface identifier asks for the object's own interface */

/* ---- Property tags: identifier in the high half, type in the low half. ---- */

#define PROP_TYPE_MASK ((ULONG)0x0000FFFF)
#define PROP_TYPE(ulPropTag) (((ULONG)(ulPropTag)) & PROP_TYPE_MASK)
#define PROP_ID(ulPropTag) (((ULONG)(ulPropTag)) >> 16)
#define PROP_TAG(ulPropType, ulPropID) ((((ULONG)(ulPropID)) << 16) | ((ULONG)(ulPropType)))
#define PROP_ID_NULL 0
#define PROP_ID_INVALID 0xFFFF
#define CHANGE_PROP_TYPE(ulPropTag, ulPropType) (((ULONG)0xFFFF0000 & (ulPropTag)) | (ulPropType))

#define MV_FLAG 0x1000     /* the value is an array */
#define MV_INSTANCE 0x2000 /* a table shows one row a value of the array */
#define MVI_FLAG (MV_FLAG | MV_INSTANCE)
#define MVI_PROP(ulPropTag) ((ulPropTag) | MVI_FLAG)

/* Property types. The comment names the member of SPropValue.Value that holds the value. */
#define PT_UNSPECIFIED ((ULONG)0x0000) /* in requests: whatever type the object has */
#define PT_NULL ((ULONG)0x0001)        /* no value; in requests: keep the column's place */
#define PT_I2 ((ULONG)0x0002)          /* i, 16 bits */
#define PT_LONG ((ULONG)0x0003)        /* l or ul, 32 bits */
#define PT_R4 ((ULONG)0x0004)          /* flt */
#define PT_DOUBLE ((ULONG)0x0005)      /* dbl */
#define PT_CURRENCY ((ULONG)0x0006)    /* cur, ten-thousandths in 64 bits */
#define PT_APPTIME ((ULONG)0x0007)     /* at, days since 30 December 1899 */
#define PT_ERROR ((ULONG)0x000A)       /* err: why the value is not there */
#define PT_BOOLEAN ((ULONG)0x000B)     /* b, 16 bits, zero or not zero */
#define PT_OBJECT ((ULONG)0x000D)      /* x; opened with OpenProperty */
#define PT_I8 ((ULONG)0x0014)          /* li, 64 bits */
#define PT_STRING8 ((ULONG)0x001E)     /* lpszA */
#define PT_UNICODE ((ULONG)0x001F)     /* lpszW, UTF-16 */
#define PT_SYSTIME ((ULONG)0x0040)     /* ft, 100 ns since 1601, UTC */
#define PT_CLSID ((ULONG)0x0048)       /* lpguid */
#define PT_BINARY ((ULONG)0x0102)      /* bin, counted bytes */

#define PT_SHORT PT_I2
#define PT_I4 PT_LONG
#define PT_FLOAT PT_R4
#define PT_R8 PT_DOUBLE
#define PT_LONGLONG PT_I8
#define PT_TSTRING PT_UNICODE

#define PT_MV_I2 (MV_FLAG | PT_I2)             /* MVi */
#define PT_MV_LONG (MV_FLAG | PT_LONG)         /* MVl */
#define PT_MV_R4 (MV_FLAG | PT_R4)             /* MVflt */
#define PT_MV_DOUBLE (MV_FLAG | PT_DOUBLE)     /* MVdbl */
#define PT_MV_CURRENCY (MV_FLAG | PT_CURRENCY) /* MVcur */
#define PT_MV_APPTIME (MV_FLAG | PT_APPTIME)   /* MVat */
#define PT_MV_I8 (MV_FLAG | PT_I8)             /* MVli */
#define PT_MV_STRING8 (MV_FLAG | PT_STRING8)   /* MVszA */
#define PT_MV_UNICODE (MV_FLAG | PT_UNICODE)   /* MVszW */
#define PT_MV_SYSTIME (MV_FLAG | PT_SYSTIME)   /* MVft */
#define PT_MV_CLSID (MV_FLAG | PT_CLSID)       /* MVguid */
#define PT_MV_BINARY (MV_FLAG | PT_BINARY)     /* MVbin */

#define PT_MV_SHORT PT_MV_I2
#define PT_MV_I4 PT_MV_LONG
#define PT_MV_FLOAT PT_MV_R4
#define PT_MV_R8 PT_MV_DOUBLE
#define PT_MV_LONGLONG PT_MV_I8
#define PT_MV_TSTRING PT_MV_UNICODE

/* ---- Identifiers ---- */

/* Nominal length of a trailing array; spelt 1 below, as compilers take a macro for a length that is meant. */
#define MAPI_DIM 1

/* Identifier of a provider, compared byte for byte. */
typedef struct _MAPIUID {
  BYTE ab[16];
} MAPIUID, *LPMAPIUID;
ORV_ASSERT_SIZE(MAPIUID, 16);

#define IsEqualMAPIUID(lpuid1, lpuid2) (!memcmp(lpuid1, lpuid2, sizeof(MAPIUID)))

/*
 * Entry identifier: opaque bytes, always handed over with their count. The first four are flags; the next
 * sixteen are the MAPIUID of the provider that issued it, by which the address book routes; the rest is the
 * provider's own.
 */
typedef struct _ENTRYID {
  BYTE abFlags[4];
  BYTE ab[1]; /* as many as the count says */
} ENTRYID, *LPENTRYID;
ORV_ASSERT_SIZE(ENTRYID, 5);
ORV_ASSERT_OFFSET(ENTRYID, ab, 4);

#define CbNewENTRYID(_cb) (offsetof(ENTRYID, ab) + (_cb))
#define CbENTRYID(_cb) (offsetof(ENTRYID, ab) + (_cb))
#define SizedENTRYID(_cb, _name) \
  struct _ENTRYID_##_name {      \
    BYTE abFlags[4];             \
    BYTE ab[_cb];                \
  } _name

/* ENTRYID.abFlags[0]: how long and where the identifier may be used. All clear: for ever, everywhere. */
#define MAPI_SHORTTERM 0x80
#define MAPI_NOTRECIP 0x40
#define MAPI_THISSESSION 0x20
#define MAPI_NOW 0x10
#define MAPI_NOTRESERVED 0x08

#define ORV_ENTRYID_UID_OFFSET 4 /* ours: where the provider's MAPIUID begins */
#define ORV_MIN_ENTRYID 20       /* ours: shorter identifiers are MAPI_E_INVALID_ENTRYID */

/* Entry identifier with its count, packable one behind the other. */
typedef struct _FLATENTRY {
  ULONG cb;
  BYTE abEntry[1];
} FLATENTRY, *LPFLATENTRY;
ORV_ASSERT_SIZE(FLATENTRY, 8);

#define CbNewFLATENTRY(_cb) (offsetof(FLATENTRY, abEntry) + (_cb))
#define CbFLATENTRY(_lpentry) (offsetof(FLATENTRY, abEntry) + (_lpentry)->cb)

/* cbEntries bytes of FLATENTRY, each begun at a multiple of four. */
typedef struct _FLATENTRYLIST {
  ULONG cEntries;
  ULONG cbEntries;
  BYTE abEntries[1];
} FLATENTRYLIST, *LPFLATENTRYLIST;
ORV_ASSERT_SIZE(FLATENTRYLIST, 12);

#define CbNewFLATENTRYLIST(_cb) (offsetof(FLATENTRYLIST, abEntries) + (_cb))
#define CbFLATENTRYLIST(_lplist) (offsetof(FLATENTRYLIST, abEntries) + (_lplist)->cbEntries)

/* ---- Property values ---- */

/* Counted bytes; lpb is not to be read when cb is 0. */
typedef struct _SBinary {
  ULONG cb;
  LPBYTE lpb;
} SBinary, *LPSBinary;
ORV_ASSERT_SIZE(SBinary, 16);

/* Arrays of a multi-valued property: cValues elements. */
typedef struct _SShortArray {
  ULONG cValues;
  short int* lpi;
} SShortArray;

typedef struct _SLongArray {
  ULONG cValues;
  LONG* lpl;
} SLongArray;

typedef struct _SRealArray {
  ULONG cValues;
  float* lpflt;
} SRealArray;

typedef struct _SDoubleArray {
  ULONG cValues;
  double* lpdbl;
} SDoubleArray;

typedef CY CURRENCY;

typedef struct _SCurrencyArray {
  ULONG cValues;
  CURRENCY* lpcur;
} SCurrencyArray;

typedef struct _SAppTimeArray {
  ULONG cValues;
  double* lpat;
} SAppTimeArray;

typedef struct _SDateTimeArray {
  ULONG cValues;
  FILETIME* lpft;
} SDateTimeArray;

typedef struct _SBinaryArray {
  ULONG cValues;
  SBinary* lpbin;
} SBinaryArray;

typedef struct _SLPSTRArray {
  ULONG cValues;
  LPSTR* lppszA;
} SLPSTRArray;

typedef struct _SWStringArray {
  ULONG cValues;
  LPWSTR* lppszW;
} SWStringArray;

typedef struct _SGuidArray {
  ULONG cValues;
  GUID* lpguid;
} SGuidArray;

typedef struct _SLargeIntegerArray {
  ULONG cValues;
  LARGE_INTEGER* lpli;
} SLargeIntegerArray;
ORV_ASSERT_SIZE(SShortArray, 16);
ORV_ASSERT_SIZE(SBinaryArray, 16);
ORV_ASSERT_SIZE(SLargeIntegerArray, 16);

typedef SBinaryArray ENTRYLIST, *LPENTRYLIST; /* list of entry identifiers */

/* One property value; the tag's type tells which member is meant. */
typedef struct _SPropValue {
  ULONG ulPropTag;
  ULONG dwAlignPad; /* no meaning */
  union _PV {
    short int i;
    LONG l;
    ULONG ul;
    float flt;
    double dbl;
    unsigned short int b;
    CURRENCY cur;
    double at;
    FILETIME ft;
    LPSTR lpszA;
    SBinary bin;
    LPWSTR lpszW;
    LPGUID lpguid;
    LARGE_INTEGER li;
    SShortArray MVi;
    SLongArray MVl;
    SRealArray MVflt;
    SDoubleArray MVdbl;
    SCurrencyArray MVcur;
    SAppTimeArray MVat;
    SDateTimeArray MVft;
    SBinaryArray MVbin;
    SLPSTRArray MVszA;
    SWStringArray MVszW;
    SGuidArray MVguid;
    SLargeIntegerArray MVli;
    SCODE err;
    LONG x;
  } Value;
} SPropValue, *LPSPropValue;
ORV_ASSERT_SIZE(SPropValue, 24);
ORV_ASSERT_OFFSET(SPropValue, Value, 8);

/* Property tags: columns of a table, names of what is asked for. */
typedef struct _SPropTagArray {
  ULONG cValues;
  ULONG aulPropTag[1];
} SPropTagArray, *LPSPropTagArray;
ORV_ASSERT_SIZE(SPropTagArray, 8);
ORV_ASSERT_OFFSET(SPropTagArray, aulPropTag, 4);

#define CbNewSPropTagArray(_ctag) (offsetof(SPropTagArray, aulPropTag) + (_ctag) * sizeof(ULONG))
#define CbSPropTagArray(_lparray) (offsetof(SPropTagArray, aulPropTag) + (_lparray)->cValues * sizeof(ULONG))
#define SizedSPropTagArray(_ctag, _name) \
  struct _SPropTagArray_##_name {        \
    ULONG cValues;                       \
    ULONG aulPropTag[_ctag];             \
  } _name

/* One property that a call could not set, delete or copy. */
typedef struct _SPropProblem {
  ULONG ulIndex;   /* place in the caller's array */
  ULONG ulPropTag; /* the tag there */
  SCODE scode;     /* why */
} SPropProblem, *LPSPropProblem;
ORV_ASSERT_SIZE(SPropProblem, 12);

typedef struct _SPropProblemArray {
  ULONG cProblem;
  SPropProblem aProblem[1];
} SPropProblemArray, *LPSPropProblemArray;
ORV_ASSERT_SIZE(SPropProblemArray, 16);
ORV_ASSERT_OFFSET(SPropProblemArray, aProblem, 4);

#define CbNewSPropProblemArray(_cprob) \
  (offsetof(SPropProblemArray, aProblem) + (_cprob) * sizeof(SPropProblem))
#define CbSPropProblemArray(_lparray) \
  (offsetof(SPropProblemArray, aProblem) + (_lparray)->cProblem * sizeof(SPropProblem))
#define SizedSPropProblemArray(_cprob, _name) \
  struct _SPropProblemArray_##_name {         \
    ULONG cProblem;                           \
    SPropProblem aProblem[_cprob];            \
  } _name

/* Named property; not supported by the library's own objects. */
typedef struct _MAPINAMEID {
  LPGUID lpguid;
  ULONG ulKind; /* MNID_ID or MNID_STRING */
  union {
    LONG lID;
    LPWSTR lpwstrName;
  } Kind;
} MAPINAMEID, *LPMAPINAMEID;
ORV_ASSERT_SIZE(MAPINAMEID, 24);

#define MNID_ID 0
#define MNID_STRING 1

/* ---- Rows and recipients ---- */

/* One row: its property array is a root buffer of its own (freed by OrvFreeProws with the set). */
typedef struct _SRow {
  ULONG ulAdrEntryPad; /* no meaning; gives a row the layout of an ADRENTRY */
  ULONG cValues;
  LPSPropValue lpProps;
} SRow, *LPSRow;
ORV_ASSERT_SIZE(SRow, 16);
ORV_ASSERT_OFFSET(SRow, lpProps, 8);

typedef struct _SRowSet {
  ULONG cRows;
  SRow aRow[1];
} SRowSet, *LPSRowSet;
ORV_ASSERT_SIZE(SRowSet, 24);
ORV_ASSERT_OFFSET(SRowSet, aRow, 8);

#define CbNewSRowSet(_crow) (offsetof(SRowSet, aRow) + (_crow) * sizeof(SRow))
#define CbSRowSet(_lprowset) (offsetof(SRowSet, aRow) + (_lprowset)->cRows * sizeof(SRow))
#define SizedSRowSet(_crow, _name) \
  struct _SRowSet_##_name {        \
    ULONG cRows;                   \
    SRow aRow[_crow];              \
  } _name

/* One recipient: its property array is a root buffer of its own (freed by OrvFreePadrlist with the list). */
typedef struct _ADRENTRY {
  ULONG ulReserved1; /* 0 */
  ULONG cValues;
  LPSPropValue rgPropVals;
} ADRENTRY, *LPADRENTRY;
ORV_ASSERT_SIZE(ADRENTRY, 16);
ORV_ASSERT_OFFSET(ADRENTRY, rgPropVals, 8);

typedef struct _ADRLIST {
  ULONG cEntries;
  ADRENTRY aEntries[1];
} ADRLIST, *LPADRLIST;
ORV_ASSERT_SIZE(ADRLIST, 24);
ORV_ASSERT_OFFSET(ADRLIST, aEntries, 8);

#define CbNewADRLIST(_centries) (offsetof(ADRLIST, aEntries) + (_centries) * sizeof(ADRENTRY))
#define CbADRLIST(_lpadrlist) (offsetof(ADRLIST, aEntries) + (_lpadrlist)->cEntries * sizeof(ADRENTRY))
#define SizedADRLIST(_centries, _name) \
  struct _ADRLIST_##_name {            \
    ULONG cEntries;                    \
    ADRENTRY aEntries[_centries];      \
  } _name

/* One flag an entry of an address list: what IABContainer::ResolveNames made of it. */
typedef struct _flaglist {
  ULONG cFlags;
  ULONG ulFlag[1]; /* MAPI_UNRESOLVED, MAPI_AMBIGUOUS or MAPI_RESOLVED */
} FlagList, *LPFlagList;
ORV_ASSERT_SIZE(FlagList, 8);

#define CbNewFlagList(_cflags) (offsetof(FlagList, ulFlag) + (_cflags) * sizeof(ULONG))

#define MAPI_UNRESOLVED ((ULONG)0x00000000)
#define MAPI_AMBIGUOUS ((ULONG)0x00000001)
#define MAPI_RESOLVED ((ULONG)0x00000002)

/* Recipient types, the values of PR_RECIPIENT_TYPE. */
#define MAPI_ORIG 0
#define MAPI_TO 1
#define MAPI_CC 2
#define MAPI_BCC 3
#define MAPI_P1 0x10000000
#define MAPI_SUBMITTED 0x80000000

/* ---- Restrictions and sort orders of tables ---- */

typedef struct _SRestriction* LPSRestriction;

#define RES_AND ((ULONG)0x00000000)
#define RES_OR ((ULONG)0x00000001)
#define RES_NOT ((ULONG)0x00000002)
#define RES_CONTENT ((ULONG)0x00000003)
#define RES_PROPERTY ((ULONG)0x00000004)
#define RES_COMPAREPROPS ((ULONG)0x00000005)
#define RES_BITMASK ((ULONG)0x00000006)
#define RES_SIZE ((ULONG)0x00000007)
#define RES_EXIST ((ULONG)0x00000008)
#define RES_SUBRESTRICTION ((ULONG)0x00000009)
#define RES_COMMENT ((ULONG)0x0000000A)

#define RELOP_LT ((ULONG)0)
#define RELOP_LE ((ULONG)1)
#define RELOP_GT ((ULONG)2)
#define RELOP_GE ((ULONG)3)
#define RELOP_EQ ((ULONG)4)
#define RELOP_NE ((ULONG)5)
#define RELOP_RE ((ULONG)6)

#define BMR_EQZ ((ULONG)0)
#define BMR_NEZ ((ULONG)1)

/* Fuzzy levels of a content restriction: one of the first three, with any of the others. */
#define FL_FULLSTRING ((ULONG)0x00000000)
#define FL_SUBSTRING ((ULONG)0x00000001)
#define FL_PREFIX ((ULONG)0x00000002)
#define FL_IGNORECASE ((ULONG)0x00010000)
#define FL_IGNORENONSPACE ((ULONG)0x00020000)
#define FL_LOOSE ((ULONG)0x00040000)

/* Every one of cRes restrictions holds. */
typedef struct _SAndRestriction {
  ULONG cRes;
  LPSRestriction lpRes;
} SAndRestriction;

/* At least one of cRes restrictions holds. */
typedef struct _SOrRestriction {
  ULONG cRes;
  LPSRestriction lpRes;
} SOrRestriction;

typedef struct _SNotRestriction {
  ULONG ulReserved;
  LPSRestriction lpRes;
} SNotRestriction;

/* A string or binary value holds the one given, as the fuzzy level says. */
typedef struct _SContentRestriction {
  ULONG ulFuzzyLevel;
  ULONG ulPropTag;
  LPSPropValue lpProp;
} SContentRestriction;

/* value & mask is zero, or is not. */
typedef struct _SBitMaskRestriction {
  ULONG relBMR;
  ULONG ulPropTag;
  ULONG ulMask;
} SBitMaskRestriction;

/* value relop *lpProp. */
typedef struct _SPropertyRestriction {
  ULONG relop;
  ULONG ulPropTag;
  LPSPropValue lpProp;
} SPropertyRestriction;

/* value1 relop value2, both of the same row. */
typedef struct _SComparePropsRestriction {
  ULONG relop;
  ULONG ulPropTag1;
  ULONG ulPropTag2;
} SComparePropsRestriction;

/* size of the value in bytes relop cb. */
typedef struct _SSizeRestriction {
  ULONG relop;
  ULONG ulPropTag;
  ULONG cb;
} SSizeRestriction;

typedef struct _SExistRestriction {
  ULONG ulReserved1;
  ULONG ulPropTag;
  ULONG ulReserved2;
} SExistRestriction;

typedef struct _SSubRestriction {
  ULONG ulSubObject;
  LPSRestriction lpRes;
} SSubRestriction;

/* lpRes with values that only its maker reads. */
typedef struct _SCommentRestriction {
  ULONG cValues;
  LPSRestriction lpRes;
  LPSPropValue lpProp;
} SCommentRestriction;

typedef struct _SRestriction {
  ULONG rt; /* RES_* */
  union {
    SComparePropsRestriction resCompareProps;
    SAndRestriction resAnd;
    SOrRestriction resOr;
    SNotRestriction resNot;
    SContentRestriction resContent;
    SPropertyRestriction resProperty;
    SBitMaskRestriction resBitMask;
    SSizeRestriction resSize;
    SExistRestriction resExist;
    SSubRestriction resSub;
    SCommentRestriction resComment;
  } res;
} SRestriction;
ORV_ASSERT_SIZE(SContentRestriction, 16);
ORV_ASSERT_SIZE(SCommentRestriction, 24);
ORV_ASSERT_SIZE(SRestriction, 32);
ORV_ASSERT_OFFSET(SRestriction, res, 8);

typedef struct _SSortOrder {
  ULONG ulPropTag;
  ULONG ulOrder; /* TABLE_SORT_* */
} SSortOrder, *LPSSortOrder;

/* cSorts keys, the first cCategories of them grouping, the first cExpanded groups shown open. */
typedef struct _SSortOrderSet {
  ULONG cSorts;
  ULONG cCategories;
  ULONG cExpanded;
  SSortOrder aSort[1];
} SSortOrderSet, *LPSSortOrderSet;
ORV_ASSERT_SIZE(SSortOrderSet, 20);

#define CbNewSSortOrderSet(_csort) (offsetof(SSortOrderSet, aSort) + (_csort) * sizeof(SSortOrder))
#define CbSSortOrderSet(_lpset) (offsetof(SSortOrderSet, aSort) + (_lpset)->cSorts * sizeof(SSortOrder))
#define SizedSSortOrderSet(_csort, _name) \
  struct _SSortOrderSet_##_name {         \
    ULONG cSorts;                         \
    ULONG cCategories;                    \
    ULONG cExpanded;                      \
    SSortOrder aSort[_csort];             \
  } _name

#define TABLE_SORT_ASCEND ((ULONG)0x00000000)
#define TABLE_SORT_DESCEND ((ULONG)0x00000001)
#define TABLE_SORT_COMBINE ((ULONG)0x00000002)

/* ---- Tables ---- */

typedef ULONG BOOKMARK;

#define BOOKMARK_BEGINNING ((BOOKMARK)0)
#define BOOKMARK_CURRENT ((BOOKMARK)1)
#define BOOKMARK_END ((BOOKMARK)2)

/* IMAPITable::GetStatus */
#define TBLTYPE_SNAPSHOT ((ULONG)0)
#define TBLTYPE_KEYSET ((ULONG)1)
#define TBLTYPE_DYNAMIC ((ULONG)2)
#define TBLSTAT_COMPLETE ((ULONG)0)
#define TBLSTAT_QCHANGED ((ULONG)7)
#define TBLSTAT_SORTING ((ULONG)9)
#define TBLSTAT_SORT_ERROR ((ULONG)10)
#define TBLSTAT_SETTING_COLS ((ULONG)11)
#define TBLSTAT_SETCOL_ERROR ((ULONG)13)
#define TBLSTAT_RESTRICTING ((ULONG)14)
#define TBLSTAT_RESTRICT_ERROR ((ULONG)15)

#define TBL_ALL_COLUMNS ((ULONG)0x00000001) /* QueryColumns: every column that the table has */
#define TBL_NOADVANCE ((ULONG)0x00000001)   /* QueryRows: leave the position */
#define DIR_BACKWARD ((ULONG)0x00000001)    /* FindRow: towards the beginning */
#define TBL_NOWAIT ((ULONG)0x00000001) /* SetColumns, SortTable, Restrict: may return before it is done */
#define TBL_ASYNC ((ULONG)0x00000001)  /* the same */
#define TBL_BATCH ((ULONG)0x00000002)  /* the same: may be put off until rows are asked for */

/* PR_ROW_TYPE */
#define TBL_LEAF_ROW ((ULONG)1)
#define TBL_EMPTY_CATEGORY ((ULONG)2)
#define TBL_EXPANDED_CATEGORY ((ULONG)3)
#define TBL_COLLAPSED_CATEGORY ((ULONG)4)

/* ---- Notifications ---- */

/* Error text of IMAPIProp::GetLastError; the library's own objects never return one. */
typedef struct _MAPIERROR {
  ULONG ulVersion;
  LPWSTR lpszError;
  LPWSTR lpszComponent;
  ULONG ulLowLevelError;
  ULONG ulContext;
} MAPIERROR, *LPMAPIERROR;
ORV_ASSERT_SIZE(MAPIERROR, 32);

/* Events, bits of a mask */
#define fnevCriticalError ((ULONG)0x00000001)
#define fnevNewMail ((ULONG)0x00000002)
#define fnevObjectCreated ((ULONG)0x00000004)
#define fnevObjectDeleted ((ULONG)0x00000008)
#define fnevObjectModified ((ULONG)0x00000010)
#define fnevObjectMoved ((ULONG)0x00000020)
#define fnevObjectCopied ((ULONG)0x00000040)
#define fnevSearchComplete ((ULONG)0x00000080)
#define fnevTableModified ((ULONG)0x00000100)
#define fnevStatusObjectModified ((ULONG)0x00000200)
#define fnevReservedForMapi ((ULONG)0x40000000)
#define fnevExtended ((ULONG)0x80000000)

/* TABLE_NOTIFICATION.ulTableEvent */
#define TABLE_CHANGED 1
#define TABLE_ERROR 2
#define TABLE_ROW_ADDED 3
#define TABLE_ROW_DELETED 4
#define TABLE_ROW_MODIFIED 5
#define TABLE_SORT_DONE 6
#define TABLE_RESTRICT_DONE 7
#define TABLE_SETCOL_DONE 8
#define TABLE_RELOAD 9

typedef struct _ERROR_NOTIFICATION {
  ULONG cbEntryID;
  LPENTRYID lpEntryID;
  SCODE scode;
  ULONG ulFlags;
  LPMAPIERROR lpMAPIError;
} ERROR_NOTIFICATION;

typedef struct _NEWMAIL_NOTIFICATION {
  ULONG cbEntryID;
  LPENTRYID lpEntryID;
  ULONG cbParentID;
  LPENTRYID lpParentID;
  ULONG ulFlags;
  LPWSTR lpszMessageClass;
  ULONG ulMessageFlags;
} NEWMAIL_NOTIFICATION;

typedef struct _OBJECT_NOTIFICATION {
  ULONG cbEntryID;
  LPENTRYID lpEntryID;
  ULONG ulObjType;
  ULONG cbParentID;
  LPENTRYID lpParentID;
  ULONG cbOldID;
  LPENTRYID lpOldID;
  ULONG cbOldParentID;
  LPENTRYID lpOldParentID;
  LPSPropTagArray lpPropTagArray;
} OBJECT_NOTIFICATION;

typedef struct _TABLE_NOTIFICATION {
  ULONG ulTableEvent;
  HRESULT hResult;
  SPropValue propIndex; /* PR_INSTANCE_KEY of the row */
  SPropValue propPrior; /* PR_INSTANCE_KEY of the row before it, or PR_NULL */
  SRow row;
  ULONG ulPad;
} TABLE_NOTIFICATION;

typedef struct _EXTENDED_NOTIFICATION {
  ULONG ulEvent;
  ULONG cb;
  LPBYTE pbEventParameters;
} EXTENDED_NOTIFICATION;

typedef struct _STATUS_OBJECT_NOTIFICATION {
  ULONG cbEntryID;
  LPENTRYID lpEntryID;
  ULONG cValues;
  LPSPropValue lpPropVals;
} STATUS_OBJECT_NOTIFICATION;

/* One event, valid during the call of IMAPIAdviseSink::OnNotify only. */
typedef struct _NOTIFICATION {
  ULONG ulEventType; /* one fnev* bit, tells which member is meant */
  ULONG ulAlignPad;
  union {
    ERROR_NOTIFICATION err;
    NEWMAIL_NOTIFICATION newmail;
    OBJECT_NOTIFICATION obj;
    TABLE_NOTIFICATION tab;
    EXTENDED_NOTIFICATION ext;
    STATUS_OBJECT_NOTIFICATION statobj;
  } info;
} NOTIFICATION, *LPNOTIFICATION;
ORV_ASSERT_SIZE(ERROR_NOTIFICATION, 32);
ORV_ASSERT_SIZE(NEWMAIL_NOTIFICATION, 56);
ORV_ASSERT_SIZE(OBJECT_NOTIFICATION, 72);
ORV_ASSERT_SIZE(TABLE_NOTIFICATION, 80);
ORV_ASSERT_SIZE(EXTENDED_NOTIFICATION, 16);
ORV_ASSERT_SIZE(STATUS_OBJECT_NOTIFICATION, 32);
ORV_ASSERT_SIZE(NOTIFICATION, 88);
ORV_ASSERT_OFFSET(NOTIFICATION, info, 8);

/* ---- The address dialog ---- */

/* Called in the caller's message loop of a modeless dialog; true when the message was the dialog's. */
typedef BOOL(STDMETHODCALLTYPE ACCELERATEABSDI)(ULONG_PTR ulUIParam, LPVOID lpvmsg);
typedef ACCELERATEABSDI* LPFNABSDI;

/* Called when a modeless dialog has been dismissed. */
typedef void(STDMETHODCALLTYPE DISMISSMODELESS)(ULONG_PTR ulUIParam, LPVOID lpvContext);
typedef DISMISSMODELESS* LPFNDISMISS;

/* Called when the caller's own button of a details dialog is pressed. */
typedef SCODE(STDMETHODCALLTYPE FNBUTTON)(ULONG_PTR ulUIParam, LPVOID lpvContext, ULONG cbEntryID,
                                          LPENTRYID lpSelection, ULONG ulFlags);
typedef FNBUTTON* LPFNBUTTON;

/*
 * What the address dialog shows and returns. Strings are UTF-16; they and the arrays belong to the caller.
 *
 * lppszDestTitles holds cDestFields titles. Null, for the array or for one of its titles, keeps the dialog's own
 * texts. In a title '&' marks the button's access key and "&&" is the sign itself; one without a key is given a
 * letter that no other control has, where there is one.
 */
typedef struct _ADRPARM {
  ULONG cbABContEntryID;
  LPENTRYID lpABContEntryID;
  ULONG ulFlags; /* DIALOG_*, ADDRESS_ONE */
  LPVOID lpReserved;
  ULONG ulHelpContext;
  LPWSTR lpszHelpFileName;
  LPFNABSDI lpfnABSDI;
  LPFNDISMISS lpfnDismiss;
  LPVOID lpvDismissContext;
  LPWSTR lpszCaption;        /* of the window; null keeps the dialog's own */
  LPWSTR lpszNewEntryTitle;  /* of the new-entry control */
  LPWSTR lpszDestWellsTitle; /* over the wells; null keeps the dialog's own */
  ULONG cDestFields;         /* number of wells, 0 to 3 */
  ULONG nDestFieldFocus;     /* the well whose button has the focus at start, from 0 */
  LPWSTR* lppszDestTitles;   /* a title a well, for its button and label */
  ULONG* lpulDestComps;      /* a recipient type a well; required when there are wells */
  LPSRestriction lpContRestriction;
  LPSRestriction lpHierRestriction;
} ADRPARM, *LPADRPARM;
ORV_ASSERT_SIZE(ADRPARM, 136);
ORV_ASSERT_OFFSET(ADRPARM, lpszCaption, 72);
ORV_ASSERT_OFFSET(ADRPARM, cDestFields, 96);
ORV_ASSERT_OFFSET(ADRPARM, lpulDestComps, 112);

/* ---- Buffers ---- */

/*
 * Every buffer that crosses an interface is a root (allocated with ALLOCATEBUFFER) or hangs off one
 * (ALLOCATEMORE), is zero-filled, and is freed with its root by one call of FREEBUFFER. The exports of
 * orvapi.h have these types.
 */
typedef SCODE(STDAPICALLTYPE ALLOCATEBUFFER)(ULONG cbSize, LPVOID* lppBuffer);
typedef SCODE(STDAPICALLTYPE ALLOCATEMORE)(ULONG cbSize, LPVOID lpObject, LPVOID* lppBuffer);
typedef ULONG(STDAPICALLTYPE FREEBUFFER)(LPVOID lpBuffer);
typedef void(STDAPICALLTYPE FREEPROWS)(LPSRowSet lpRows);
typedef void(STDAPICALLTYPE FREEPADRLIST)(LPADRLIST lpAdrList);
typedef ALLOCATEBUFFER* LPALLOCATEBUFFER;
typedef ALLOCATEMORE* LPALLOCATEMORE;
typedef FREEBUFFER* LPFREEBUFFER;
typedef FREEPROWS* LPFREEPROWS;
typedef FREEPADRLIST* LPFREEPADRLIST;

#ifdef __cplusplus
}
#endif

#endif
