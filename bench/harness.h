// Measures our code against a floor: the same work done by hand, in the same run. What is printed is the ratio,
// the median of interleaved pairs, with its spread; times are a by-product.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace orv::bench {

// One run of what is measured; repeated in batches long enough for the clock.
using Work = std::function<void()>;

struct Comparison {
  double ratio = 0;  // ours to floor, median of the pairs
  double low = 0;    // quartiles of the pairs
  double high = 0;
  double ours = 0;  // median nanoseconds of one run
  double floor = 0;
};

Comparison Compare(const Work& ours, const Work& floor);

// Nanoseconds of one run, the median of as many batches.
double Measure(const Work& work);

// One line of the table of results. `atMost` is what the ratio may be.
void Report(const std::string& name, const Comparison& result, double atMost);
// A ratio that is no comparison of times: growth, memory. The two quantities are named by their unit.
void Report(const std::string& name, double ours, double floor, const char* unit, double atMost);

// Bytes of memory that this process has committed.
std::size_t CommittedBytes();

// Ends the program with a message: a benchmark whose work fails measures nothing.
void Require(bool condition, const char* what);

// A file registers itself: `const Benchmark tables("tables", [] { ... });`. Names are what the command line
// selects by.
class Benchmark {
 public:
  Benchmark(const char* name, void (*run)());
};

}  // namespace orv::bench
