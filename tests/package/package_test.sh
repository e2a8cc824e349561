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
package sample "$sdk/share/orv/sample"
cp "$work/sample/xhtsmpa.dll" "$sdk/bin/"

# into_catalogue NAME FILE: the service of a catalogue into that of the installation, as the guide says.
into_catalogue() {
  sed -i "/^\[Services\]/a $(grep -m 1 "^$1=" "$2")" "$sdk/bin/XHTASVA.ini"
  sed -n "/^\[$1\]/,\$p" "$2" >>"$sdk/bin/XHTASVA.ini"
}
# lists TEXT COMMAND...: what orvctl prints holds the text.
lists() {
  local text=$1
  shift
  run orvctl.exe "$@" >"$work/out" || { cat "$work/out"; return 1; }
  grep -qF "$text" "$work/out" || { echo "orvctl $*: '$text' is missing in:"; cat "$work/out"; return 1; }
}
profile="package test"
forget() { run orvctl.exe profile delete "$profile" >"$work/forgotten" 2>&1 || true; }
# PATH as programs of the installation see it.
windows() { echo "Z:${1//\//\\}"; }

say "both templates, in a profile of the installation"
printf '1;Anna Berg;+49 40 1\n2;佐藤 健;+81 3 2\nno line of ours\n' >"$work/people.txt"
for template in template template-writable; do
  package "$template" "$sdk/share/orv/$template"
  cp "$work/$template"/xht*.dll "$sdk/bin/"
done
into_catalogue PhoneList "$sdk/share/orv/template/catalogue.ini"
into_catalogue PhoneBook "$sdk/share/orv/template-writable/catalogue.ini"
trap forget EXIT
forget
run orvctl.exe profile create "$profile"
for service in PhoneList PhoneBook; do
  run orvctl.exe service add "$profile" "$service" --config "$(windows "$work/people.txt")"
  lists "佐藤 健" book list "$profile"
  lists "+49 40 1" book show "$profile" --first
  run orvctl.exe service remove "$profile" "$service"
done
run orvctl.exe service add "$profile" ContactFile --config "$(windows "$here/../../data/contacts.vcf")"
lists "Contact file" book tree "$profile"

say "the template by its one line"
line=$(sed -n 's|^//   \(x86_64.*\)|\1|p; s|^//       \(.*\)|\1|p' "$sdk/share/orv/template/template.cpp" | tr '\n' ' ')
rm "$sdk/bin/xhttpla.dll"
(cd "$sdk/share/orv/template" && $line)
[ -s "$sdk/bin/xhttpla.dll" ]

say "the kit built by another compiler"
clang=$here/../../cmake/mingw-clang.cmake
cmake -S "$here/other_compiler" -B "$work/other" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$clang" -DCMAKE_BUILD_TYPE=Release \
  -DSDK="$sdk"
cmake --build "$work/other"
