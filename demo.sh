#!/usr/bin/env bash
# The way of a person with a contact file, end to end: an installation, a profile with a personal address book, the
# file imported into it, looked at, searched, changed and written out again.
#   ./demo.sh [FILE]       with that file: vCard, CSV or LDIF (default: data/contacts.vcf)
#   ./demo.sh --pictures [WORD]...   writes pictures of every window in every language to build/pictures/; words such as
#                                    96, US or contacts: only of that resolution, language or scene
set -euo pipefail
from=$PWD
cd "$(dirname "${BASH_SOURCE[0]}")"

fail() {
  echo "demo: $*" >&2
  exit 1
}

quiet=0
file=data/contacts.vcf
case "${1:-}" in
  --pictures)
    exec ./scripts/pictures.sh "${@:2}"
    ;;
  -h | --help) sed -n '/^#   /s/^#   //p' "$0" && exit ;;
  --quick) quiet=1 && shift ;;  # everything is built already
  -*) fail "unknown option '$1'; usage: ./demo.sh [FILE] or ./demo.sh --pictures [WORD]..." ;;
esac
[ $# -le 1 ] || fail "one file at most; '$2' is one too many"
[ $# = 0 ] || file=$(realpath -m -- "$([[ $1 = /* ]] && echo "$1" || echo "$from/$1")")
[ -f "$file" ] && [ -r "$file" ] || fail "'${1:-$file}' is not a readable file"
file=$(realpath -- "$file")

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
windows() { echo "Z:${1//\//\\}"; }
# of_entries EXPRESSION: what Python makes of `entries`, the rows of the book; a line each.
of_entries() {
  orvctl --json book list "$profile" | python3 -c "
import json, sys, unicodedata
def plain(word):
    return ''.join(c for c in unicodedata.normalize('NFD', word) if not unicodedata.combining(c))
entries = json.load(sys.stdin)
words = [w for e in entries for w in e['name'].split() if w.isalpha()]
print(*($1), sep='\n')"
}

profile=Demo
rm -rf build/demo
mkdir -p build/demo
orvctl profile delete "$profile" --if-exists >/dev/null
show profile create "$profile"
show service add "$profile" PersonalBook --config "$(windows "$PWD/build/demo/Demo.orvab")"
show import "$profile" "$(windows "$file")" || fail "'$file' could not be imported"
[ "$(of_entries '[len(entries)]')" != 0 ] || fail "'$file' holds no contact that could be taken"
show book tree "$profile"
show book list "$profile" --limit 20

# A word with accents, typed without them; else the first word of a name.
word=$(of_entries "[plain(w) for w in words if plain(w) != w and plain(w).isascii()][:1] or words[:1]")
[ -z "$word" ] || show book find "$profile" "$word" --limit 5
list=$(of_entries "[e['id'] for e in entries if e['type'] == 'list'][:1]")
if [ -n "$list" ]; then
  show book expand "$profile" "$list"
else
  printf '\n(The file holds no distribution list to expand.)\n'
fi

name="Someone New"
while of_entries "[e['name'] for e in entries]" | grep -qF -- "$name"; do name+=" too"; done  # it means nobody of the file
show contact add "$profile" --name "$name" --fax "+1 555 0199" --company "Example"
show contact edit "$profile" "$name" --fax "+1 555 0198:business" --note "Moved"
show contact remove "$profile" "$name"
show contact restore "$profile" "$name"
show book find "$profile" "$name"
show export "$profile" "$(windows "$PWD/build/demo/Exported.vcf")"

cat <<END

What to try next, with the same profile:
  ./scripts/wine-run.sh build/install/bin/orvctl.exe book find $profile TEXT
  ./scripts/wine-run.sh build/install/bin/orvctl.exe export $profile all.csv
  ./scripts/wine-run.sh build/install/bin/orvctl.exe help
The installation lies in build/install, the book and what was exported in build/demo.
END
