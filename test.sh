#!/usr/bin/env bash
# Builds everything and runs every test: the Windows build under Wine, the native build with sanitizers, some
# seconds of each fuzz target, the public headers alone. Prints how long each step took and 'N passed, N failed' at the
# end; fails when a step did.
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
root=$PWD
mkdir -p build/logs
passed=0
failed=0
failures=()
times=()

say() { printf '[%4ds] %s\n' "$SECONDS" "$*"; }

# report NAME STATUS SECONDS: counts a step; one line when it went well, the end of its output when it did not.
report() {
  local log="build/logs/$1.log"
  times+=("$3 $1")
  if [ "$2" = 0 ]; then
    passed=$((passed + 1))
    # Test runners say how much they ran; a reader wants to see it.
    grep -hE 'tests passed|[0-9]+ passed, [0-9]+ failed' "$log" | tail -n 1 | sed 's/^/        /'
  else
    failed=$((failed + 1))
    failures+=("$1")
    say "$1 FAILED; the end of $log:"
    tail -n 60 "$log"
  fi
}

# reason NAME: why a step failed: what its failed tests printed, or the end of what it did.
reason() {
  local log="build/logs/$1.log" tests
  tests=$(awk '/^ *[0-9]+\/[0-9]+ Test +#|^ +Start +[0-9]+:/ { fails = /\*\*\*/ } fails' "$log" | tail -n 40)
  printf -- '--- %s\n%s\n' "$1" "${tests:-$(tail -n 20 "$log")}"
}

# step NAME COMMAND...: runs it and waits.
step() {
  local name=$1 begin=$SECONDS
  shift
  say "$name"
  "$@" >"build/logs/$name.log" 2>&1
  report "$name" $? $((SECONDS - begin))
}

# aside NAME COMMAND...: runs it beside the steps that follow, at a lower priority; `joined` waits for it.
aside() {
  aside_name=$1
  shift
  say "$aside_name, beside what follows"
  aside_begin=$SECONDS
  (
    renice -n 10 "$BASHPID" && "$@"
    status=$?
    echo "$SECONDS" >build/logs/aside.ended
    exit $status
  ) >"build/logs/$aside_name.log" 2>&1 &
  aside_pid=$!
}
joined() {
  wait "$aside_pid"
  local status=$?
  say "$aside_name, done"
  report "$aside_name" "$status" $(($(<build/logs/aside.ended) - aside_begin))
}

finish() {
  say "done; seconds a step:"
  printf '%5d  %s\n' ${times[@]} | sort -rn
  # Once more at the end, where whoever keeps only the end of this output sees it.
  for step in ${failures[@]+"${failures[@]}"}; do reason "$step"; done
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
times+=("$SECONDS setup")

step layers python3 scripts/check_layers.py
step test-share python3 scripts/check_test_share.py
step windows-release-build build windows-release
[ "$failed" = 0 ] || { finish; exit 1; }
aside host-asan-build build host-asan
step public-headers tests/headers/check_headers.sh
step windows-release-tests run_ctest windows-release
step delivered-library scripts/check_library.sh "$root/build/windows-release/bin"
step demo ./demo.sh --quick
joined
step host-asan-tests run_ctest host-asan
for target in build/host-asan/bin/fuzz_*; do
  [ -x "$target" ] || continue
  step "$(basename "$target")" fuzz "$root/$target" "${ORV_FUZZ_SECONDS:-5}"
done
finish
