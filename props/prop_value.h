// Utilities over the published structures, with no list involved: copying values into chained buffers,
// searching arrays, arithmetic on tag arrays, small results.
#pragma once

#include "orv/orvapi.h"
#include "platform/buffer.h"
#include "platform/win.h"

namespace orv {

// A deep copy into `destination`, out-of-line data chained to `root`. A null pointer or empty binary is
// copied as null. MAPI_E_NO_SUPPORT for a type that cannot be stored either, MAPI_E_INVALID_PARAMETER when there is
// data and no root.
HRESULT CopyValue(SPropValue& destination, const SPropValue& source, void* root) noexcept;
// One after another; a value that fails becomes PT_ERROR and the rest go on. The result is the last value's.
HRESULT CopyValues(SPropValue* destination, const SPropValue* source, ULONG count, void* root) noexcept;
// A row of its own; on failure the destination's array is null. Offered with CopyValues; the library itself does not
// call them.
HRESULT DuplicateRow(SRow& destination, const SRow& source) noexcept;

// Gives the target the tags of `tags` in their order (from the source, else from the target, else PT_ERROR)
// and behind them the target's other values. The target is unchanged on failure.
HRESULT MergeIntoAddressEntry(const SPropTagArray& tags, const SRow& source, ADRENTRY& target) noexcept;

// The first value with the tag's identifier and, unless the tag is PT_UNSPECIFIED, its type; or null.
SPropValue* FindValue(SPropValue* values, ULONG count, ULONG tag) noexcept;
const SPropValue* FindValue(const SPropValue* values, ULONG count, ULONG tag) noexcept;

// True when the array holds the tag, matched as FindValue does.
bool HasTag(ULONG tag, const SPropTagArray* tags) noexcept;
// Removes every tag that an exclusion matches, in place. False when either array is null.
bool SubtractTags(SPropTagArray* tags, const SPropTagArray* exclusions) noexcept;
// The tags that are no objects and no binaries. MAPI_E_NOT_FOUND when none is left. Offered; the library itself does
// not call it.
HRESULT DropBinaryColumns(const SPropTagArray* tags, MapiBuffer<SPropTagArray>& kept) noexcept;

// The value becomes the tag's identifier with MAPI_E_NOT_FOUND; returns MAPI_W_ERRORS_RETURNED.
HRESULT SetNotFound(SPropValue& value, ULONG tag) noexcept;
// Appends a problem to an array that the caller sized; nothing to do for a null one.
void AddProblem(SPropProblemArray* problems, ULONG index, ULONG tag, HRESULT error) noexcept;

// One block that holds header and bytes; null for a null source. False when there is no memory. Offered; the library
// itself does not call it.
bool DuplicateBinary(MapiBuffer<SBinary>& copy, const SBinary* source) noexcept;
bool BinaryEqual(const SBinary& a, const SBinary& b) noexcept;

}  // namespace orv
