#!/usr/bin/env bash
# The main job, end to end: lays an installation, makes a profile with a contacts file and browses it.
#   ./demo.sh [CONTACTS.vcf]   shows that file's contacts (default: data/contacts.vcf)
#   ./demo.sh --pictures       writes pictures of every dialog in every language to build/pictures/
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

fail() {
  echo "demo: $*" >&2
  exit 1
}

quiet=0
case "${1:-}" in
  --pictures) ./scripts/setup.sh pictures && exec ./scripts/pictures.sh ;;
  --quick) quiet=1 && shift ;;  # everything is built already
  -*) fail "unknown option '$1'" ;;
esac
contacts=$(realpath -m -- "${1:-data/contacts.vcf}")
[ -f "$contacts" ] && [ -r "$contacts" ] || fail "'${1:-data/contacts.vcf}' is not a readable file"

mkdir -p build/logs
if [ "$quiet" = 0 ]; then
  ./scripts/setup.sh
  echo "demo: building (the first time takes some minutes)"
  { cmake --preset windows-release && cmake --build --preset windows-release --target product; } \
    >build/logs/demo-build.log 2>&1 || fail "the build failed; see build/logs/demo-build.log"
fi
cmake --install build/windows-release --prefix build/install >build/logs/demo-install.log 2>&1 ||
  fail "the installation failed; see build/logs/demo-install.log"

orvctl() { ./scripts/wine-run.sh build/install/bin/orvctl.exe "$@"; }
show() {
  printf '\n$ orvctl'
  printf ' %q' "$@"
  printf '\n'
  orvctl "$@"
}

# Wine shows the machine's files as drive Z:.
windows_path="Z:${contacts//\//\\}"
profile=Demo
orvctl profile delete "$profile" >/dev/null 2>&1 || true
show profile create "$profile"
show service add "$profile" ContactFile --config "$windows_path"
show service list "$profile"
show book tree "$profile"
show book list "$profile"
show book show "$profile" --first
show book expand "$profile" --first
