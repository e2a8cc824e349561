#!/usr/bin/env bash
# Ends the server of the private prefix.
. "$(dirname "${BASH_SOURCE[0]}")/wine-env.sh"
"$wineserver" -k >/dev/null 2>&1
exit 0
