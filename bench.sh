#!/usr/bin/env bash
# Runs the benchmarks under Wine, each in a process of its own, and writes their results to docs/performance.md. With
# names runs only those and writes nothing.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
./scripts/setup.sh
mkdir -p build/logs
cmake --preset windows-release >build/logs/bench-build.log 2>&1
cmake --build --preset windows-release --target orv_bench >>build/logs/bench-build.log 2>&1 ||
  { echo "bench: the build failed; see build/logs/bench-build.log" >&2; exit 1; }
program=build/windows-release/bin/orv_bench.exe
names=$*
[ -n "$names" ] || names=$(./scripts/wine-run.sh "$program" | tr -d '\r')
results=build/bench-results.md
printf '| benchmark | ours | floor | ratio (quartiles) | at most | holds |\n|---|---|---|---|---|---|\n' | tee "$results"
for name in $names; do
  ./scripts/wine-run.sh "$program" "$name" | tee -a "$results"
done
[ $# = 0 ] || exit 0
machine="$(uname -m), $(nproc) processors, $(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1)"
{
  sed '/^<!-- results -->$/q' docs/performance.md
  printf '\nMeasured on %s; %s; %s.\n\n' "$(date -I)" "$machine" "$(/usr/lib/wine/wine64 --version)"
  cat "$results"
} >build/performance.md
mv build/performance.md docs/performance.md
