#!/usr/bin/env bash
# Installs what is missing to build and run everything on Debian 12; does nothing, and needs no network, when all is
# there.
#   scripts/setup.sh            compilers, Wine, test and help tools
#   scripts/setup.sh pictures   also what ./demo.sh --pictures needs
set -euo pipefail

packages=(cmake ninja-build g++ g++-mingw-w64-x86-64-posix clang lld llvm libclang-rt-14-dev
  wine wine64 googletest libcli11-dev nlohmann-json3-dev fp-utils python3)
# What the source of SQLite, which Debian has as a source package only, is made with.
source_packages=(dpkg-dev make gcc libc6-dev tcl)
if [ "${1:-}" = pictures ]; then
  packages+=(fonts-dejavu-core fonts-ipafont-gothic fonts-wine xvfb)
fi

fail() {
  echo "setup: $*" >&2
  exit 1
}

log=$(mktemp)
trap 'rm -f "$log"' EXIT
export DEBIAN_FRONTEND=noninteractive
as_root=()
find_root() {
  command -v apt-get >/dev/null || fail "this machine has no apt-get; Debian 12 is needed"
  [ "$(id -u)" != 0 ] || return 0
  command -v sudo >/dev/null || fail "packages are missing ($*): run as root, or install sudo"
  as_root=(sudo)
}
run() { "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive "$@" >>"$log" 2>&1; }

# install PACKAGE...: those of them that are missing.
install() {
  local missing=() package
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0
  find_root "${missing[@]}"
  echo "setup: installing ${missing[*]}"
  run apt-get update || fail "the package lists cannot be read (no network?): $(tail -n 1 "$log")"
  run apt-get install -y --no-install-recommends "${missing[@]}" ||
    fail "packages cannot be installed: $(grep -m 1 '^E:' "$log" || tail -n 1 "$log")"
}

# source_of PACKAGE FOLDER: its patched source, found through lists of its own made from the machine's.
source_of() {
  local lists=$2/lists
  mkdir -p "$lists/parts" "$lists/state/partial"
  sed -s 's/^Types:.*/Types: deb-src/' /etc/apt/sources.list.d/debian.sources >"$lists/parts/debian.sources" 2>/dev/null ||
    rm -f "$lists/parts/debian.sources"
  sed -n 's/^deb /deb-src /p' /etc/apt/sources.list >"$lists/parts/debian.list" 2>/dev/null || true
  local apt=(apt-get -o Dir::Etc::sourcelist=/dev/null -o "Dir::Etc::sourceparts=$lists/parts"
    -o "Dir::State::lists=$lists/state" -o APT::Sandbox::User=root)
  "${apt[@]}" update >>"$log" 2>&1 || fail "the lists of sources cannot be read (no network?): $(tail -n 1 "$log")"
  (cd "$2" && "${apt[@]}" source "$1") >>"$log" 2>&1 ||
    fail "the source of $1 cannot be had: $(grep -m 1 '^E:' "$log" || tail -n 1 "$log")"
}

# sqlite: its source in one file, where CMake looks for it.
sqlite() {
  local folder=build/deps/sqlite
  [ ! -f "$folder/sqlite3.c" ] || return 0
  # A machine that has SQLite for the target needs no other.
  [ ! -f /usr/x86_64-w64-mingw32/lib/libsqlite3.a ] || return 0
  install "${source_packages[@]}"
  echo "setup: making the source of SQLite"
  local work
  mkdir -p build/deps
  work=$(mktemp -d "$PWD/build/deps/sqlite.XXXXXX")
  source_of sqlite3 "$work"
  (cd "$work"/sqlite3-*/ && unset CC CXX && ./configure --disable-tcl --disable-readline && make sqlite3.c) \
    >>"$log" 2>&1 || fail "the source of SQLite cannot be made: $(tail -n 1 "$log")"
  mkdir -p "$work/made"
  cp "$work"/sqlite3-*/sqlite3.c "$work"/sqlite3-*/sqlite3.h "$work/made/"
  # In one piece, so that a run that was broken off leaves nothing that looks complete.
  rm -rf "$folder"
  mv "$work/made" "$folder"
  rm -rf "$work"
}

cd "$(dirname "${BASH_SOURCE[0]}")/.."
install "${packages[@]}"
sqlite
