// The pairs, the table of results and the main program.
#include "bench/harness.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "platform/process.h"
#include "platform/win.h"

// After windows.h.
#include <psapi.h>

namespace orv::bench {
namespace {

constexpr int kPairs = 21;
constexpr double kBatchNanoseconds = 20e6;

struct Registered {
  const char* name;
  void (*run)();
};
std::vector<Registered>& Benchmarks() {
  static std::vector<Registered> all;
  return all;
}

double TimeBatch(const Work& work, std::uint64_t runs) {
  const auto start = std::chrono::steady_clock::now();
  for (std::uint64_t i = 0; i < runs; ++i) work();
  return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count();
}

// Warms up on the way.
std::uint64_t RunsOfABatch(const Work& work) {
  std::uint64_t runs = 1;
  for (;;) {
    const double time = TimeBatch(work, runs);
    if (time >= kBatchNanoseconds) return runs;
    runs = std::max(runs * 2,
                    static_cast<std::uint64_t>(static_cast<double>(runs) * kBatchNanoseconds / (time + 1)));
  }
}

double Quantile(std::vector<double>& sorted, double part) {
  std::sort(sorted.begin(), sorted.end());
  return sorted[static_cast<std::size_t>(part * static_cast<double>(sorted.size() - 1) + 0.5)];
}

}  // namespace

Comparison Compare(const Work& ours, const Work& floor) {
  const std::uint64_t runs = std::max(RunsOfABatch(ours), RunsOfABatch(floor));
  std::vector<double> ratios, ourTimes, floorTimes;
  for (int pair = 0; pair < kPairs; ++pair) {
    // Whoever comes second finds warmer caches: take turns.
    const bool oursFirst = pair % 2 == 0;
    double first = TimeBatch(oursFirst ? ours : floor, runs);
    double second = TimeBatch(oursFirst ? floor : ours, runs);
    if (!oursFirst) std::swap(first, second);
    ratios.push_back(first / second);
    ourTimes.push_back(first / static_cast<double>(runs));
    floorTimes.push_back(second / static_cast<double>(runs));
  }
  return {Quantile(ratios, 0.5), Quantile(ratios, 0.25), Quantile(ratios, 0.75), Quantile(ourTimes, 0.5),
          Quantile(floorTimes, 0.5)};
}

double Measure(const Work& work) {
  const std::uint64_t runs = RunsOfABatch(work);
  std::vector<double> times;
  for (int i = 0; i < kPairs; ++i) times.push_back(TimeBatch(work, runs) / static_cast<double>(runs));
  return Quantile(times, 0.5);
}

void Report(const std::string& name, const Comparison& result, double atMost) {
  std::printf("| %s | %.1f ns | %.1f ns | %.2f (%.2f to %.2f) | %.2f | %s |\n", name.c_str(), result.ours,
              result.floor, result.ratio, result.low, result.high, atMost,
              result.ratio <= atMost ? "yes" : "NO");
  std::fflush(stdout);
}

void ReportAdded(const std::string& name, const Comparison& result, int calls, double atMostNanoseconds) {
  const double ours = result.ours / calls;
  const double floor = result.floor / calls;
  std::printf("| %s | %.1f ns | %.1f ns | %.2f (%.2f to %.2f) | +%.0f ns | %s |\n", name.c_str(), ours, floor,
              result.ratio, result.low, result.high, atMostNanoseconds,
              ours - floor <= atMostNanoseconds ? "yes" : "NO");
  std::fflush(stdout);
}

void ReportGrowth(const std::string& name, const Comparison& larger, const Comparison& smaller,
                  double atMost) {
  Report(name, larger.ratio, smaller.ratio, "x", atMost);
}

void Report(const std::string& name, double ours, double floor, const char* unit, double atMost) {
  const double ratio = ours / floor;
  std::printf("| %s | %.1f %s | %.1f %s | %.2f | %.2f | %s |\n", name.c_str(), ours, unit, floor, unit, ratio,
              atMost, ratio <= atMost ? "yes" : "NO");
  std::fflush(stdout);
}

std::size_t CommittedBytes() {
  PROCESS_MEMORY_COUNTERS counters = {};
  counters.cb = sizeof counters;
  Require(K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters), "memory counters");
  return counters.PagefileUsage;
}

void Require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "bench: %s failed\n", what);
  std::exit(1);
}

Benchmark::Benchmark(const char* name, void (*run)()) { Benchmarks().push_back({name, run}); }

}  // namespace orv::bench

// Without arguments lists the names of the benchmarks; else runs those that are named, each of which should have a
// process of its own.
int main(int argc, char** argv) {
  using namespace orv::bench;
  Require(orv::process::AcquireTaskAllocator(), "the task allocator");
  std::sort(Benchmarks().begin(), Benchmarks().end(),
            [](const auto& a, const auto& b) { return std::string_view(a.name) < b.name; });
  if (argc == 1) {
    for (const auto& benchmark : Benchmarks()) std::printf("%s\n", benchmark.name);
    return 0;
  }
  for (int i = 1; i < argc; ++i) {
    const auto named = std::find_if(Benchmarks().begin(), Benchmarks().end(), [&](const auto& benchmark) {
      return std::string_view(benchmark.name) == argv[i];
    });
    Require(named != Benchmarks().end(), "finding a benchmark of that name");
    named->run();
  }
  return 0;
}
