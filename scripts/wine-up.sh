#!/usr/bin/env bash
# Makes the private prefix if it is missing and starts its server; safe to call from several processes.
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/wine-env.sh"
[ -x "$wine64" ] || { echo "wine-up: Wine is not installed (run scripts/setup.sh)" >&2; exit 1; }
mkdir -p "$(dirname "$WINEPREFIX")"
exec 9>"$WINEPREFIX.lock"
flock 9
start_server() {
  # 2 means that one runs already; a fresh one is warmed up so that no later caller waits on its pipes.
  local answer=0
  "$wineserver" -p600 9>&- >/dev/null 2>&1 </dev/null || answer=$?
  [ "$answer" = 2 ] || "$wine64" cmd /c exit 9>&- >/dev/null 2>&1 </dev/null
}
if [ ! -f "$WINEPREFIX/.orv-ready" ]; then
  rm -rf "$WINEPREFIX"
  "$wine64" wineboot --init 9>&- >/dev/null 2>&1 </dev/null || true
  start_server
  # Windows without a screen: dialogs work and no X server is asked.
  "$wine64" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f 9>&- >/dev/null 2>&1 </dev/null
  "$wine64" reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f 9>&- >/dev/null 2>&1 </dev/null
  "$wineserver" -k 9>&- >/dev/null 2>&1 || true
  "$wineserver" -w 9>&- >/dev/null 2>&1 || true
  touch "$WINEPREFIX/.orv-ready"
fi
start_server
