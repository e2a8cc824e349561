// The seam of failing_new.cpp: a thread that only drives the test counts no allocation and has none fail.
#pragma once

namespace orv::test {

inline thread_local bool t_isExemptFromFailures = false;

}  // namespace orv::test
