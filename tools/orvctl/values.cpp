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

std::string GuidText(const GUID* guid) {
  if (!guid) return {};
  char text[48];
  std::snprintf(text, sizeof(text), "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                static_cast<unsigned>(guid->Data1), guid->Data2, guid->Data3, guid->Data4[0], guid->Data4[1],
                guid->Data4[2], guid->Data4[3], guid->Data4[4], guid->Data4[5], guid->Data4[6],
                guid->Data4[7]);
  return text;
}

Cell DecimalCell(double value) {
  char text[32];
  std::snprintf(text, sizeof(text), "%.15g", value);
  return Cell(text, value);
}

Cell IntegerCell(LONGLONG value) { return Cell(std::to_string(value), value); }

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

Cell SingleCell(const SPropValue& value) {
  const auto& v = value.Value;
  switch (PROP_TYPE(value.ulPropTag)) {
    case PT_NULL:
      return Cell("", nullptr);
    case PT_I2:
      return IntegerCell(v.i);
    case PT_LONG:
      return LongCell(value.ulPropTag, v.l);
    case PT_R4:
      return DecimalCell(static_cast<double>(v.flt));
    case PT_DOUBLE:
    case PT_APPTIME:
      return DecimalCell(v.dbl);
    case PT_CURRENCY:
      return DecimalCell(static_cast<double>(v.cur.int64) / 10'000);
    case PT_ERROR:
      return Cell(diag::ResultName(static_cast<uint32_t>(v.err)));
    case PT_BOOLEAN:
      return Cell(v.b ? "true" : "false", v.b != 0);
    case PT_OBJECT:
      return Cell("(object)", nullptr);
    case PT_I8:
      return IntegerCell(v.li.QuadPart);
    case PT_STRING8:
      return Cell(NarrowToUtf8(v.lpszA));
    case PT_UNICODE:
      return Cell(WideToUtf8(v.lpszW));
    case PT_SYSTIME:
      return Cell(TimeText(v.ft));
    case PT_CLSID:
      return Cell(GuidText(v.lpguid));
    case PT_BINARY:
      return Cell(ToHex(v.bin.lpb, v.bin.cb));
    default:
      return Cell(diag::PropTypeName(PROP_TYPE(value.ulPropTag)), nullptr);
  }
}

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
  const auto& v = value.Value;
  switch (PROP_TYPE(value.ulPropTag)) {
    case PT_MV_I2:
      return ArrayCell(v.MVi.cValues, v.MVi.lpi, [](short item) { return IntegerCell(item); });
    case PT_MV_LONG:
      return ArrayCell(v.MVl.cValues, v.MVl.lpl, [](LONG item) { return IntegerCell(item); });
    case PT_MV_R4:
      return ArrayCell(v.MVflt.cValues, v.MVflt.lpflt,
                       [](float item) { return DecimalCell(static_cast<double>(item)); });
    case PT_MV_DOUBLE:
    case PT_MV_APPTIME:
      return ArrayCell(v.MVdbl.cValues, v.MVdbl.lpdbl, DecimalCell);
    case PT_MV_CURRENCY:
      return ArrayCell(v.MVcur.cValues, v.MVcur.lpcur, [](const CURRENCY& item) {
        return DecimalCell(static_cast<double>(item.int64) / 10'000);
      });
    case PT_MV_I8:
      return ArrayCell(v.MVli.cValues, v.MVli.lpli,
                       [](const LARGE_INTEGER& item) { return IntegerCell(item.QuadPart); });
    case PT_MV_STRING8:
      return ArrayCell(v.MVszA.cValues, v.MVszA.lppszA,
                       [](const char* item) { return Cell(NarrowToUtf8(item)); });
    case PT_MV_UNICODE:
      return ArrayCell(v.MVszW.cValues, v.MVszW.lppszW,
                       [](const WCHAR* item) { return Cell(WideToUtf8(item)); });
    case PT_MV_SYSTIME:
      return ArrayCell(v.MVft.cValues, v.MVft.lpft,
                       [](const FILETIME& item) { return Cell(TimeText(item)); });
    case PT_MV_CLSID:
      return ArrayCell(v.MVguid.cValues, v.MVguid.lpguid,
                       [](const GUID& item) { return Cell(GuidText(&item)); });
    case PT_MV_BINARY:
      return ArrayCell(v.MVbin.cValues, v.MVbin.lpbin,
                       [](const SBinary& item) { return Cell(ToHex(item.lpb, item.cb)); });
    default:
      return SingleCell(value);
  }
}

const SPropValue* FindValue(const SPropValue* values, ULONG count, ULONG tag) {
  for (ULONG i = 0; values && i < count; ++i) {
    if (values[i].ulPropTag == tag) return &values[i];
  }
  return nullptr;
}

std::string StringOf(const SPropValue* values, ULONG count, ULONG tag) {
  const SPropValue* value = FindValue(values, count, tag);
  return value ? SingleCell(*value).text : std::string();
}

ULONG NumberOf(const SPropValue* values, ULONG count, ULONG tag, ULONG ifMissing) {
  const SPropValue* value = FindValue(values, count, tag);
  return value ? value->Value.ul : ifMissing;
}

Bytes BytesOf(const SPropValue* values, ULONG count, ULONG tag) {
  const SPropValue* value = FindValue(values, count, tag);
  if (!value || !value->Value.bin.lpb) return {};
  return Bytes(value->Value.bin.lpb, value->Value.bin.lpb + value->Value.bin.cb);
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
  value.wide_ = ToWide(utf8);
  return value;
}

bool OwnedValue::Read(std::string_view text) {
  switch (PROP_TYPE(tag_)) {
    case PT_UNICODE:
      wide_ = ToWide(text);
      return true;
    case PT_STRING8:
      narrow_ = text;
      return true;
    case PT_I8:
      return ReadNumber(text, number_);
    case PT_LONG:
      return ReadNumber(text, number_) && number_ >= INT32_MIN && number_ <= UINT32_MAX;
    case PT_BOOLEAN:
      number_ = text == "true" || text == "1";
      return number_ || text == "false" || text == "0";
    case PT_BINARY: {
      auto bytes = FromHex(text);
      if (bytes) bytes_ = *std::move(bytes);
      return bytes.has_value();
    }
    default:
      return false;
  }
}

SPropValue OwnedValue::Get() {
  SPropValue value = {};
  value.ulPropTag = tag_;
  switch (PROP_TYPE(tag_)) {
    case PT_UNICODE:
      value.Value.lpszW = wide_.data();
      break;
    case PT_STRING8:
      value.Value.lpszA = narrow_.data();
      break;
    case PT_I8:
      value.Value.li.QuadPart = number_;
      break;
    case PT_LONG:
      value.Value.l = static_cast<LONG>(number_);
      break;
    case PT_BOOLEAN:
      value.Value.b = number_ != 0;
      break;
    default:
      value.Value.bin.cb = static_cast<ULONG>(bytes_.size());
      value.Value.bin.lpb = bytes_.data();
      break;
  }
  return value;
}

}  // namespace orvctl
