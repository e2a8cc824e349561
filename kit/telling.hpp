// Exceptions of an author's code: no result code says what they say, so the session is told.
#pragma once

#include <exception>
#include <new>

#include "orv/kit/prop_object.hpp"

namespace orv::kit {

// Thrown on in the place of what was told, so that it is told once.
struct Told {};

// "where: what", by IOrvSupport2::ReportProblem; nothing where the host offers none.
void Report(const Host& host, const char* where, const std::exception& thrown) noexcept;

// Runs `body`, which calls hooks; a boundary above makes a code of what it throws. Memory exhaustion has a code of its
// own. A lock of the kit's may be held: ReportProblem notes and calls nobody.
template <class Body>
auto Telling(const Host& host, const char* where, Body&& body) {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& thrown) {
    Report(host, where, thrown);
    throw Told();
  }
}

}  // namespace orv::kit
