# Sourced by everything that runs Wine: a private prefix below build/, no debugger, UTF-8 file names.
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX="${ORV_WINEPREFIX:-$root/build/wine}"
export WINEARCH=win64
export WINEDEBUG="${WINEDEBUG:--all}"
export WINEDLLOVERRIDES="mscoree=;mshtml=;winedbg.exe=d"
export LC_ALL="${ORV_LOCALE:-C.UTF-8}"
unset DISPLAY WAYLAND_DISPLAY
# Windows are seen on a screen only where one is named.
[ -z "${ORV_DISPLAY:-}" ] || export DISPLAY="$ORV_DISPLAY"
wine64=/usr/lib/wine/wine64
wineserver=/usr/lib/wine/wineserver64
[ -x "$wineserver" ] || wineserver=/usr/lib/wine/wineserver
