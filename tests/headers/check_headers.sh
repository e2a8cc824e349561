#!/bin/sh
# Compiles every public header alone, one client source a language and a provider of version 1.0, as C99 and C++20,
# the client as C11 and with the tables of C in C++ too, with gcc and clang for Windows, and runs what clang makes of
# handlers round methods. Prints "N passed, N failed"; fails when a compilation fails or a compiler is missing.
set -u

root=$(cd "$(dirname "$0")/../.." && pwd)
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

# check_c NAME FILE [STANDARDS] and check_cxx NAME FILE [FLAG...]: the file with both compilers. The words of a command are split
# on purpose.
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
  ! "$@" >"$work/said" 2>&1 && grep -q "$text" "$work/said"
}
refuse() {
  text=$1
  check "refused: $text (gcc)" says "$triple-g++-posix" -std=c++20 -fsyntax-only -I "$root/include" "$2"
  check "refused: $text (clang)" says $clang_cxx -std=c++20 -fsyntax-only -I "$root/include" "$2"
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
check "handlers.cpp (run, clang)" "$root/scripts/wine-run.sh" "$work/handlers.exe"

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
