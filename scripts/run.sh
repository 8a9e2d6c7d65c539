#!/usr/bin/env bash
# Builds Zandrio and starts the desktop program. Arguments are passed to zandrio.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
"$root/scripts/build.sh" "$root/build"
exec "$root/build/bin/zandrio" "$@"
