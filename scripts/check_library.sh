#!/usr/bin/env bash
# The built library: exactly the exports of its list, imports of system libraries only, no variable of the environment read
# by its own code (the run-time linked in may), hardening flags, no time stamp, a version resource. Argument: the folder that it was built into.
set -uo pipefail
library=${1:?folder of the library}/xhtaba.dll
exports=$(dirname "${BASH_SOURCE[0]}")/../session/exports.def
objdump=x86_64-w64-mingw32-objdump
failed=0
fail() { echo "check_library: $1" >&2; failed=1; }

headers=$("$objdump" -p "$library") || { echo "check_library: $library cannot be read" >&2; exit 1; }

expected=$(sed -n 's/^  \([A-Za-z0-9_]*\).*/\1/p' "$exports" | sort)
actual=$(sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/s/^\s*\[ *[0-9]*\] //p' <<<"$headers" | sort)
[ -n "$expected" ] || fail "no exports are listed in $exports"
[ "$expected" = "$actual" ] || fail "exports differ: $(diff <(echo "$expected") <(echo "$actual") | grep '^[<>]' | tr '\n' ' ')"

system="advapi32.dll comctl32.dll comdlg32.dll gdi32.dll kernel32.dll msvcrt.dll ole32.dll shell32.dll user32.dll winspool.drv"
imports=$(sed -n 's/^\s*DLL Name: //p' <<<"$headers" | tr 'A-Z' 'a-z')
[ -n "$imports" ] || fail "no imports are listed"
for import in $imports; do
  [[ " $system " == *" $import "* ]] || fail "imports $import"
done

objects=$(find "$1/../CMakeFiles/orv_core.dir" -name '*.obj')
[ -n "$objects" ] || fail "has no objects beside it"
environment='getenv|environ|GetEnvironment|ExpandEnvironment'
read=$(x86_64-w64-mingw32-nm -u $objects | grep -iE "$environment" | sort -u | tr '\n' ' ')
[ -z "$read" ] || fail "reads the environment: $read"

characteristics=$((16#$(sed -n 's/^DllCharacteristics\s*//p' <<<"$headers")))
for flag in HIGH_ENTROPY_VA:0x20 DYNAMIC_BASE:0x40 NX_COMPAT:0x100; do
  ((characteristics & ${flag#*:})) || fail "${flag%:*} is not set"
done

grep -q '^Time/Date\s*Thu Jan  1 00:00:00 1970' <<<"$headers" || fail "bears a time stamp"
grep -q 'VS_VERSION_INFO' <(tr -d '\0' <"$library") || fail "has no version resource"
grep -aqE '/(home|root|tmp|work|build)/[A-Za-z]' "$library" && fail "names a folder of the building machine"
[ $failed = 0 ] && echo "check_library: as it should be"
exit $failed
