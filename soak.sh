#!/usr/bin/env bash
# Kills, crowds, repetitions and damage at full size, under Wine, against the library that is delivered; writes the table
# of docs/reliability.md. With rows (scripts/soak.py --help names them) or amounts runs only those and writes nothing.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
./scripts/setup.sh
mkdir -p build/logs
{
  cmake --preset windows-release
  cmake --build --preset windows-release --target product orv_soak book_test kit_test personal_provider_test faulty faulty_decorated faulty_thread_local orv_bench
  cmake --preset host-asan
  cmake --build --preset host-asan --target fuzz_targets
} >build/logs/soak-build.log 2>&1 || { echo "soak: the build failed; see build/logs/soak-build.log" >&2; exit 1; }
[ $# = 0 ] || exec python3 scripts/soak.py build/windows-release "$@"
status=0
python3 scripts/soak.py build/windows-release --table build/soak-table.md || status=$?
machine="$(uname -m), $(nproc) processors, $(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1)"
{
  sed '/^<!-- results -->$/q' docs/reliability.md
  printf '\nRun on %s; %s; %s.\n\n' "$(date -I)" "$machine" "$(/usr/lib/wine/wine64 --version)"
  cat build/soak-table.md
} >build/reliability.md
mv build/reliability.md docs/reliability.md
exit $status
