// Names of property identifiers and types.
#include <cstdio>

#include "diag/name_table.h"
#include "diag/names.h"

namespace diag {
namespace {

constexpr uint32_t kTypeError = 0x000A;
constexpr uint32_t kTypeString8 = 0x001E;
constexpr uint32_t kTypeUnicode = 0x001F;
constexpr uint32_t kMultiValued = 0x1000;
constexpr uint32_t kServiceEntryName = 0x3D0B001E;  // the one string that is 8-bit only and has no suffix

// By identifier: the type half of a tag may differ from the published one and the name still holds.
constexpr auto kProps = std::to_array<NumberName>({
    {0x0000, "PR_NULL"},
    {0x0017, "PR_IMPORTANCE"},
    {0x001A, "PR_MESSAGE_CLASS"},
    {0x0023, "PR_ORIGINATOR_DELIVERY_REPORT_REQUESTED"},
    {0x0026, "PR_PRIORITY"},
    {0x0029, "PR_READ_RECEIPT_REQUESTED"},
    {0x0036, "PR_SENSITIVITY"},
    {0x0037, "PR_SUBJECT"},
    {0x0039, "PR_CLIENT_SUBMIT_TIME"},
    {0x003D, "PR_SUBJECT_PREFIX"},
    {0x003F, "PR_RECEIVED_BY_ENTRYID"},
    {0x0040, "PR_RECEIVED_BY_NAME"},
    {0x0041, "PR_SENT_REPRESENTING_ENTRYID"},
    {0x0042, "PR_SENT_REPRESENTING_NAME"},
    {0x004F, "PR_REPLY_RECIPIENT_ENTRIES"},
    {0x0050, "PR_REPLY_RECIPIENT_NAMES"},
    {0x0064, "PR_SENT_REPRESENTING_ADDRTYPE"},
    {0x0065, "PR_SENT_REPRESENTING_EMAIL_ADDRESS"},
    {0x0070, "PR_CONVERSATION_TOPIC"},
    {0x0071, "PR_CONVERSATION_INDEX"},
    {0x007D, "PR_TRANSPORT_MESSAGE_HEADERS"},
    {0x0C06, "PR_PHYSICAL_DELIVERY_BUREAU_FAX_DELIVERY"},
    {0x0C0D, "PR_PHYSICAL_DELIVERY_MODE"},
    {0x0C14, "PR_REGISTERED_MAIL_TYPE"},
    {0x0C15, "PR_RECIPIENT_TYPE"},
    {0x0C17, "PR_REPLY_REQUESTED"},
    {0x0C19, "PR_SENDER_ENTRYID"},
    {0x0C1A, "PR_SENDER_NAME"},
    {0x0C1B, "PR_SUPPLEMENTARY_INFO"},
    {0x0C1D, "PR_SENDER_SEARCH_KEY"},
    {0x0C1E, "PR_SENDER_ADDRTYPE"},
    {0x0C1F, "PR_SENDER_EMAIL_ADDRESS"},
    {0x0E01, "PR_DELETE_AFTER_SUBMIT"},
    {0x0E02, "PR_DISPLAY_BCC"},
    {0x0E03, "PR_DISPLAY_CC"},
    {0x0E04, "PR_DISPLAY_TO"},
    {0x0E05, "PR_PARENT_DISPLAY"},
    {0x0E06, "PR_MESSAGE_DELIVERY_TIME"},
    {0x0E07, "PR_MESSAGE_FLAGS"},
    {0x0E08, "PR_MESSAGE_SIZE"},
    {0x0E09, "PR_PARENT_ENTRYID"},
    {0x0E0A, "PR_SENTMAIL_ENTRYID"},
    {0x0E0F, "PR_RESPONSIBILITY"},
    {0x0E12, "PR_MESSAGE_RECIPIENTS"},
    {0x0E13, "PR_MESSAGE_ATTACHMENTS"},
    {0x0E17, "PR_MSG_STATUS"},
    {0x0E1B, "PR_HASATTACH"},
    {0x0E1D, "PR_NORMALIZED_SUBJECT"},
    {0x0E20, "PR_ATTACH_SIZE"},
    {0x0E21, "PR_ATTACH_NUM"},
    {0x0FF4, "PR_ACCESS"},
    {0x0FF5, "PR_ROW_TYPE"},
    {0x0FF6, "PR_INSTANCE_KEY"},
    {0x0FF7, "PR_ACCESS_LEVEL"},
    {0x0FF8, "PR_MAPPING_SIGNATURE"},
    {0x0FF9, "PR_RECORD_KEY"},
    {0x0FFA, "PR_STORE_RECORD_KEY"},
    {0x0FFB, "PR_STORE_ENTRYID"},
    {0x0FFC, "PR_MINI_ICON"},
    {0x0FFD, "PR_ICON"},
    {0x0FFE, "PR_OBJECT_TYPE"},
    {0x0FFF, "PR_ENTRYID"},
    {0x1000, "PR_BODY"},
    {0x3000, "PR_ROWID"},
    {0x3001, "PR_DISPLAY_NAME"},
    {0x3002, "PR_ADDRTYPE"},
    {0x3003, "PR_EMAIL_ADDRESS"},
    {0x3004, "PR_COMMENT"},
    {0x3005, "PR_DEPTH"},
    {0x3006, "PR_PROVIDER_DISPLAY"},
    {0x3007, "PR_CREATION_TIME"},
    {0x3008, "PR_LAST_MODIFICATION_TIME"},
    {0x3009, "PR_RESOURCE_FLAGS"},
    {0x300A, "PR_PROVIDER_DLL_NAME"},
    {0x300B, "PR_SEARCH_KEY"},
    {0x300C, "PR_PROVIDER_UID"},
    {0x300D, "PR_PROVIDER_ORDINAL"},
    {0x340D, "PR_STORE_SUPPORT_MASK"},
    {0x340E, "PR_STORE_STATE"},
    {0x3600, "PR_CONTAINER_FLAGS"},
    {0x3601, "PR_FOLDER_TYPE"},
    {0x3602, "PR_CONTENT_COUNT"},
    {0x3603, "PR_CONTENT_UNREAD"},
    {0x3604, "PR_CREATE_TEMPLATES"},
    {0x3605, "PR_DETAILS_TABLE"},
    {0x3607, "PR_SEARCH"},
    {0x3609, "PR_SELECTABLE"},
    {0x360A, "PR_SUBFOLDERS"},
    {0x360B, "PR_STATUS"},
    {0x360C, "PR_ANR"},
    {0x360D, "PR_CONTENTS_SORT_ORDER"},
    {0x360E, "PR_CONTAINER_HIERARCHY"},
    {0x360F, "PR_CONTAINER_CONTENTS"},
    {0x3610, "PR_FOLDER_ASSOCIATED_CONTENTS"},
    {0x3611, "PR_DEF_CREATE_DL"},
    {0x3612, "PR_DEF_CREATE_MAILUSER"},
    {0x3613, "PR_CONTAINER_CLASS"},
    {0x3614, "PR_CONTAINER_MODIFY_VERSION"},
    {0x3615, "PR_AB_PROVIDER_ID"},
    {0x3616, "PR_DEFAULT_VIEW_ENTRYID"},
    {0x3617, "PR_ASSOC_CONTENT_COUNT"},
    {0x3701, "PR_ATTACH_DATA"},
    {0x3702, "PR_ATTACH_ENCODING"},
    {0x3703, "PR_ATTACH_EXTENSION"},
    {0x3704, "PR_ATTACH_FILENAME"},
    {0x3705, "PR_ATTACH_METHOD"},
    {0x3707, "PR_ATTACH_LONG_FILENAME"},
    {0x3900, "PR_DISPLAY_TYPE"},
    {0x3902, "PR_TEMPLATEID"},
    {0x3904, "PR_PRIMARY_CAPABILITY"},
    {0x39FE, "PR_SMTP_ADDRESS"},
    {0x39FF, "PR_7BIT_DISPLAY_NAME"},
    {0x3A00, "PR_ACCOUNT"},
    {0x3A01, "PR_ALTERNATE_RECIPIENT"},
    {0x3A02, "PR_CALLBACK_TELEPHONE_NUMBER"},
    {0x3A03, "PR_CONVERSION_PROHIBITED"},
    {0x3A04, "PR_DISCLOSE_RECIPIENTS"},
    {0x3A05, "PR_GENERATION"},
    {0x3A06, "PR_GIVEN_NAME"},
    {0x3A07, "PR_GOVERNMENT_ID_NUMBER"},
    {0x3A08, "PR_BUSINESS_TELEPHONE_NUMBER"},
    {0x3A09, "PR_HOME_TELEPHONE_NUMBER"},
    {0x3A0A, "PR_INITIALS"},
    {0x3A0B, "PR_KEYWORD"},
    {0x3A0C, "PR_LANGUAGE"},
    {0x3A0D, "PR_LOCATION"},
    {0x3A0E, "PR_MAIL_PERMISSION"},
    {0x3A0F, "PR_MHS_COMMON_NAME"},
    {0x3A10, "PR_ORGANIZATIONAL_ID_NUMBER"},
    {0x3A11, "PR_SURNAME"},
    {0x3A12, "PR_ORIGINAL_ENTRYID"},
    {0x3A13, "PR_ORIGINAL_DISPLAY_NAME"},
    {0x3A14, "PR_ORIGINAL_SEARCH_KEY"},
    {0x3A15, "PR_POSTAL_ADDRESS"},
    {0x3A16, "PR_COMPANY_NAME"},
    {0x3A17, "PR_TITLE"},
    {0x3A18, "PR_DEPARTMENT_NAME"},
    {0x3A19, "PR_OFFICE_LOCATION"},
    {0x3A1A, "PR_PRIMARY_TELEPHONE_NUMBER"},
    {0x3A1B, "PR_BUSINESS2_TELEPHONE_NUMBER"},
    {0x3A1C, "PR_MOBILE_TELEPHONE_NUMBER"},
    {0x3A1D, "PR_RADIO_TELEPHONE_NUMBER"},
    {0x3A1E, "PR_CAR_TELEPHONE_NUMBER"},
    {0x3A1F, "PR_OTHER_TELEPHONE_NUMBER"},
    {0x3A20, "PR_TRANSMITABLE_DISPLAY_NAME"},
    {0x3A21, "PR_PAGER_TELEPHONE_NUMBER"},
    {0x3A22, "PR_USER_CERTIFICATE"},
    {0x3A23, "PR_PRIMARY_FAX_NUMBER"},
    {0x3A24, "PR_BUSINESS_FAX_NUMBER"},
    {0x3A25, "PR_HOME_FAX_NUMBER"},
    {0x3A26, "PR_COUNTRY"},
    {0x3A27, "PR_LOCALITY"},
    {0x3A28, "PR_STATE_OR_PROVINCE"},
    {0x3A29, "PR_STREET_ADDRESS"},
    {0x3A2A, "PR_POSTAL_CODE"},
    {0x3A2B, "PR_POST_OFFICE_BOX"},
    {0x3A2C, "PR_TELEX_NUMBER"},
    {0x3A2D, "PR_ISDN_NUMBER"},
    {0x3A2E, "PR_ASSISTANT_TELEPHONE_NUMBER"},
    {0x3A2F, "PR_HOME2_TELEPHONE_NUMBER"},
    {0x3A30, "PR_ASSISTANT"},
    {0x3A40, "PR_SEND_RICH_INFO"},
    {0x3A41, "PR_WEDDING_ANNIVERSARY"},
    {0x3A42, "PR_BIRTHDAY"},
    {0x3A43, "PR_HOBBIES"},
    {0x3A44, "PR_MIDDLE_NAME"},
    {0x3A45, "PR_DISPLAY_NAME_PREFIX"},
    {0x3A46, "PR_PROFESSION"},
    {0x3A47, "PR_PREFERRED_BY_NAME"},
    {0x3A48, "PR_SPOUSE_NAME"},
    {0x3A49, "PR_COMPUTER_NETWORK_NAME"},
    {0x3A4A, "PR_CUSTOMER_ID"},
    {0x3A4B, "PR_TTYTDD_PHONE_NUMBER"},
    {0x3A4C, "PR_FTP_SITE"},
    {0x3A4D, "PR_GENDER"},
    {0x3A4E, "PR_MANAGER_NAME"},
    {0x3A4F, "PR_NICKNAME"},
    {0x3A50, "PR_PERSONAL_HOME_PAGE"},
    {0x3A51, "PR_BUSINESS_HOME_PAGE"},
    {0x3A52, "PR_CONTACT_VERSION"},
    {0x3A53, "PR_CONTACT_ENTRYIDS"},
    {0x3A54, "PR_CONTACT_ADDRTYPES"},
    {0x3A55, "PR_CONTACT_DEFAULT_ADDRESS_INDEX"},
    {0x3A56, "PR_CONTACT_EMAIL_ADDRESSES"},
    {0x3A57, "PR_COMPANY_MAIN_PHONE_NUMBER"},
    {0x3A58, "PR_CHILDRENS_NAMES"},
    {0x3A59, "PR_HOME_ADDRESS_CITY"},
    {0x3A5A, "PR_HOME_ADDRESS_COUNTRY"},
    {0x3A5B, "PR_HOME_ADDRESS_POSTAL_CODE"},
    {0x3A5C, "PR_HOME_ADDRESS_STATE_OR_PROVINCE"},
    {0x3A5D, "PR_HOME_ADDRESS_STREET"},
    {0x3A5E, "PR_HOME_ADDRESS_POST_OFFICE_BOX"},
    {0x3A5F, "PR_OTHER_ADDRESS_CITY"},
    {0x3A60, "PR_OTHER_ADDRESS_COUNTRY"},
    {0x3A61, "PR_OTHER_ADDRESS_POSTAL_CODE"},
    {0x3A62, "PR_OTHER_ADDRESS_STATE_OR_PROVINCE"},
    {0x3A63, "PR_OTHER_ADDRESS_STREET"},
    {0x3A64, "PR_OTHER_ADDRESS_POST_OFFICE_BOX"},
    {0x3A70, "PR_USER_X509_CERTIFICATE"},
    {0x3A71, "PR_SEND_INTERNET_ENCODING"},
    {0x3D00, "PR_STORE_PROVIDERS"},
    {0x3D01, "PR_AB_PROVIDERS"},
    {0x3D02, "PR_TRANSPORT_PROVIDERS"},
    {0x3D04, "PR_DEFAULT_PROFILE"},
    {0x3D05, "PR_AB_SEARCH_PATH"},
    {0x3D06, "PR_AB_DEFAULT_DIR"},
    {0x3D07, "PR_AB_DEFAULT_PAB"},
    {0x3D08, "PR_FILTERING_HOOKS"},
    {0x3D09, "PR_SERVICE_NAME"},
    {0x3D0A, "PR_SERVICE_DLL_NAME"},
    {0x3D0B, "PR_SERVICE_ENTRY_NAME"},
    {0x3D0C, "PR_SERVICE_UID"},
    {0x3D0D, "PR_SERVICE_EXTRA_UIDS"},
    {0x3D0E, "PR_SERVICES"},
    {0x3D0F, "PR_SERVICE_SUPPORT_FILES"},
    {0x3D10, "PR_SERVICE_DELETE_FILES"},
    {0x3D11, "PR_AB_SEARCH_PATH_UPDATE"},
    {0x3D12, "PR_PROFILE_NAME"},
    {0x3DF0, "PR_ORV_SERVICE_KEY"},
    {0x3DF1, "PR_ORV_SERVICE_STATUS"},
    {0x3DF2, "PR_ORV_PROFILE_STATUS"},
    {0x3DF3, "PR_ORV_PROBLEM_CODE"},
    {0x3DF4, "PR_ORV_PROBLEM_TEXT"},
    {0x3DF5, "PR_ORV_CATALOGUE_LINE"},
    {0x3DF6, "PR_ORV_CATALOGUE_SECTION"},
    {0x3DF7, "PR_ORV_CATALOGUE_DEFAULT"},
    {0x3DF8, "PR_ORV_CATALOGUE_REASON"},
    {0x3DF9, "PR_ORV_CATALOGUE_STATUS"},
    {0x3DFA, "PR_ORV_CATALOGUE_TEXT"},
    {0x3E00, "PR_IDENTITY_DISPLAY"},
    {0x3E01, "PR_IDENTITY_ENTRYID"},
    {0x3E02, "PR_RESOURCE_METHODS"},
    {0x3E03, "PR_RESOURCE_TYPE"},
    {0x3E04, "PR_STATUS_CODE"},
    {0x3E05, "PR_IDENTITY_SEARCH_KEY"},
    {0x3E06, "PR_OWN_STORE_ENTRYID"},
    {0x3E07, "PR_RESOURCE_PATH"},
    {0x3E08, "PR_STATUS_STRING"},
    {0x6600, "PR_ORV_BOOK_FILE"},
    {0x6601, "PR_ORV_SKIPPED_RECORDS"},
    {0x6602, "PR_ORV_BOOK_STATUS"},
    {0x6610, "PR_ORV_CONTACTS"},
    {0x6611, "PR_ORV_DELETED_TIME"},
    {0x6612, "PR_ORV_CONTACT_UID"},
    {0x6613, "PR_ORV_CONTACT_VERSION"},
    {0x6614, "PR_ORV_BOOK_UID"},
    {0x6615, "PR_ORV_BOOK_BACKUPS"},
    {0x6616, "PR_ORV_CONTACT_ENTRYID"},
    {0x6617, "PR_ORV_CONTACT_CARD"},
    {0x6618, "PR_ORV_BOOK_FOUND"},
    {0x6619, "PR_ORV_BOOK_NAMES"},
});
static_assert(IsStrictlySorted(kProps));

constexpr auto kTypes = std::to_array<NumberName>({
    {0x0000, "PT_UNSPECIFIED"}, {0x0001, "PT_NULL"},       {0x0002, "PT_I2"},
    {0x0003, "PT_LONG"},        {0x0004, "PT_R4"},         {0x0005, "PT_DOUBLE"},
    {0x0006, "PT_CURRENCY"},    {0x0007, "PT_APPTIME"},    {0x000A, "PT_ERROR"},
    {0x000B, "PT_BOOLEAN"},     {0x000D, "PT_OBJECT"},     {0x0014, "PT_I8"},
    {0x001E, "PT_STRING8"},     {0x001F, "PT_UNICODE"},    {0x0040, "PT_SYSTIME"},
    {0x0048, "PT_CLSID"},       {0x0102, "PT_BINARY"},     {0x1002, "PT_MV_I2"},
    {0x1003, "PT_MV_LONG"},     {0x1004, "PT_MV_R4"},      {0x1005, "PT_MV_DOUBLE"},
    {0x1006, "PT_MV_CURRENCY"}, {0x1007, "PT_MV_APPTIME"}, {0x1014, "PT_MV_I8"},
    {0x101E, "PT_MV_STRING8"},  {0x101F, "PT_MV_UNICODE"}, {0x1040, "PT_MV_SYSTIME"},
    {0x1048, "PT_MV_CLSID"},    {0x1102, "PT_MV_BINARY"},
});
static_assert(IsStrictlySorted(kTypes));

std::string Hex(const char* format, uint32_t number) {
  char text[16];
  std::snprintf(text, sizeof(text), format, static_cast<unsigned>(number));
  return text;
}

std::string_view TypeSuffix(uint32_t tag) {
  if (tag == kServiceEntryName) return {};
  switch (tag & 0xFFFFu & ~kMultiValued) {
    case kTypeError:
      return " [PT_ERROR]";
    case kTypeString8:
      return "_A";
    case kTypeUnicode:
      return "_W";
    default:
      return {};
  }
}

}  // namespace

uint16_t FindPropId(std::string_view name) {
  const auto found =
      std::find_if(kProps.begin(), kProps.end(), [&](const NumberName& each) { return each.name == name; });
  return found != kProps.end() ? static_cast<uint16_t>(found->number) : uint16_t{0};
}

std::string_view FindPropName(uint16_t id) { return FindName(kProps, id); }
std::string_view FindPropTypeName(uint16_t type) { return FindName(kTypes, type); }

std::string PropTagName(uint32_t tag) {
  const std::string number = Hex("0x%08X", tag);
  const std::string_view name = FindPropName(static_cast<uint16_t>(tag >> 16));
  if (name.empty()) return number;
  return std::string(name) + std::string(TypeSuffix(tag)) + " (" + number + ")";
}

std::string PropTypeName(uint32_t type) {
  const std::string number = Hex("0x%04X", type);
  const std::string_view name =
      type <= 0xFFFF ? FindPropTypeName(static_cast<uint16_t>(type)) : std::string_view();
  return name.empty() ? number : std::string(name) + " (" + number + ")";
}

}  // namespace diag
