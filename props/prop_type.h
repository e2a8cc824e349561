// The one table of property types: what a value keeps out of line, how long that is and how it lies. Storing,
// copying, reading back and checking all go by it.
#pragma once

#include <cstddef>
#include <span>

#include "orv/orvtypes.h"
#include "platform/win.h"

namespace orv {

enum class PropForm : unsigned char {
  kInline,        // all of it lies in the SPropValue
  kString8,       // characters with terminator
  kUnicode,       //
  kClsid,         // one GUID
  kBinary,        // counted bytes
  kArray,         // elements of one size
  kString8Array,  // pointer slots, then the strings, packed
  kUnicodeArray,  //
  kBinaryArray,   // SBinary slots, then the bytes, packed
  kRefused,       // cannot be stored or copied
};

struct PropTypeRule {
  PropForm form;
  unsigned char elementSize;  // of an array's element or slot; else 0
};

PropTypeRule PropRuleOf(ULONG tag) noexcept;

// Bytes that the value needs out of line. MAPI_E_NO_SUPPORT for a refused type, MAPI_E_INVALID_PARAMETER for
// a null pointer where there must be one, MAPI_E_NOT_ENOUGH_MEMORY when 32 bits cannot tell the length.
HRESULT PropDataLength(const SPropValue& value, ULONG& length) noexcept;

// Writes the out-of-line bytes of a value whose length was found by PropDataLength. The pointers in the slots
// are left null: stored bytes hold no addresses of ours, and every reader points its own copy at itself.
void WritePropData(const SPropValue& value, std::byte* data, ULONG length) noexcept;

// Makes the value's pointers, and the slots inside the data, point at `data`. The data must be checked or
// written by us. A length of 0 leaves the value as it is.
void PointAtPropData(SPropValue& value, std::byte* data, ULONG length) noexcept;

// True when data read from storage can be pointed at without reading beyond its end: counts and slot tables
// fit, strings are terminated inside, a GUID has its size.
bool IsSoundPropData(const SPropValue& value, std::span<const std::byte> data) noexcept;

}  // namespace orv
