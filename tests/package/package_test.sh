#!/usr/bin/env bash
# Installs the build into a folder of its own and uses it as an SDK: a CMake project that finds the package, and an
# object of the other tool family. Both programs run in the installation. Arguments: build folder, tool-chain file.
set -euo pipefail
build=$(cd "$1" && pwd) toolchain=$2
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$build/package_test
rm -rf "$work"
cmake --install "$build" --prefix "$work/sdk" >"$work.log"

cmake -S "$here/consumer" -B "$work/consumer" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
  -DCMAKE_PREFIX_PATH="$work/sdk" -DCMAKE_FIND_ROOT_PATH_MODE_PACKAGE=BOTH
cmake --build "$work/consumer"
cp "$work/consumer/consumer.exe" "$work/sdk/bin/"
"$here/../../scripts/wine-run.sh" "$work/sdk/bin/consumer.exe"

clang --target=x86_64-pc-windows-msvc -c "$here/foreign.c" -o "$work/foreign.obj"
kernel=$(x86_64-w64-mingw32-gcc-posix -print-file-name=libkernel32.a)
lld-link /nologo /nodefaultlib /entry:start /subsystem:console "/out:$work/sdk/bin/foreign.exe" \
  "$work/foreign.obj" "$work/sdk/lib/xhtaba.lib" "$kernel"
"$here/../../scripts/wine-run.sh" "$work/sdk/bin/foreign.exe"

# Every name of the model table is there, and all are one file.
while IFS=, read -r file _; do
  cmp "$work/sdk/bin/xhtaba.dll" "$work/sdk/bin/$file"
done < <(tail -n +2 "$here/../../data/models.csv")
