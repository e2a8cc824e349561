// The one table of property types: what a value keeps out of line, how long that is and how it lies. Storing,
// copying, reading back and checking look a type up once and go by its form.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "orv/orvtypes.h"
#include "platform/win.h"

namespace orv {

// The operations on values whose bytes lie alike. The form of inline values is this class itself: all of such a value
// lies in its SPropValue, so it needs no bytes and nothing in it points.
class PropForm {
 public:
  static const PropForm kInline;

  constexpr PropForm() = default;
  PropForm(const PropForm&) = delete;
  PropForm& operator=(const PropForm&) = delete;

  bool IsInline() const noexcept { return this == &kInline; }

  // Bytes that the value needs out of line. MAPI_E_NO_SUPPORT for a type that cannot be stored,
  // MAPI_E_INVALID_PARAMETER for a null pointer where there must be one, MAPI_E_NOT_ENOUGH_MEMORY when 32 bits cannot
  // tell the length.
  HRESULT Length(const SPropValue& value, ULONG& length) const noexcept;

  // Writes the bytes of a value whose length was found. The pointers in slots are left null: stored bytes hold no
  // addresses of ours, and every reader points its own copy at itself.
  virtual void Write(const SPropValue& value, std::byte* data, ULONG length) const noexcept;
  // Makes the value's pointers, and the slots inside the data, point at `data`, which must be checked or written by us
  // and not empty.
  virtual void PointAt(SPropValue& value, std::byte* data, ULONG length) const noexcept;
  // Makes the pointer that the value holds null, as a stored value has it.
  virtual void ClearPointer(SPropValue& value) const noexcept;
  // True when data read from storage can be pointed at without reading beyond its end: counts and slot tables fit,
  // strings are terminated inside, a GUID has its size.
  virtual bool IsSound(const SPropValue& value, std::span<const std::byte> data) const noexcept;
  // A single value whose pointer is null, or a binary without bytes: there is nothing to copy.
  virtual bool PointsNowhere(const SPropValue& value) const noexcept;
  // Where the value's bytes, or its array, begin.
  virtual const void* Bytes(const SPropValue& value) const noexcept;

 private:
  // The length without its limit.
  virtual HRESULT Measure(const SPropValue& value, std::uint64_t& length) const noexcept;
};

const PropForm& FormOf(ULONG tag) noexcept;

inline HRESULT PropDataLength(const SPropValue& value, ULONG& length) noexcept {
  return FormOf(value.ulPropTag).Length(value, length);
}

}  // namespace orv
