#!/usr/bin/env bash
# Compiles every public header alone, all of them together, one client source a language and a provider of version 1.0,
# as C99 and C++20, the client as C11 and with the tables of C in C++ too, for Windows: what stands alone with one
# compiler a language, everything else with gcc and clang. Runs what clang makes of handlers round methods. Prints
# "N passed, N failed"; fails when a compilation fails or a compiler is missing.
set -u

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT INT TERM

triple=x86_64-w64-mingw32
gcc_lib=$(dirname "$("$triple-gcc-posix" -print-libgcc-file-name)")
sysroot=/usr/$triple/include
warnings="-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror"
clang_base="--target=x86_64-w64-windows-gnu"
clang_c="clang $clang_base -isystem $sysroot"
clang_cxx="clang++ $clang_base -nostdinc++ -nostdlibinc -isystem $gcc_lib/include/c++ \
  -isystem $gcc_lib/include/c++/$triple -isystem $gcc_lib/include/c++/backward -isystem $sysroot"

cases=0
at_once=2

# check NAME COMMAND...: one compilation is one case; so many run at a time.
check() {
  local log=$work/$((cases += 1)).log
  while [ "$(jobs -rp | wc -l)" -ge "$at_once" ]; do wait -n; done
  { "${@:2}" >"$log" 2>&1 || { echo "FAILED $1" && cat "$log"; } >"$log.failed"; } &
}

# check_c NAME FILE [STANDARDS] and check_cxx NAME FILE [FLAG...]: the file with both compilers. The words of a command
# are split on purpose.
check_c() {
  for standard in ${3:-c99}; do
    check "$1 ($standard, gcc)" "$triple-gcc-posix" -std=$standard $warnings -fsyntax-only -I "$root/include" "$2"
    check "$1 ($standard, clang)" $clang_c -std=$standard $warnings -fsyntax-only -I "$root/include" "$2"
  done
}
check_cxx() {
  name=$1 file=$2
  shift 2
  check "$name (C++ $*, gcc)" "$triple-g++-posix" -std=c++20 $warnings -fsyntax-only "$@" -I "$root/include" "$file"
  check "$name (C++ $*, clang)" $clang_cxx -std=c++20 $warnings -fsyntax-only "$@" -I "$root/include" "$file"
}
# refuse TEXT FILE: neither compiler takes the file, and both say why.
says() {
  local said
  ! said=$("$@" 2>&1) && grep -q "$text" <<<"$said"
}
refuse() {
  text=$1
  check "refused: $text (gcc)" says "$triple-g++-posix" -std=c++20 -fsyntax-only -I "$root/include" "$2"
  check "refused: $text (clang)" says $clang_cxx -std=c++20 -fsyntax-only -I "$root/include" "$2"
}

# alone_c HEADER and alone_cxx HEADER: included twice, since an include guard that does not guard fails here. The
# declaration keeps the source from being empty.
alone() { printf '#include "%s"\n#include "%s"\nextern int not_empty;\n' "$1" "$1" >"$2"; }
alone_c() {
  local source=$work/${1//\//_}.c
  alone "$1" "$source"
  check "$1 (c99, gcc)" "$triple-gcc-posix" -std=c99 $warnings -fsyntax-only -I "$root/include" "$source"
}
alone_cxx() {
  local source=$work/${1//\//_}.cpp
  alone "$1" "$source"
  check "$1 (C++, clang)" $clang_cxx -std=c++20 $warnings -fsyntax-only -I "$root/include" "$source"
}

cd "$root/include" || exit 1
for header in orv/*.h; do
  alone_c "$header"
  printf '#include "%s"\n' "$header" >>"$work/together.c"
done
# The helpers are C++ only.
for header in orv/*.h orv/*.hpp orv/kit/*.hpp; do
  alone_cxx "$header"
  printf '#include "%s"\n' "$header" >>"$work/together.cpp"
done
check_c "all headers" "$work/together.c"
check_cxx "all headers" "$work/together.cpp"

check_c "client.c" "$root/tests/headers/client.c" "c99 c11"
check_cxx "client.cpp" "$root/tests/headers/client.cpp"
check_cxx "provider_1_0.cpp" "$root/tests/headers/provider_1_0.cpp"
check "orvcmacros.h follows the declarations" python3 -B "$root/scripts/make_c_macros.py" --check

cat >"$work/tables.cpp" <<'END'
#include "orv/orv.h"
extern LPADRBOOK book;
ULONG Use() { return FAILED(IAddrBook_Unadvise(book, 1)) ? book->lpVtbl->Release(book) : IAddrBook_AddRef(book); }
END
check_cxx "tables of C" "$work/tables.cpp" -DCINTERFACE -DCOBJMACROS -Wno-missing-declarations

cat >"$work/unnamed.cpp" <<'END'
#include "orv/orvbase.hpp"
struct IStranger : IUnknown {};
class Stranger final : public orv::sdk::Object<IStranger> {};
IUnknown* Make() { return new Stranger; }
END
refuse "specialise it" "$work/unnamed.cpp"

# A compiler that takes methods for never throwing drops handlers only where it optimises.
check "handlers.cpp (linked, clang)" $clang_cxx -std=c++20 $warnings -O2 -I "$root/include" -fuse-ld=lld -pthread \
  -B"$gcc_lib" -L"$gcc_lib" -L"$sysroot/../lib" -static -o "$work/handlers.exe" "$root/tests/headers/handlers.cpp"
wait
check "handlers.cpp (run, clang)" "$root/scripts/wine-run.sh" "$work/handlers.exe"

wait
shopt -s nullglob
failures=("$work"/*.failed)
cat /dev/null "${failures[@]}"
echo "$((cases - ${#failures[@]})) passed, ${#failures[@]} failed"
[ ${#failures[@]} -eq 0 ]
