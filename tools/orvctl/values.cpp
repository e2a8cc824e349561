// Property values in text and JSON, and property values out of text.
#include "tools/orvctl/values.h"

#include <charconv>
#include <cstdio>

#include "diag/names.h"
#include "formats/text_codec.h"

namespace orvctl {
namespace {

struct NumberText {
  ULONG number;
  const char* text;
};

constexpr NumberText kObjectTypes[] = {
    {MAPI_STORE, "store"},       {MAPI_ADDRBOOK, "address book"}, {MAPI_FOLDER, "folder"},
    {MAPI_ABCONT, "container"},  {MAPI_MESSAGE, "message"},       {MAPI_MAILUSER, "user"},
    {MAPI_ATTACH, "attachment"}, {MAPI_DISTLIST, "list"},         {MAPI_PROFSECT, "section"},
    {MAPI_STATUS, "status"},     {MAPI_SESSION, "session"},       {MAPI_FORMINFO, "form"}};
constexpr NumberText kRecipientTypes[] = {
    {MAPI_ORIG, "from"}, {MAPI_TO, "to"}, {MAPI_CC, "cc"}, {MAPI_BCC, "bcc"}};
constexpr NumberText kContainerFlags[] = {
    {AB_RECIPIENTS, "recipients"},     {AB_SUBCONTAINERS, "subcontainers"}, {AB_MODIFIABLE, "modifiable"},
    {AB_UNMODIFIABLE, "unmodifiable"}, {AB_FIND_ON_OPEN, "find-on-open"},   {AB_NOT_DEFAULT, "not-default"}};
constexpr NumberText kResourceFlags[] = {{SERVICE_DEFAULT_STORE, "default-store"},
                                         {SERVICE_SINGLE_COPY, "single-copy"},
                                         {SERVICE_CREATE_WITH_STORE, "create-with-store"},
                                         {SERVICE_PRIMARY_IDENTITY, "primary-identity"},
                                         {SERVICE_NO_PRIMARY_IDENTITY, "no-primary-identity"},
                                         {ORV_SERVICE_NOT_REMOVABLE, "not-removable"},
                                         {ORV_SERVICE_NOT_CONFIGURABLE, "not-configurable"}};

constexpr LONGLONG kTicksPerSecond = 10'000'000;
constexpr LONGLONG kSecondsFrom1601To1970 = 11'644'473'600;
constexpr LONGLONG kSecondsPerDay = 86'400;

template <size_t kSize>
std::string NameIn(const NumberText (&table)[kSize], ULONG number) {
  for (const NumberText& entry : table) {
    if (entry.number == number) return entry.text;
  }
  return std::to_string(number);
}

// Bits without a name are shown together, as one number.
template <size_t kSize>
std::string BitNames(const NumberText (&table)[kSize], ULONG bits) {
  std::string names;
  const auto append = [&](const char* name) { names.append(names.empty() ? "" : " ").append(name); };
  for (const NumberText& entry : table) {
    if ((bits & entry.number) != 0) append(entry.text);
    bits &= ~entry.number;
  }
  char rest[16];
  std::snprintf(rest, sizeof(rest), "0x%X", static_cast<unsigned>(bits));
  if (bits != 0) append(rest);
  return names;
}

std::string NarrowToUtf8(const char* text) { return text ? formats::DecodeCharset(text, {}) : std::string(); }
std::string WideToUtf8(const WCHAR* text) { return text ? ToUtf8(text) : std::string(); }

// Days since 1970 to a date, by the calendar's 400-year cycle of 146097 days that begins on 1 March.
std::string DateText(LONGLONG days) {
  days += 719'468;
  const LONGLONG era = (days >= 0 ? days : days - 146'096) / 146'097;
  const LONGLONG dayOfEra = days - era * 146'097;
  const LONGLONG yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36'524 - dayOfEra / 146'096) / 365;
  const LONGLONG dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const LONGLONG monthFromMarch = (5 * dayOfYear + 2) / 153;
  const LONGLONG month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
  char text[48];
  std::snprintf(text, sizeof(text), "%04lld-%02lld-%02lld",
                static_cast<long long>(yearOfEra + era * 400 + (month <= 2)), static_cast<long long>(month),
                static_cast<long long>(dayOfYear - (153 * monthFromMarch + 2) / 5 + 1));
  return text;
}

std::string TimeText(const FILETIME& time) {
  const auto ticks =
      static_cast<LONGLONG>(static_cast<ULONGLONG>(time.dwHighDateTime) << 32 | time.dwLowDateTime);
  const LONGLONG seconds = ticks / kTicksPerSecond - kSecondsFrom1601To1970;
  const LONGLONG days = (seconds >= 0 ? seconds : seconds - kSecondsPerDay + 1) / kSecondsPerDay;
  const LONGLONG ofDay = seconds - days * kSecondsPerDay;
  char text[48];
  std::snprintf(text, sizeof(text), "T%02lld:%02lld:%02lldZ", static_cast<long long>(ofDay / 3600),
                static_cast<long long>(ofDay / 60 % 60), static_cast<long long>(ofDay % 60));
  return DateText(days) + text;
}

std::string GuidText(const GUID& guid) {
  char text[48];
  std::snprintf(text, sizeof(text), "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                static_cast<unsigned>(guid.Data1), guid.Data2, guid.Data3, guid.Data4[0], guid.Data4[1],
                guid.Data4[2], guid.Data4[3], guid.Data4[4], guid.Data4[5], guid.Data4[6], guid.Data4[7]);
  return text;
}

std::string GuidText(const GUID* guid) { return guid ? GuidText(*guid) : std::string(); }
std::string BinaryText(const SBinary& bytes) { return ToHex(bytes.lpb, bytes.cb); }

template <class Number>
Cell DecimalCell(Number value) {
  char text[32];
  std::snprintf(text, sizeof(text), "%.15g", static_cast<double>(value));
  return Cell(text, static_cast<double>(value));
}

Cell IntegerCell(LONGLONG value) { return Cell(std::to_string(value), value); }
Cell LargeCell(const LARGE_INTEGER& value) { return IntegerCell(value.QuadPart); }
Cell CurrencyCell(const CURRENCY& value) {
  constexpr double kPerUnit = 10'000;
  return DecimalCell(static_cast<double>(value.int64) / kPerUnit);
}
Cell BooleanCell(unsigned short value) { return Cell(value ? "true" : "false", value != 0); }
Cell ErrorCell(SCODE value) { return Cell(diag::ResultName(static_cast<uint32_t>(value))); }

// Numbers that mean something show their meaning to people; machines get the number.
Cell LongCell(ULONG tag, LONG value) {
  const auto bits = static_cast<ULONG>(value);
  std::string meaning;
  if (tag == PR_OBJECT_TYPE) meaning = ObjectTypeName(bits);
  if (tag == PR_RECIPIENT_TYPE) meaning = RecipientTypeName(bits);
  if (tag == PR_CONTAINER_FLAGS) meaning = ContainerFlagNames(bits);
  if (tag == PR_RESOURCE_FLAGS) meaning = ResourceFlagNames(bits);
  Cell cell = IntegerCell(value);
  if (!meaning.empty() && meaning != cell.text) cell.text.append(" (").append(meaning).append(")");
  return cell;
}

template <class T, class ToCell>
Cell ArrayCell(ULONG count, const T* items, ToCell toCell) {
  Cell all("", Json::array());
  for (ULONG i = 0; items && i < count; ++i) {
    Cell one = toCell(items[i]);
    all.text.append(i ? "; " : "").append(one.text);
    all.json.push_back(std::move(one.json));
  }
  return all;
}

// How the values of one type are shown.
struct TypeForm {
  ULONG type;
  Cell (*show)(const SPropValue& value);
};

// A type by the member of the union that holds it, single and multi-valued.
#define ORV_SINGLE(type, member, toCell)                                             \
  {                                                                                  \
    type, [](const SPropValue& value) -> Cell { return toCell(value.Value.member); } \
  }
#define ORV_MULTIPLE(type, list, items, toCell)                          \
  {                                                                      \
    type, [](const SPropValue& value) -> Cell {                          \
      return ArrayCell(value.Value.list.cValues, value.Value.list.items, \
                       [](const auto& item) { return toCell(item); });   \
    }                                                                    \
  }

constexpr TypeForm kTypeForms[] = {
    {PT_NULL, [](const SPropValue&) { return Cell("", nullptr); }},
    {PT_OBJECT, [](const SPropValue&) { return Cell("(object)", nullptr); }},
    {PT_LONG, [](const SPropValue& value) { return LongCell(value.ulPropTag, value.Value.l); }},
    ORV_SINGLE(PT_I2, i, IntegerCell),
    ORV_SINGLE(PT_I8, li.QuadPart, IntegerCell),
    ORV_SINGLE(PT_R4, flt, DecimalCell),
    ORV_SINGLE(PT_DOUBLE, dbl, DecimalCell),
    ORV_SINGLE(PT_APPTIME, dbl, DecimalCell),
    ORV_SINGLE(PT_CURRENCY, cur, CurrencyCell),
    ORV_SINGLE(PT_ERROR, err, ErrorCell),
    ORV_SINGLE(PT_BOOLEAN, b, BooleanCell),
    ORV_SINGLE(PT_STRING8, lpszA, NarrowToUtf8),
    ORV_SINGLE(PT_UNICODE, lpszW, WideToUtf8),
    ORV_SINGLE(PT_SYSTIME, ft, TimeText),
    ORV_SINGLE(PT_CLSID, lpguid, GuidText),
    ORV_SINGLE(PT_BINARY, bin, BinaryText),
    ORV_MULTIPLE(PT_MV_I2, MVi, lpi, IntegerCell),
    ORV_MULTIPLE(PT_MV_LONG, MVl, lpl, IntegerCell),
    ORV_MULTIPLE(PT_MV_I8, MVli, lpli, LargeCell),
    ORV_MULTIPLE(PT_MV_R4, MVflt, lpflt, DecimalCell),
    ORV_MULTIPLE(PT_MV_DOUBLE, MVdbl, lpdbl, DecimalCell),
    ORV_MULTIPLE(PT_MV_APPTIME, MVdbl, lpdbl, DecimalCell),
    ORV_MULTIPLE(PT_MV_CURRENCY, MVcur, lpcur, CurrencyCell),
    ORV_MULTIPLE(PT_MV_STRING8, MVszA, lppszA, NarrowToUtf8),
    ORV_MULTIPLE(PT_MV_UNICODE, MVszW, lppszW, WideToUtf8),
    ORV_MULTIPLE(PT_MV_SYSTIME, MVft, lpft, TimeText),
    ORV_MULTIPLE(PT_MV_CLSID, MVguid, lpguid, GuidText),
    ORV_MULTIPLE(PT_MV_BINARY, MVbin, lpbin, BinaryText)};

#undef ORV_SINGLE
#undef ORV_MULTIPLE

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const char folded = formats::FoldAscii(c);
  return folded >= 'a' && folded <= 'f' ? folded - 'a' + 10 : -1;
}

template <class T>
bool ReadNumber(std::string_view text, T& number) {
  const bool isHex = text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X";
  if (isHex) text.remove_prefix(2);
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, isHex ? 16 : 10);
  return error == std::errc() && end == text.data() + text.size();
}

}  // namespace

std::string ToUtf8(std::basic_string_view<WCHAR> text) {
  return formats::ToUtf8(std::u16string(text.begin(), text.end()));
}

WideString ToWide(std::string_view utf8) {
  const std::u16string text = formats::ToUtf16(utf8);
  return WideString(text.begin(), text.end());
}

std::string ToHex(const BYTE* bytes, size_t count) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (size_t i = 0; bytes && i < count; ++i) {
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 15];
  }
  return text;
}

std::string ToHex(const Bytes& bytes) { return ToHex(bytes.data(), bytes.size()); }

std::optional<Bytes> FromHex(std::string_view text) {
  if (text.size() % 2 != 0) return std::nullopt;
  Bytes bytes;
  for (size_t i = 0; i < text.size(); i += 2) {
    const int high = HexDigit(text[i]);
    const int low = HexDigit(text[i + 1]);
    if (high < 0 || low < 0) return std::nullopt;
    bytes.push_back(static_cast<BYTE>(high * 16 + low));
  }
  return bytes;
}

Cell ValueCell(const SPropValue& value) {
  const ULONG type = PROP_TYPE(value.ulPropTag);
  for (const TypeForm& form : kTypeForms) {
    if (form.type == type) return form.show(value);
  }
  return Cell(diag::PropTypeName(type), nullptr);
}

std::string TextOf(const orv::sdk::ValueView& values, ULONG tag) {
  const SPropValue* value = values.Find(tag);
  if (!value) value = values.Find(CHANGE_PROP_TYPE(tag, PT_STRING8));
  return value ? ValueCell(*value).text : std::string();
}

Bytes BytesOf(const orv::sdk::ValueView& values, ULONG tag) {
  const SBinary bytes = values.Binary(tag);
  return Bytes(bytes.lpb, bytes.lpb + bytes.cb);
}

std::string ContainerFlagNames(ULONG flags) { return BitNames(kContainerFlags, flags); }
std::string ResourceFlagNames(ULONG flags) { return BitNames(kResourceFlags, flags); }
std::string ObjectTypeName(ULONG type) { return NameIn(kObjectTypes, type); }
std::string RecipientTypeName(ULONG type) { return NameIn(kRecipientTypes, type); }

std::optional<OwnedValue> OwnedValue::Parse(std::string_view assignment) {
  const size_t equals = assignment.find('=');
  if (equals == std::string_view::npos) return std::nullopt;
  OwnedValue value;
  const bool readable = ReadNumber(assignment.substr(0, equals), value.tag_) &&
                        PROP_ID(value.tag_) != PROP_ID_NULL && value.Read(assignment.substr(equals + 1));
  if (!readable) return std::nullopt;
  return value;
}

OwnedValue OwnedValue::String(ULONG tag, std::string_view utf8) {
  OwnedValue value;
  value.tag_ = tag;
  value.content_ = ToWide(utf8);
  return value;
}

bool OwnedValue::Read(std::string_view text) {
  const ULONG type = PROP_TYPE(tag_);
  if (type == PT_UNICODE) content_ = ToWide(text);
  if (type == PT_STRING8) content_ = std::string(text);
  if (type == PT_UNICODE || type == PT_STRING8) return true;
  if (type == PT_BOOLEAN) return ReadFlag(text);
  if (type == PT_BINARY) {
    std::optional<Bytes> bytes = FromHex(text);
    if (bytes) content_ = *std::move(bytes);
    return bytes.has_value();
  }
  LONGLONG number = 0;
  if ((type != PT_I8 && type != PT_LONG) || !ReadNumber(text, number)) return false;
  content_ = number;
  return type == PT_I8 || (number >= INT32_MIN && number <= UINT32_MAX);
}

bool OwnedValue::ReadFlag(std::string_view text) {
  const bool isSet = text == "true" || text == "1";
  content_ = LONGLONG{isSet};
  return isSet || text == "false" || text == "0";
}

SPropValue OwnedValue::Get() {
  SPropValue value = {};
  value.ulPropTag = tag_;
  // The members of the union begin at one place, so a small number is the low part of a large one.
  if (const auto* number = std::get_if<LONGLONG>(&content_)) value.Value.li.QuadPart = *number;
  if (auto* narrow = std::get_if<std::string>(&content_)) value.Value.lpszA = narrow->data();
  if (auto* wide = std::get_if<WideString>(&content_)) value.Value.lpszW = wide->data();
  if (auto* bytes = std::get_if<Bytes>(&content_))
    value.Value.bin = {static_cast<ULONG>(bytes->size()), bytes->data()};
  return value;
}

}  // namespace orvctl
