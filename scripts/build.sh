#!/usr/bin/env bash
# Configures (once) and builds incrementally. Usage: scripts/build.sh [build-dir] [cmake args...]
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${1:-$root/build}"
shift || true
"$root/scripts/install-deps.sh"
if [ ! -f "$build/build.ninja" ]; then
  cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE="${ZANDRIO_BUILD_TYPE:-Debug}" \
    -DPython3_EXECUTABLE=/usr/bin/python3 "$@"
fi
cmake --build "$build" -j "$(nproc)"
