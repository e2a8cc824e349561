#!/usr/bin/env bash
# Runs the benchmarks under Wine and writes their results to docs/performance.md.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
./scripts/setup.sh
mkdir -p build/logs
cmake --preset windows-release >build/logs/bench-build.log 2>&1
cmake --build --preset windows-release --target orv_bench >>build/logs/bench-build.log 2>&1 ||
  { echo "bench: the build failed; see build/logs/bench-build.log" >&2; exit 1; }
results=build/bench-results.md
./scripts/wine-run.sh build/windows-release/bin/orv_bench.exe "$@" | tee "$results"
[ $# = 0 ] || exit 0
machine="$(uname -m), $(nproc) processors, $(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1)"
{
  sed '/^<!-- results -->$/q' docs/performance.md
  printf '\nMeasured on %s; %s; %s.\n\n' "$(date -I)" "$machine" "$(/usr/lib/wine/wine64 --version)"
  cat "$results"
} >build/performance.md
mv build/performance.md docs/performance.md
