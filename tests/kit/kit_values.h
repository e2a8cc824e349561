// What the tests of the kit share.
#pragma once

#include "orv/orvbase.hpp"
#include "platform/buffer.h"
#include "tests/props/samples.h"

namespace orv::test {

// The library's buffers, as a provider receives them.
inline const sdk::Allocator& Buffers() {
  static const sdk::Allocator allocator(&OrvAllocateBuffer, &OrvAllocateMore, &OrvFreeBuffer);
  return allocator;
}

}  // namespace orv::test
