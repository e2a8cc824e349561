// A client in C++: interfaces can be implemented, identifiers and tags are constant expressions. Compiled
// only.
#include <type_traits>

#include "orv/orv.h"

// A virtual destructor would take slots of the table.
static_assert(!std::has_virtual_destructor_v<IAddrBook> && !std::has_virtual_destructor_v<IOrvSupport>);
static_assert(std::is_base_of_v<IMAPIProp, IAddrBook> && std::is_base_of_v<IMAPIContainer, IDistList>);

static_assert(IID_IAddrBook.Data1 == 0x00020309 && IID_IAddrBook.Data4[7] == 0x46);
static_assert(IID_IABServiceAdmin.Data1 == 0x000203A3 && IID_IABServiceAdmin.Data4[0] == 0xC0);

// Values that are stored in registries and files, and a few that are easily mistaken.
static_assert(PR_DISPLAY_NAME == 805371935UL && PR_DISPLAY_NAME_A == 0x3001001EUL);
static_assert(PR_SERVICE_ENTRY_NAME == 0x3D0B001EUL && PR_SERVICE_UID == 0x3D0C0102UL);
static_assert(PR_SERVICE_DELETE_FILES == 0x3D10101FUL && PR_AB_SEARCH_PATH == 0x3D051102UL);
static_assert(PR_DEFAULT_PROFILE == 0x3D04000BUL && PR_CONTAINER_CONTENTS == 0x360F000DUL);
static_assert(PR_RECIPIENT_TYPE == 0x0C150003UL && PR_NULL == 1 && PR_ORV_BOOK_FILE_W == 0x6600001FUL);
static_assert(CHANGE_PROP_TYPE(PR_DISPLAY_NAME, PT_ERROR) == 0x3001000AUL);
static_assert(PROP_ID(PR_ENTRYID) == 0x0FFF && PROP_TYPE(PR_ENTRYID) == PT_BINARY);
static_assert(PT_MV_SYSTIME == 0x1040 && MAPI_E_NOT_FOUND == static_cast<HRESULT>(0x8004010F));
static_assert(CbNewSRowSet(3) == 56 && CbNewADRLIST(0) == 8 && CbNewSPropTagArray(2) == 12);
static_assert(CbNewSPropProblemArray(2) == 28 && CbNewENTRYID(16) == 20);
