#!/usr/bin/env bash
# Builds everything and runs every test: the Windows build under Wine, the native build with sanitizers, some
# seconds of each fuzz target, the public headers alone. Prints 'N passed, N failed' at the end.
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
root=$PWD
mkdir -p build/logs
passed=0
failed=0

say() { printf '[%4ds] %s\n' "$SECONDS" "$*"; }

# step NAME COMMAND...: one line when it goes well, the end of its output when it does not.
step() {
  local name=$1 log="build/logs/$1.log"
  shift
  say "$name"
  if "$@" >"$log" 2>&1; then
    passed=$((passed + 1))
    # Test runners say how much they ran; a reader wants to see it.
    grep -hE 'tests passed|[0-9]+ passed, [0-9]+ failed' "$log" | tail -n 1 | sed 's/^/        /'
  else
    failed=$((failed + 1))
    say "$name FAILED; the end of $log:"
    tail -n 60 "$log"
  fi
}

finish() {
  say "done"
  printf '%d passed, %d failed\n' "$passed" "$failed"
  [ "$failed" = 0 ]
}

build() {
  cmake --preset "$1" && cmake --build --preset "$1"
}

# Up to two attempts are not made: a test that fails once has failed.
run_ctest() {
  ctest --test-dir "build/$1" --output-on-failure --no-tests=error -j 2
}

fuzz() {
  local target=$1 seconds=$2 name
  name=$(basename "$target")
  mkdir -p "build/fuzz/$name"
  "$target" -max_total_time="$seconds" -print_final_stats=1 -artifact_prefix="build/fuzz/$name/" \
    "build/fuzz/$name" "fuzz/corpus/$name"
}

./scripts/setup.sh || exit 1

step layers python3 scripts/check_layers.py
step windows-release-build build windows-release
[ "$failed" = 0 ] || { finish; exit 1; }
step public-headers tests/headers/check_headers.sh
step windows-release-tests run_ctest windows-release
step delivered-library scripts/check_library.sh "$root/build/windows-release/bin"
step demo ./demo.sh --quick
step host-asan-build build host-asan
step host-asan-tests run_ctest host-asan
for target in build/host-asan/bin/fuzz_*; do
  [ -x "$target" ] || continue
  step "$(basename "$target")" fuzz "$root/$target" "${ORV_FUZZ_SECONDS:-10}"
done
finish
