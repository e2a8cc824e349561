// Sizes, writes and reads the out-of-line part of a value, by the one table of types.
#include "props/prop_type.h"

#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

#include "orv/orvcodes.h"

namespace orv {
namespace {

// Room for the fixed part of a record and the padding, so that a record's size fits its 32 bits too.
constexpr std::uint64_t kMaxLength = std::numeric_limits<ULONG>::max() - 64;

// A null string is stored as the empty one.
std::size_t StringBytes(const char* text) noexcept { return (text ? std::strlen(text) : 0) + 1; }
std::size_t StringBytes(const WCHAR* text) noexcept {
  return ((text ? std::char_traits<WCHAR>::length(text) : 0) + 1) * sizeof(WCHAR);
}

template <class Char>
void WriteString(const Char* text, std::byte* data, std::size_t size) noexcept {
  if (text == nullptr) {
    std::memset(data, 0, size);
  } else {
    std::memcpy(data, text, size);
  }
}

template <class Char>
std::uint64_t StringArrayLength(Char* const* strings, ULONG count) noexcept {
  std::uint64_t length = std::uint64_t{count} * sizeof(Char*);
  for (ULONG i = 0; i < count; ++i) length += StringBytes(strings[i]);
  return length;
}

template <class Char>
void WriteStringArray(Char* const* strings, ULONG count, std::byte* data) noexcept {
  std::size_t offset = count * sizeof(Char*);
  std::memset(data, 0, offset);
  for (ULONG i = 0; i < count; ++i) {
    const std::size_t size = StringBytes(strings[i]);
    WriteString(strings[i], data + offset, size);
    offset += size;
  }
}

template <class Char>
Char** PointAtStrings(std::byte* data, ULONG count) noexcept {
  auto** slots = reinterpret_cast<Char**>(data);
  std::byte* string = data + count * sizeof(Char*);
  for (ULONG i = 0; i < count; ++i) {
    slots[i] = reinterpret_cast<Char*>(string);
    string += StringBytes(slots[i]);
  }
  return slots;
}

HRESULT BinaryArrayLength(const SBinaryArray& array, std::uint64_t& length) noexcept {
  length = std::uint64_t{array.cValues} * sizeof(SBinary);
  for (ULONG i = 0; i < array.cValues; ++i) {
    const SBinary& binary = array.lpbin[i];
    if (binary.cb != 0 && binary.lpb == nullptr) return MAPI_E_INVALID_PARAMETER;
    length += binary.cb;
  }
  return S_OK;
}

void WriteBinaryArray(const SBinaryArray& array, std::byte* data) noexcept {
  std::size_t offset = array.cValues * sizeof(SBinary);
  for (ULONG i = 0; i < array.cValues; ++i) {
    const SBinary& binary = array.lpbin[i];
    SBinary slot = {};
    slot.cb = binary.cb;
    std::memcpy(data + i * sizeof slot, &slot, sizeof slot);
    if (binary.cb == 0) continue;
    std::memcpy(data + offset, binary.lpb, binary.cb);
    offset += binary.cb;
  }
}

SBinary* PointAtBinaries(std::byte* data, ULONG count) noexcept {
  auto* slots = reinterpret_cast<SBinary*>(data);
  auto* bytes = reinterpret_cast<BYTE*>(slots + count);
  for (ULONG i = 0; i < count; ++i) {
    slots[i].lpb = bytes;
    bytes += slots[i].cb;
  }
  return slots;
}

// The bytes behind a slot table, or false when the table itself does not fit.
bool BehindSlots(std::span<const std::byte>& data, ULONG count, std::size_t slotSize) noexcept {
  if (count > data.size() / slotSize) return false;
  data = data.subspan(count * slotSize);
  return true;
}

// Takes one terminated string off the front.
template <class Char>
bool TakeString(std::span<const std::byte>& data) noexcept {
  for (std::size_t end = sizeof(Char); end <= data.size(); end += sizeof(Char)) {
    Char last;
    std::memcpy(&last, data.data() + end - sizeof(Char), sizeof last);
    if (last != 0) continue;
    data = data.subspan(end);
    return true;
  }
  return false;
}

template <class Char>
bool AreStringsSound(std::span<const std::byte> data, ULONG count) noexcept {
  if (!BehindSlots(data, count, sizeof(Char*))) return false;
  for (ULONG i = 0; i < count; ++i) {
    if (!TakeString<Char>(data)) return false;
  }
  return true;
}

bool AreBinariesSound(std::span<const std::byte> data, ULONG count) noexcept {
  const std::byte* slots = data.data();
  if (!BehindSlots(data, count, sizeof(SBinary))) return false;
  std::uint64_t total = 0;
  for (ULONG i = 0; i < count; ++i) {
    SBinary slot;
    std::memcpy(&slot, slots + i * sizeof slot, sizeof slot);
    total += slot.cb;
  }
  return total <= data.size();
}

}  // namespace

// PT_MV_DOUBLE and PT_MV_APPTIME are missing from the arrays, and with them refused: stored data and callers
// know only what always could be stored.
PropTypeRule PropRuleOf(ULONG tag) noexcept {
  const ULONG type = PROP_TYPE(tag);
  switch (type) {
    case PT_STRING8:
      return {PropForm::kString8, 0};
    case PT_UNICODE:
      return {PropForm::kUnicode, 0};
    case PT_CLSID:
      return {PropForm::kClsid, 0};
    case PT_BINARY:
      return {PropForm::kBinary, 0};
    case PT_MV_I2:
      return {PropForm::kArray, 2};
    case PT_MV_LONG:
    case PT_MV_R4:
      return {PropForm::kArray, 4};
    case PT_MV_CURRENCY:
    case PT_MV_I8:
    case PT_MV_SYSTIME:
      return {PropForm::kArray, 8};
    case PT_MV_CLSID:
      return {PropForm::kArray, 16};
    case PT_MV_STRING8:
      return {PropForm::kString8Array, 8};
    case PT_MV_UNICODE:
      return {PropForm::kUnicodeArray, 8};
    case PT_MV_BINARY:
      return {PropForm::kBinaryArray, 16};
    default:
      return {type & MV_FLAG ? PropForm::kRefused : PropForm::kInline, 0};
  }
}

HRESULT PropDataLength(const SPropValue& value, ULONG& length) noexcept {
  const auto& v = value.Value;
  const PropTypeRule rule = PropRuleOf(value.ulPropTag);
  // The count and the pointer of every array lie where those of any array lie.
  if (rule.elementSize != 0 && v.MVl.cValues != 0 && v.MVl.lpl == nullptr) return MAPI_E_INVALID_PARAMETER;
  std::uint64_t wanted = 0;
  switch (rule.form) {
    case PropForm::kInline:
      break;
    case PropForm::kString8:
      wanted = StringBytes(v.lpszA);
      break;
    case PropForm::kUnicode:
      wanted = StringBytes(v.lpszW);
      break;
    case PropForm::kClsid:
      if (v.lpguid == nullptr) return MAPI_E_INVALID_PARAMETER;
      wanted = sizeof(GUID);
      break;
    case PropForm::kBinary:
      if (v.bin.cb != 0 && v.bin.lpb == nullptr) return MAPI_E_INVALID_PARAMETER;
      wanted = v.bin.cb;
      break;
    case PropForm::kArray:
      wanted = std::uint64_t{v.MVl.cValues} * rule.elementSize;
      break;
    case PropForm::kString8Array:
      wanted = StringArrayLength(v.MVszA.lppszA, v.MVszA.cValues);
      break;
    case PropForm::kUnicodeArray:
      wanted = StringArrayLength(v.MVszW.lppszW, v.MVszW.cValues);
      break;
    case PropForm::kBinaryArray:
      if (const HRESULT hr = BinaryArrayLength(v.MVbin, wanted); FAILED(hr)) return hr;
      break;
    case PropForm::kRefused:
      return MAPI_E_NO_SUPPORT;
  }
  if (wanted > kMaxLength) return MAPI_E_NOT_ENOUGH_MEMORY;
  length = static_cast<ULONG>(wanted);
  return S_OK;
}

void WritePropData(const SPropValue& value, std::byte* data, ULONG length) noexcept {
  if (length == 0) return;
  const auto& v = value.Value;
  switch (PropRuleOf(value.ulPropTag).form) {
    case PropForm::kString8:
      WriteString(v.lpszA, data, length);
      break;
    case PropForm::kUnicode:
      WriteString(v.lpszW, data, length);
      break;
    case PropForm::kClsid:
      std::memcpy(data, v.lpguid, length);
      break;
    case PropForm::kBinary:
      std::memcpy(data, v.bin.lpb, length);
      break;
    case PropForm::kArray:
      std::memcpy(data, v.MVl.lpl, length);
      break;
    case PropForm::kString8Array:
      WriteStringArray(v.MVszA.lppszA, v.MVszA.cValues, data);
      break;
    case PropForm::kUnicodeArray:
      WriteStringArray(v.MVszW.lppszW, v.MVszW.cValues, data);
      break;
    case PropForm::kBinaryArray:
      WriteBinaryArray(v.MVbin, data);
      break;
    case PropForm::kInline:
    case PropForm::kRefused:
      break;
  }
}

void PointAtPropData(SPropValue& value, std::byte* data, ULONG length) noexcept {
  if (length == 0) return;
  auto& v = value.Value;
  switch (PropRuleOf(value.ulPropTag).form) {
    case PropForm::kString8:
      v.lpszA = reinterpret_cast<char*>(data);
      break;
    case PropForm::kUnicode:
      v.lpszW = reinterpret_cast<WCHAR*>(data);
      break;
    case PropForm::kClsid:
      v.lpguid = reinterpret_cast<GUID*>(data);
      break;
    case PropForm::kBinary:
      v.bin.cb = length;
      v.bin.lpb = reinterpret_cast<BYTE*>(data);
      break;
    case PropForm::kArray:
      v.MVl.lpl = reinterpret_cast<LONG*>(data);
      break;
    case PropForm::kString8Array:
      v.MVszA.lppszA = PointAtStrings<char>(data, v.MVszA.cValues);
      break;
    case PropForm::kUnicodeArray:
      v.MVszW.lppszW = PointAtStrings<WCHAR>(data, v.MVszW.cValues);
      break;
    case PropForm::kBinaryArray:
      v.MVbin.lpbin = PointAtBinaries(data, v.MVbin.cValues);
      break;
    case PropForm::kInline:
    case PropForm::kRefused:
      break;
  }
}

bool IsSoundPropData(const SPropValue& value, std::span<const std::byte> data) noexcept {
  const auto& v = value.Value;
  const PropTypeRule rule = PropRuleOf(value.ulPropTag);
  switch (rule.form) {
    case PropForm::kInline:
      return true;
    case PropForm::kString8:
      return TakeString<char>(data);
    case PropForm::kUnicode:
      return TakeString<WCHAR>(data);
    case PropForm::kClsid:
      return data.size() == sizeof(GUID);
    // An empty binary is handed out with the count as stored, so that has to be empty too.
    case PropForm::kBinary:
      return !data.empty() || v.bin.cb == 0;
    case PropForm::kArray:
      return v.MVl.cValues <= data.size() / rule.elementSize;
    case PropForm::kString8Array:
      return AreStringsSound<char>(data, v.MVszA.cValues);
    case PropForm::kUnicodeArray:
      return AreStringsSound<WCHAR>(data, v.MVszW.cValues);
    case PropForm::kBinaryArray:
      return AreBinariesSound(data, v.MVbin.cValues);
    case PropForm::kRefused:
      return false;
  }
  return false;
}

}  // namespace orv
