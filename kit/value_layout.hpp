// What hangs off a value: how much room its copy needs, and the copy, laid into such room.
#pragma once

#include <algorithm>
#include <cstddef>
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

template <class Char>
inline size_t TextSize(const Char* text) noexcept {
  return text != nullptr ? (std::char_traits<Char>::length(text) + 1) * sizeof(Char) : sizeof(Char);
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

// Lays copies one behind the other into room that was measured by ChainedSize.
class Layer {
 public:
  explicit Layer(std::byte* room) noexcept : room_(room) {}

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
