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
// For what is called `calls` times in a run: ours may take so many nanoseconds a call more than the floor.
void ReportAdded(const std::string& name, const Comparison& result, int calls, double atMostNanoseconds);
// How much the ratio of a larger run exceeds that of a smaller one.
void ReportGrowth(const std::string& name, const Comparison& larger, const Comparison& smaller,
                  double atMost);
// A ratio that is no comparison of times, such as of memory. The two quantities are named by their unit.
void Report(const std::string& name, double ours, double floor, const char* unit, double atMost);

// Bytes of memory that this process has committed.
std::size_t CommittedBytes();

// Ends the program with a message: a benchmark whose work fails measures nothing.
void Require(bool condition, const char* what);

// A file registers itself: `const Benchmark kTables("tables", [] { ... });`. The command line selects by name; what
// runs in one process meets the heap that those before it left.
class Benchmark {
 public:
  Benchmark(const char* name, void (*run)());
};

}  // namespace orv::bench
