// Values of a row, with what stands in for an absent one.
#pragma once

#include "orv/orvapi.h"
#include "orv/orvtags.h"
#include "platform/win.h"
#include "props/prop_value.h"

namespace orv::ui {

// The text of a PT_UNICODE column; empty when the row has none.
inline const WCHAR* TextOf(const SPropValue* values, ULONG count, ULONG tag) {
  const SPropValue* value = FindValue(values, count, tag);
  return value == nullptr || value->Value.lpszW == nullptr ? L"" : value->Value.lpszW;
}
inline const WCHAR* TextOf(const SRow& row, ULONG tag) { return TextOf(row.lpProps, row.cValues, tag); }

}  // namespace orv::ui
