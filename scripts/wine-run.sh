#!/usr/bin/env bash
# Runs one Windows program in the private prefix; its exit code is ours. Brings the server up when needed.
set -euo pipefail
here=$(dirname "${BASH_SOURCE[0]}")
. "$here/wine-env.sh"
"$here/wine-up.sh"
# A person sees what happens and starts it again; with redirected output nobody does.
[ ! -t 1 ] || exec "$wine64" "$@"
exec python3 -B "$here/wine_again.py" "$wine64" "$@"
