// The operator new of a test program, with the seam for failures in it. A test program that wants it names
// this file among its sources; it is not in the support library, so that the others keep their toolchain's.
#include <cstdlib>
#include <new>

#include "platform/faults.h"
#include "tests/support/failing_new.h"

// The forms for arrays end in these.
void* operator new(std::size_t size) {
  const bool counts = !orv::test::t_isExemptFromFailures;
  if (counts && orv::faults::ShouldFail(orv::faults::Site::kOperatorNew)) throw std::bad_alloc();
  void* block = std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
