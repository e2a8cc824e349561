// Property values that foreign code handed out: a table's row, an answer to GetProps. Nothing in them is believed:
// an array may be null whatever its count says, columns may be missing or of another type, strings and bytes null.
#pragma once

#include "orv/orvtypes.h"
#include "platform/buffer.h"
#include "platform/win.h"

namespace orv {

// A view; what it shows must outlive it. Without a readable array it shows no values.
class ForeignValues {
 public:
  ForeignValues() noexcept = default;
  ForeignValues(const SPropValue* values, ULONG count) noexcept;
  explicit ForeignValues(const SRow& row) noexcept : ForeignValues(row.lpProps, row.cValues) {}
  explicit ForeignValues(const ADRENTRY& entry) noexcept : ForeignValues(entry.rgPropVals, entry.cValues) {}
  explicit ForeignValues(const PropValues& values) noexcept
      : ForeignValues(values.values.Get(), values.count) {}

  ULONG Count() const noexcept { return count_; }

  // The value at a position, when it bears the tag; else null.
  const SPropValue* At(ULONG position, ULONG tag) const noexcept;
  // The first value that bears the tag (with PT_UNSPECIFIED: its identifier), else null.
  const SPropValue* Find(ULONG tag) const noexcept;

 private:
  const SPropValue* values_ = nullptr;
  ULONG count_ = 0;
};

// What a value of At or Find holds, each for a null value too: a PT_UNICODE or PT_STRING8 text (null without one),
// bytes (null when there are none where the count says so), a number.
const WCHAR* TextOf(const SPropValue* value) noexcept;
const char* Text8Of(const SPropValue* value) noexcept;
const SBinary* BinaryOf(const SPropValue* value) noexcept;
ULONG NumberOf(const SPropValue* value, ULONG otherwise = 0) noexcept;

}  // namespace orv
