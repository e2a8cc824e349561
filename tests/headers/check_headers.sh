#!/bin/sh
# Compiles every public header alone, one client source a language and a provider of version 1.0, as C11 and as C++20
# with gcc and clang for Windows. Prints "N passed, N failed"; fails when a compilation fails or a compiler is missing.
set -u

root=$(cd "$(dirname "$0")/../.." && pwd)
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT INT TERM

triple=x86_64-w64-mingw32
gcc_lib=$(dirname "$("$triple-gcc-posix" -print-libgcc-file-name)")
sysroot=/usr/$triple/include
warnings="-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror"
clang_base="--target=x86_64-w64-windows-gnu -Wno-microsoft-exception-spec"
clang_c="clang $clang_base -isystem $sysroot"
clang_cxx="clang++ $clang_base -nostdinc++ -nostdlibinc -isystem $gcc_lib/include/c++ \
  -isystem $gcc_lib/include/c++/$triple -isystem $gcc_lib/include/c++/backward -isystem $sysroot"

passed=0
failed=0

# check NAME COMMAND...: one compilation is one case.
check() {
  name=$1
  shift
  if "$@" >"$work/log" 2>&1; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    echo "FAILED $name"
    cat "$work/log"
  fi
}

# check_c NAME FILE and check_cxx NAME FILE: the file with both compilers. The words of a command are split on purpose.
check_c() {
  check "$1 (C, gcc)" "$triple-gcc-posix" -std=c11 $warnings -fsyntax-only -I "$root/include" "$2"
  check "$1 (C, clang)" $clang_c -std=c11 $warnings -fsyntax-only -I "$root/include" "$2"
}
check_cxx() {
  check "$1 (C++, gcc)" "$triple-g++-posix" -std=c++20 $warnings -fsyntax-only -I "$root/include" "$2"
  check "$1 (C++, clang)" $clang_cxx -std=c++20 $warnings -fsyntax-only -I "$root/include" "$2"
}

for header in "$root"/include/orv/*.h; do
  file=$(basename "$header")
  # Included twice: an include guard that does not guard fails here. The declaration keeps the source from being empty.
  printf '#include "orv/%s"\n#include "orv/%s"\nextern int not_empty;\n' "$file" "$file" >"$work/alone.c"
  cp "$work/alone.c" "$work/alone.cpp"
  check_c "$file" "$work/alone.c"
  check_cxx "$file" "$work/alone.cpp"
done

# The helpers are C++ only.
for header in "$root"/include/orv/*.hpp "$root"/include/orv/kit/*.hpp; do
  file=${header#"$root"/include/}
  printf '#include "%s"\nextern int not_empty;\n' "$file" >"$work/alone.cpp"
  check_cxx "$file" "$work/alone.cpp"
done

check_c "client.c" "$root/tests/headers/client.c"
check_cxx "client.cpp" "$root/tests/headers/client.cpp"
check_cxx "provider_1_0.cpp" "$root/tests/headers/provider_1_0.cpp"

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
