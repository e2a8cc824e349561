#include "sort_keys.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include "value_layout.hpp"

namespace orv::kit {
namespace {

using Key = std::vector<BYTE>;

// Keys of texts and bytes end with kEnd, which is less than whatever could follow.
constexpr BYTE kEnd = 0, kMore = 1, kEscaped = 0xFF;
enum class Presence : BYTE { kThere = 1, kMissing = 2 };

// Highest byte first.
template <class Number>
void AppendUnsigned(Number number, Key& key) {
  for (size_t i = sizeof number; i-- > 0;) key.push_back(static_cast<BYTE>(number >> (8 * i)));
}

// Negative numbers come first once the sign is turned round.
void AppendSigned(LONGLONG number, Key& key) {
  AppendUnsigned(static_cast<ULONGLONG>(number) ^ (1ULL << 63), key);
}

// Of negative numbers all bits are turned round; what is no number comes last, both zeroes are one.
void AppendReal(double number, Key& key) {
  constexpr ULONGLONG kSign = 1ULL << 63;
  if (std::isnan(number)) return AppendUnsigned(~0ULL, key);
  if (number == 0) number = 0;
  ULONGLONG bits = 0;
  std::memcpy(&bits, &number, sizeof bits);
  AppendUnsigned((bits & kSign) != 0 ? ~bits : bits | kSign, key);
}

// As people of the user's language order texts, without regard to case. The platform ends its keys with a zero byte.
void AppendText(const WCHAR* text, Key& key) {
  constexpr DWORD kHow = LCMAP_SORTKEY | NORM_IGNORECASE | SORT_STRINGSORT;
  const size_t length = text != nullptr ? std::char_traits<WCHAR>::length(text) : 0;
  if (length == 0) return key.push_back(kEnd);
  const size_t begin = key.size();
  const auto map = [&](size_t room) {
    key.resize(begin + room);
    auto* bytes = reinterpret_cast<LPWSTR>(key.data() + begin);
    return LCMapStringW(LOCALE_USER_DEFAULT, kHow, text, static_cast<int>(length), bytes,
                        static_cast<int>(room));
  };
  constexpr size_t kUsualPerCharacter = 8, kUsualMore = 32;
  int size = map(length * kUsualPerCharacter + kUsualMore);
  if (size == 0) {
    const int needed = LCMapStringW(LOCALE_USER_DEFAULT, kHow, text, static_cast<int>(length), nullptr, 0);
    size = map(static_cast<size_t>(needed));
  }
  key.resize(begin + static_cast<size_t>(size));
  if (size == 0) key.push_back(kEnd);
}

void AppendNarrow(const char* text, Key& key) {
  const int length = text != nullptr ? MultiByteToWideChar(CP_ACP, 0, text, -1, nullptr, 0) : 0;
  std::wstring wide(static_cast<size_t>(length), L'\0');
  MultiByteToWideChar(CP_ACP, 0, text, -1, wide.data(), length);
  AppendText(wide.c_str(), key);
}

void AppendBytes(const SBinary& bytes, Key& key) {
  for (ULONG i = 0; i < bytes.cb; ++i) {
    key.push_back(bytes.lpb[i]);
    if (bytes.lpb[i] == kEnd) key.push_back(kEscaped);
  }
  key.insert(key.end(), {kEnd, kEnd});
}

void AppendNumber(const SPropValue& value, Key& key) {
  switch (PROP_TYPE(value.ulPropTag)) {
    case PT_I2:
      return AppendSigned(value.Value.i, key);
    case PT_LONG:
      return AppendSigned(value.Value.l, key);
    case PT_BOOLEAN:
      return key.push_back(value.Value.b != 0);
    case PT_R4:
      return AppendReal(value.Value.flt, key);
    case PT_DOUBLE:
    case PT_APPTIME:
      return AppendReal(value.Value.dbl, key);
    case PT_SYSTIME:
      return AppendUnsigned(static_cast<ULONGLONG>(value.Value.li.QuadPart), key);
    default:  // PT_I8 and PT_CURRENCY; what has nothing to compare has nothing here
      if (FixedSize(PROP_TYPE(value.ulPropTag)) != 0) AppendSigned(value.Value.li.QuadPart, key);
  }
}

void AppendSingle(const SPropValue& value, Key& key) {
  switch (PROP_TYPE(value.ulPropTag)) {
    case PT_UNICODE:
      return AppendText(value.Value.lpszW, key);
    case PT_STRING8:
      return AppendNarrow(value.Value.lpszA, key);
    case PT_BINARY:
      return AppendBytes(value.Value.bin, key);
    case PT_CLSID: {
      const auto* bytes = reinterpret_cast<const BYTE*>(value.Value.lpguid);
      key.insert(key.end(), bytes, bytes + sizeof(GUID));
      return;
    }
    default:
      return AppendNumber(value, key);
  }
}

// Values of another type than the tag's are ordered by type, like with like.
void AppendValue(const SPropValue& value, Key& key) {
  const ULONG type = PROP_TYPE(value.ulPropTag);
  AppendUnsigned(static_cast<USHORT>(type), key);
  if (!IsArray(type)) return AppendSingle(value, key);
  for (ULONG i = 0; i < CountOf(value); ++i) {
    key.push_back(kMore);
    AppendSingle(ElementOf(value, i), key);
  }
  key.push_back(kEnd);
}

void AppendColumn(const SSortOrder& column, sdk::ValueView row, Key& key) {
  const SPropValue* value = FindValue(row, column.ulPropTag);
  const bool isThere =
      value != nullptr && PROP_TYPE(value->ulPropTag) != PT_ERROR && CheckValue(*value) == S_OK;
  key.push_back(static_cast<BYTE>(isThere ? Presence::kThere : Presence::kMissing));
  if (!isThere) return;
  const auto begin = static_cast<std::ptrdiff_t>(key.size());
  AppendValue(*value, key);
  if (column.ulOrder != TABLE_SORT_DESCEND) return;
  std::transform(key.begin() + begin, key.end(), key.begin() + begin,
                 [](BYTE byte) { return static_cast<BYTE>(~byte); });
}

// The keys of all rows lie in one stretch.
struct KeyedRow {
  size_t begin;
  size_t size;
  ULONG row;
};

bool IsBefore(const KeyedRow& one, const KeyedRow& other, const BYTE* keys) noexcept {
  const int order = std::memcmp(keys + one.begin, keys + other.begin, std::min(one.size, other.size));
  if (order != 0) return order < 0;
  return one.size != other.size ? one.size < other.size : one.row < other.row;
}

}  // namespace

void AppendSortKey(const SortOrder& order, sdk::ValueView row, std::vector<BYTE>& key) {
  for (const SSortOrder& column : order) AppendColumn(column, row, key);
}

std::vector<ULONG> ColumnsOf(const SortOrder& order) {
  std::vector<ULONG> columns;
  for (const SSortOrder& each : order) columns.push_back(each.ulPropTag);
  return columns;
}

HRESULT SortRows(RowSource& source, const SortOrder& order, std::vector<ULONG>& rows) {
  const std::vector<ULONG> columns = ColumnsOf(order);
  Key keys;
  std::vector<KeyedRow> keyed;
  keyed.reserve(rows.size());
  for (const ULONG row : rows) {
    sdk::ValueView values(nullptr, 0);
    if (const HRESULT hr = source.RowAt(row, columns, &values); FAILED(hr)) return hr;
    const size_t begin = keys.size();
    AppendSortKey(order, values, keys);
    keyed.push_back({begin, keys.size() - begin, row});
  }
  const auto isBefore = [bytes = keys.data()](const auto& one, const auto& other) {
    return IsBefore(one, other, bytes);
  };
  std::sort(keyed.begin(), keyed.end(), isBefore);
  std::transform(keyed.begin(), keyed.end(), rows.begin(), [](const KeyedRow& each) { return each.row; });
  return S_OK;
}

}  // namespace orv::kit
