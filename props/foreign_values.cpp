#include "props/foreign_values.h"

#include "platform/pointer_check.h"
#include "props/prop_value.h"

namespace orv {

ForeignValues::ForeignValues(const SPropValue* values, ULONG count) noexcept {
  if (count == 0 || !IsReadable(values, std::size_t{count} * sizeof *values)) return;
  values_ = values;
  count_ = count;
}

const SPropValue* ForeignValues::At(ULONG position, ULONG tag) const noexcept {
  return position < count_ && values_[position].ulPropTag == tag ? &values_[position] : nullptr;
}

const SPropValue* ForeignValues::Find(ULONG tag) const noexcept { return FindValue(values_, count_, tag); }

const WCHAR* TextOf(const SPropValue* value) noexcept {
  return value == nullptr ? nullptr : value->Value.lpszW;
}

const char* Text8Of(const SPropValue* value) noexcept {
  return value == nullptr ? nullptr : value->Value.lpszA;
}

const SBinary* BinaryOf(const SPropValue* value) noexcept {
  if (value == nullptr || (value->Value.bin.cb != 0 && value->Value.bin.lpb == nullptr)) return nullptr;
  return &value->Value.bin;
}

ULONG NumberOf(const SPropValue* value, ULONG otherwise) noexcept {
  return value == nullptr ? otherwise : value->Value.ul;
}

}  // namespace orv
