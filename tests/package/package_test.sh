#!/usr/bin/env bash
# Installs the build into a folder of its own and uses it as outside authors do: clients by the CMake package, by
# pkg-config and in C, an object of the other tool family, the kit with another compiler, the sample and both templates.
# Programs run in the installation, and orvctl tries the providers there. Arguments: build folder, tool-chain file.
set -euo pipefail
build=$(cd "$1" && pwd) toolchain=$2
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
scripts=$here/../../scripts
work=$build/package_test
sdk=$work/sdk
gcc=x86_64-w64-mingw32-gcc-posix cxx=x86_64-w64-mingw32-g++-posix
rm -rf "$work"
# Moved after installing: nothing in it may remember where it was laid.
cmake --install "$build" --prefix "$work/as built" >"$work.log"
mv "$work/as built" "$sdk"

say() { echo "== $*"; }
run() { "$scripts/wine-run.sh" "$sdk/bin/$1" "${@:2}"; }
# package NAME FOLDER [FLAG...]: configures and builds what finds the package.
package() {
  cmake -S "$2" -B "$work/$1" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCMAKE_FIND_ROOT_PATH_MODE_PACKAGE=BOTH \
    -DCMAKE_BUILD_TYPE=Release "${@:3}"
  cmake --build "$work/$1"
}
# Of much code, whose speed nobody measures here.
quickly=(-DCMAKE_CXX_FLAGS_RELEASE=-O0)
# pkg PACKAGE...: what pkg-config says of a package, from wherever it was laid.
pkg() { PKG_CONFIG_LIBDIR="$sdk/lib/pkgconfig" pkg-config --cflags --libs "$1"; }

say "a client and a provider by the CMake package"
package consumer "$here/consumer" -DCMAKE_PREFIX_PATH="$sdk"
cp "$work/consumer/consumer.exe" "$sdk/bin/"
run consumer.exe

say "the same client and provider by pkg-config"
"$cxx" -std=c++20 "$here/consumer/consumer.cpp" $(pkg orv-address-book) -static -o "$sdk/bin/by_pkg_config.exe"
run by_pkg_config.exe
"$cxx" -shared "$here/consumer/provider.cpp" $(pkg orv-provider-kit) -o "$work/by_pkg_config.dll"

say "a client in C"
"$gcc" -std=c99 -Wpedantic -Werror "$here/client.c" $(pkg orv-address-book) -o "$sdk/bin/client_in_c.exe"
run client_in_c.exe

say "an object of the other tool family"
clang --target=x86_64-pc-windows-msvc -c "$here/foreign.c" -o "$work/foreign.obj"
lld-link /nologo /nodefaultlib /entry:start /subsystem:console "/out:$sdk/bin/foreign.exe" \
  "$work/foreign.obj" "$sdk/lib/xhtaba.lib" "$("$gcc" -print-file-name=libkernel32.a)"
run foreign.exe

say "every name of the model table is there, and all are one file"
while IFS=, read -r file _; do
  cmp "$sdk/bin/xhtaba.dll" "$sdk/bin/$file"
done < <(tail -n +2 "$here/../../data/models.csv")

say "every binary bears the version of the headers"
part() { sed -n "s/^#define ORV_VERSION_$1 //p" "$sdk/include/orv/orvversion.h"; }
version=$(part MAJOR).$(part MINOR).$(part PATCH)
for file in "$sdk"/bin/xht*.dll "$sdk"/bin/XHT*.dll "$sdk"/bin/orvctl.exe; do
  grep -qaF "FileVersion$version" <(tr -d '\0' <"$file") || { echo "$file has no version $version"; exit 1; }
done
[ "$(run orvctl.exe --version | tr -d '\r')" = "orvctl $version" ]

say "the sample"
package sample "$sdk/share/orv/sample" "${quickly[@]}" -DCMAKE_PROJECT_INCLUDE="$here/quickly.cmake"
cp "$work/sample/xhtsmpa.dll" "$sdk/bin/"

say "the first hour of the guide, command by command"
export ORV=$sdk ORV_RUN=$scripts/wine-run.sh
orvctl() { "$ORV_RUN" "$ORV/bin/orvctl.exe" "$@"; }
export -f orvctl
awk '/^## From nothing/ { on = 1; next } /^## / { on = 0 } /^```/ { block = on && /^```sh/; next } block' \
  "$sdk/share/doc/provider-guide.md" >"$work/hour.sh"
mkdir "$work/hour"
profile="package test"
sed -i "s/ mine/ '$profile'/" "$work/hour.sh"
forget() { orvctl profile delete "$profile" >"$work/forgotten" 2>&1 || true; }
trap forget EXIT
forget
(cd "$work/hour" && bash -xeuo pipefail "$work/hour.sh" >"$work/hour.log" 2>&1) || { cat "$work/hour.log"; exit 1; }
# The tree, the list and the entry.
for text in "People" "佐藤 健" "PR_PRIMARY_FAX_NUMBER_W"; do
  grep -qF "$text" "$work/hour.log" || { cat "$work/hour.log"; echo "'$text' is missing"; exit 1; }
done

say "the writable template keeps the rules, the sample shows its book"
# A copy each: what is checked here is changed.
for i in {1..600}; do echo "$i;Person $i;+49 40 $i"; done >"$work/people.txt"
checked() { orvctl provider check "$@" --threads-seconds 1 --writable >"$work/check.log" || { cat "$work/check.log"; exit 1; }; }
package template-writable "$sdk/share/orv/template-writable"
cp "$work/template-writable/xhttpwa.dll" "$sdk/bin/"
(cd "$work" && checked xhttpwa.dll --config people.txt)
grep -q 'write.create *ok' "$work/check.log" || { cat "$work/check.log"; exit 1; }
orvctl profile create "$profile"
orvctl service add "$profile" ContactFile --config "Z:$(realpath "$here/../../data/contacts.vcf" | tr / '\\')"
orvctl book tree "$profile"

say "the templates by their one line"
for template in template template-writable; do
  source=$sdk/share/orv/$template/template.cpp
  line=$(sed -n 's|^//   \(x86_64.*\)|\1|p; s|^//       \(.*\)|\1|p' "$source" | tr '\n' ' ')
  rm "$sdk"/bin/xhttp*.dll
  (cd "${source%/*}" && $line)
  ls "$sdk"/bin/xhttp*.dll
done

say "the kit built by another compiler"
clang=$here/../../cmake/mingw-clang.cmake
cmake -S "$here/other_compiler" -B "$work/other" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$clang" -DCMAKE_BUILD_TYPE=Release \
  -DSDK="$sdk" -DCMAKE_UNITY_BUILD=ON -DCMAKE_CXX_FLAGS_RELEASE=-O1  # without, clang's inline functions of the run-time meet their library's
cmake --build "$work/other"
