// What counting_new.cpp has counted.
#pragma once

#include <cstddef>

namespace formats::test {

void ForgetHighest();
std::size_t HighestHeld();

}  // namespace formats::test
