// A fixed list of property tags in the shape of SPropTagArray, counted by the compiler.
#pragma once

#include <cstddef>

#include "orv/orvtypes.h"

namespace orv {

// constexpr TagArray kColumns{PR_ENTRYID, PR_DISPLAY_NAME_W};
template <std::size_t Size>
struct TagArray {
  template <class... Tags>
  constexpr explicit TagArray(Tags... tags) noexcept : aulPropTag{static_cast<ULONG>(tags)...} {}

  // The interfaces take tags without const and foreign code may write to them: a constant array is copied first.
  LPSPropTagArray Get() noexcept { return reinterpret_cast<LPSPropTagArray>(this); }
  const SPropTagArray* Get() const noexcept { return reinterpret_cast<const SPropTagArray*>(this); }

  ULONG cValues = Size;
  ULONG aulPropTag[Size];
};
template <class... Tags>
TagArray(Tags...) -> TagArray<sizeof...(Tags)>;

static_assert(offsetof(TagArray<2>, aulPropTag) == offsetof(SPropTagArray, aulPropTag));

}  // namespace orv
