// What a process holds that grows when a library is loaded and freed again and again and leaves something behind.
#pragma once

#include <cstddef>

namespace orv::test {

struct ProcessCounts {
  int threadSlots = 0;  // that are still to be had
  int handles = 0;      // of the kernel, found by trying every value
  int libraries = 0;
  std::size_t heapBytes = 0;  // in use, of all heaps
};

ProcessCounts CountProcess();

}  // namespace orv::test
