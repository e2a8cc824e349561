// The order of values, for sorting and for restrictions.
#include <algorithm>
#include <compare>
#include <cstring>

#include "orv/kit/values.hpp"

namespace orv::kit {
namespace {

template <class Number>
int Order(Number one, Number other) noexcept {
  return (one > other) - (one < other);
}

// What is no number comes last, so that sorting finds an order.
int OrderReal(double one, double other) noexcept {
  if (one != one || other != other) return (one != one) - (other != other);
  return Order(one, other);
}

int OrderText(const WCHAR* one, const WCHAR* other) noexcept {
  constexpr DWORD kAsPeopleSort = NORM_IGNORECASE | SORT_STRINGSORT;
  const int order = CompareStringW(LOCALE_USER_DEFAULT, kAsPeopleSort, one != nullptr ? one : L"", -1,
                                   other != nullptr ? other : L"", -1);
  return order - CSTR_EQUAL;
}

int OrderNarrow(const char* one, const char* other) noexcept {
  return CompareStringA(LOCALE_USER_DEFAULT, NORM_IGNORECASE, one != nullptr ? one : "", -1,
                        other != nullptr ? other : "", -1) -
         CSTR_EQUAL;
}

int OrderBytes(const void* one, size_t size, const void* other, size_t otherSize) noexcept {
  const size_t common = std::min(size, otherSize);
  const int order = common != 0 ? std::memcmp(one, other, common) : 0;
  return order != 0 ? order : Order(size, otherSize);
}
int OrderBinary(const SBinary& one, const SBinary& other) noexcept {
  return OrderBytes(one.lpb, one.cb, other.lpb, other.cb);
}

ULONGLONG TicksOf(const FILETIME& time) noexcept {
  return ULONGLONG{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}
int OrderTime(const FILETIME& one, const FILETIME& other) noexcept {
  return Order(TicksOf(one), TicksOf(other));
}
int OrderGuid(const GUID& one, const GUID& other) noexcept {
  return OrderBytes(&one, sizeof one, &other, sizeof other);
}

// The counted arrays have members of different names, so each brings its pointer.
template <class Array, class Element, class Compare>
int OrderEach(const Array& one, const Array& other, Element* Array::*elements, Compare compare) noexcept {
  const ULONG common = std::min(one.cValues, other.cValues);
  for (ULONG i = 0; i < common; ++i) {
    if (const int order = compare((one.*elements)[i], (other.*elements)[i]); order != 0) return order;
  }
  return Order(one.cValues, other.cValues);
}

using Value = decltype(SPropValue::Value);

int OrderArrays(ULONG type, const Value& one, const Value& other) noexcept {
  switch (type) {
    case PT_MV_I2:
      return OrderEach(one.MVi, other.MVi, &SShortArray::lpi, Order<short>);
    case PT_MV_LONG:
      return OrderEach(one.MVl, other.MVl, &SLongArray::lpl, Order<LONG>);
    case PT_MV_R4:
      return OrderEach(one.MVflt, other.MVflt, &SRealArray::lpflt, OrderReal);
    case PT_MV_DOUBLE:
    case PT_MV_APPTIME:
      return OrderEach(one.MVdbl, other.MVdbl, &SDoubleArray::lpdbl, OrderReal);
    case PT_MV_UNICODE:
      return OrderEach(one.MVszW, other.MVszW, &SWStringArray::lppszW, OrderText);
    case PT_MV_STRING8:
      return OrderEach(one.MVszA, other.MVszA, &SLPSTRArray::lppszA, OrderNarrow);
    case PT_MV_BINARY:
      return OrderEach(one.MVbin, other.MVbin, &SBinaryArray::lpbin, OrderBinary);
    case PT_MV_SYSTIME:
      return OrderEach(one.MVft, other.MVft, &SDateTimeArray::lpft, OrderTime);
    case PT_MV_CLSID:
      return OrderEach(one.MVguid, other.MVguid, &SGuidArray::lpguid, OrderGuid);
    default:  // PT_MV_I8 and PT_MV_CURRENCY
      return OrderEach(one.MVli, other.MVli, &SLargeIntegerArray::lpli,
                       [](const auto& a, const auto& b) { return Order(a.QuadPart, b.QuadPart); });
  }
}

int OrderSingle(ULONG type, const Value& one, const Value& other) noexcept {
  switch (type) {
    case PT_I2:
      return Order(one.i, other.i);
    case PT_LONG:
    case PT_ERROR:
      return Order(one.l, other.l);
    case PT_BOOLEAN:
      return Order(one.b != 0, other.b != 0);
    case PT_R4:
      return OrderReal(one.flt, other.flt);
    case PT_DOUBLE:
    case PT_APPTIME:
      return OrderReal(one.dbl, other.dbl);
    case PT_I8:
    case PT_CURRENCY:
      return Order(one.li.QuadPart, other.li.QuadPart);
    case PT_UNICODE:
      return OrderText(one.lpszW, other.lpszW);
    case PT_STRING8:
      return OrderNarrow(one.lpszA, other.lpszA);
    case PT_BINARY:
      return OrderBinary(one.bin, other.bin);
    case PT_SYSTIME:
      return OrderTime(one.ft, other.ft);
    case PT_CLSID:
      return OrderGuid(*one.lpguid, *other.lpguid);
    default:
      return 0;  // PT_NULL and PT_OBJECT have nothing to compare
  }
}

}  // namespace

int CompareValues(const SPropValue& one, const SPropValue& other) noexcept {
  const ULONG type = PROP_TYPE(one.ulPropTag);
  if (type != PROP_TYPE(other.ulPropTag)) return Order(type, PROP_TYPE(other.ulPropTag));
  return (type & MV_FLAG) != 0 ? OrderArrays(type, one.Value, other.Value)
                               : OrderSingle(type, one.Value, other.Value);
}

}  // namespace orv::kit
