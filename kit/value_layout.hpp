// What hangs off a value: how much room its copy needs, and the copy, laid into such room.
#pragma once

#include <emmintrin.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>

#include "orv/kit/values.hpp"

namespace orv::kit {

// Where pointers and numbers of any width may lie.
inline constexpr size_t kAlignment = 8;
constexpr size_t Aligned(size_t size) { return (size + kAlignment - 1) / kAlignment * kAlignment; }

// Counts and pointers lie alike in every array of values, and in bytes.
static_assert(offsetof(SBinary, lpb) == offsetof(SWStringArray, lppszW));

inline ULONG CountOf(const SPropValue& value) noexcept { return value.Value.bin.cb; }
inline bool IsArray(ULONG type) noexcept { return (type & MV_FLAG) != 0; }

// Of a number, a time or an identifier; 0 for types that point to something, or are none.
inline size_t FixedSize(ULONG type) noexcept {
  switch (type) {
    case PT_I2:
    case PT_BOOLEAN:
      return sizeof(short);
    case PT_LONG:
    case PT_R4:
      return sizeof(LONG);
    case PT_DOUBLE:
    case PT_CURRENCY:
    case PT_APPTIME:
    case PT_I8:
    case PT_SYSTIME:
      return sizeof(LONGLONG);
    case PT_CLSID:
      return sizeof(GUID);
    default:
      return 0;
  }
}

inline bool IsScalar(ULONG type) noexcept {
  const bool isFixed = type != PT_CLSID && FixedSize(type) != 0;
  return isFixed || type == PT_NULL || type == PT_ERROR || type == PT_OBJECT;
}
inline bool HasTextForm(ULONG type) noexcept { return type == PT_UNICODE || type == PT_STRING8; }

inline bool IsSoundArray(const SPropValue& value) noexcept {
  const SBinary* bytes = value.Value.MVbin.lpbin;
  if (CountOf(value) != 0 && bytes == nullptr) return false;
  if (PROP_TYPE(value.ulPropTag) != PT_MV_BINARY) return true;
  return std::all_of(bytes, bytes + CountOf(value),
                     [](const SBinary& each) { return each.cb == 0 || each.lpb != nullptr; });
}

inline size_t LengthOf(const char* text) noexcept { return std::char_traits<char>::length(text); }

// Eight characters at a time: rows are mostly texts, and half of what a copy costs would else be finding their ends.
// Read at multiples of sixteen bytes, which never reach into a page that the text does not.
inline size_t LengthOf(const WCHAR* text) noexcept {
  constexpr std::uintptr_t kBlock = sizeof(__m128i);
  const auto begin = reinterpret_cast<std::uintptr_t>(text);
  if (begin % sizeof(WCHAR) != 0) return std::char_traits<WCHAR>::length(text);
  const auto endsIn = [](std::uintptr_t block) {
    const __m128i units = _mm_load_si128(reinterpret_cast<const __m128i*>(block));
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(units, _mm_setzero_si128())));
  };
  std::uintptr_t block = begin - begin % kBlock;
  unsigned ends = endsIn(block) & (~0U << begin % kBlock);  // not those in front of the text
  while (ends == 0) ends = endsIn(block += kBlock);
  return (block + static_cast<unsigned>(std::countr_zero(ends)) - begin) / sizeof(WCHAR);
}

template <class Char>
inline size_t TextSize(const Char* text) noexcept {
  return text != nullptr ? (LengthOf(text) + 1) * sizeof(Char) : sizeof(Char);
}

// What hangs off a value, or off the elements of an array of such; each piece begins aligned.
inline size_t PieceSize(const WCHAR* text) noexcept { return Aligned(TextSize(text)); }
inline size_t PieceSize(const char* text) noexcept { return Aligned(TextSize(text)); }
inline size_t PieceSize(const SBinary& bytes) noexcept { return Aligned(bytes.cb); }

template <class Element>
inline size_t ArraySize(ULONG count, Element* elements) noexcept {
  size_t size = Aligned(count * sizeof(Element));
  for (ULONG i = 0; i < count; ++i) size += PieceSize(elements[i]);
  return size;
}

// Of a sound value.
inline size_t ChainedSize(const SPropValue& value) noexcept {
  const ULONG type = PROP_TYPE(value.ulPropTag);
  switch (type) {
    case PT_UNICODE:
      return PieceSize(value.Value.lpszW);
    case PT_STRING8:
      return PieceSize(value.Value.lpszA);
    case PT_BINARY:
      return PieceSize(value.Value.bin);
    case PT_CLSID:
      return Aligned(sizeof(GUID));
    case PT_MV_UNICODE:
      return ArraySize(CountOf(value), value.Value.MVszW.lppszW);
    case PT_MV_STRING8:
      return ArraySize(CountOf(value), value.Value.MVszA.lppszA);
    case PT_MV_BINARY:
      return ArraySize(CountOf(value), value.Value.MVbin.lpbin);
    default:
      return IsArray(type) ? Aligned(CountOf(value) * FixedSize(type & ~ULONG{MV_FLAG})) : 0;
  }
}

// One element of an array, as the value that it would be alone.
inline SPropValue ElementOf(const SPropValue& array, ULONG index) noexcept {
  const ULONG type = PROP_TYPE(array.ulPropTag) & ~ULONG{MV_FLAG};
  SPropValue element{};
  element.ulPropTag = CHANGE_PROP_TYPE(array.ulPropTag, type);
  const auto& values = array.Value;
  if (type == PT_BINARY) {
    element.Value.bin = values.MVbin.lpbin[index];
  } else if (HasTextForm(type)) {
    element.Value.lpszW = values.MVszW.lppszW[index];  // narrow ones lie alike
  } else if (type == PT_CLSID) {
    element.Value.lpguid = values.MVguid.lpguid + index;
  } else {
    const size_t size = FixedSize(type);
    std::memcpy(&element.Value, values.bin.lpb + index * size, size);
  }
  return element;
}

// A value that may be copied, and what that takes: of a text or bytes the exact size, else the room for all that hangs
// off it. Rows are made of texts, numbers and bytes: those are looked at once, and a text is measured once.
struct Measured {
  const SPropValue* value;  // null: cannot be copied
  size_t size;
};

inline Measured Measure(const SPropValue& value) noexcept {
  switch (PROP_TYPE(value.ulPropTag)) {
    case PT_UNICODE:
      return {&value, TextSize(value.Value.lpszW)};
    case PT_LONG:
    case PT_BOOLEAN:
    case PT_SYSTIME:
      return {&value, 0};
    case PT_BINARY:
      if (value.Value.bin.cb != 0 && value.Value.bin.lpb == nullptr) return {nullptr, 0};
      return {&value, value.Value.bin.cb};
    default:
      return CheckValue(value) == S_OK ? Measured{&value, ChainedSize(value)} : Measured{nullptr, 0};
  }
}

// Lays copies one behind the other into room that was measured by ChainedSize or Measure.
class Layer {
 public:
  explicit Layer(std::byte* room) noexcept : room_(room) {}

  void Copy(const Measured& from, SPropValue& to) noexcept {
    static constexpr WCHAR kEmpty = 0;
    switch (PROP_TYPE(from.value->ulPropTag)) {
      case PT_UNICODE: {
        const WCHAR* text = from.value->Value.lpszW;
        to = *from.value;
        to.Value.lpszW = static_cast<LPWSTR>(Lay(text != nullptr ? text : &kEmpty, from.size));
        return;
      }
      case PT_BINARY:
        to = *from.value;
        to.Value.bin.lpb = static_cast<LPBYTE>(Lay(from.value->Value.bin.lpb, from.size));
        return;
      case PT_LONG:
      case PT_BOOLEAN:
      case PT_SYSTIME:
        to = *from.value;
        return;
      default:
        return Copy(*from.value, to);
    }
  }

  // Of a sound value; `to` may be `from`.
  void Copy(const SPropValue& from, SPropValue& to) noexcept {
    to = from;
    auto& value = to.Value;
    const ULONG type = PROP_TYPE(from.ulPropTag);
    if (type == PT_UNICODE) value.lpszW = Lay(value.lpszW);
    if (type == PT_STRING8) value.lpszA = Lay(value.lpszA);
    if (type == PT_BINARY) value.bin = Lay(value.bin);
    if (type == PT_CLSID) value.lpguid = static_cast<LPGUID>(Lay(value.lpguid, sizeof(GUID)));
    if (IsArray(type)) CopyArray(type, value);
  }

 private:
  void CopyArray(ULONG type, decltype(SPropValue::Value)& value) noexcept {
    if (type == PT_MV_UNICODE) {
      value.MVszW.lppszW = LayEach(value.MVszW.cValues, value.MVszW.lppszW);
    } else if (type == PT_MV_STRING8) {
      value.MVszA.lppszA = LayEach(value.MVszA.cValues, value.MVszA.lppszA);
    } else if (type == PT_MV_BINARY) {
      value.MVbin.lpbin = LayEach(value.MVbin.cValues, value.MVbin.lpbin);
    } else {
      value.bin.lpb = static_cast<LPBYTE>(Lay(value.bin.lpb, value.bin.cb * FixedSize(type & ~ULONG{MV_FLAG})));
    }
  }

  void* Lay(const void* bytes, size_t size) noexcept {
    if (size != 0) std::memcpy(room_, bytes, size);
    return std::exchange(room_, room_ + Aligned(size));
  }
  template <class Char>
  Char* Lay(const Char* text) noexcept {
    static constexpr Char kEmpty{};
    return static_cast<Char*>(Lay(text != nullptr ? text : &kEmpty, TextSize(text)));
  }
  SBinary Lay(const SBinary& bytes) noexcept {
    return {bytes.cb, static_cast<LPBYTE>(Lay(bytes.lpb, bytes.cb))};
  }
  template <class Element>
  Element* LayEach(ULONG count, const Element* elements) noexcept {
    auto* copies = static_cast<Element*>(Lay(elements, count * sizeof(Element)));
    for (ULONG i = 0; i < count; ++i) copies[i] = Lay(copies[i]);
    return copies;
  }

  std::byte* room_;
};

}  // namespace orv::kit
