#!/usr/bin/env bash
# Installs what is missing to build and run everything on Debian 12; does nothing when all is there.
#   scripts/setup.sh            compilers, Wine, test and help tools
#   scripts/setup.sh pictures   also what ./demo.sh --pictures needs
set -euo pipefail

packages=(cmake ninja-build g++ g++-mingw-w64-x86-64-posix clang lld llvm libclang-rt-14-dev
  wine wine64 googletest libcli11-dev nlohmann-json3-dev fp-utils python3)
if [ "${1:-}" = pictures ]; then
  packages+=(fonts-dejavu-core fonts-ipafont-gothic fonts-wine)
fi

fail() {
  echo "setup: $*" >&2
  exit 1
}

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

command -v apt-get >/dev/null || fail "this machine has no apt-get; Debian 12 is needed"
as_root=()
if [ "$(id -u)" != 0 ]; then
  command -v sudo >/dev/null || fail "packages are missing (${missing[*]}): run as root, or install sudo"
  as_root=(sudo)
fi

echo "setup: installing ${missing[*]}"
log=$(mktemp)
trap 'rm -f "$log"' EXIT
export DEBIAN_FRONTEND=noninteractive
run() { "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive "$@" >>"$log" 2>&1; }
run apt-get update || fail "the package lists cannot be read (no network?): $(tail -n 1 "$log")"
run apt-get install -y --no-install-recommends "${missing[@]}" ||
  fail "packages cannot be installed: $(grep -m 1 '^E:' "$log" || tail -n 1 "$log")"
