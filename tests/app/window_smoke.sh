#!/usr/bin/env bash
# Starts zandrio under Xvfb with empty user directories and waits for its main window to be
# mapped. Usage: window_smoke.sh PATH-TO-ZANDRIO [SCREENSHOT.png]
# (a screenshot needs ImageMagick's import, which the tests themselves do not use)
set -euo pipefail
program="$1"
screenshot="${2:-}"
home="$(mktemp -d)"
trap 'rm -rf "$home"' EXIT
mkdir -m 700 "$home/runtime"
export HOME="$home" XDG_CONFIG_HOME="$home/config" XDG_DATA_HOME="$home/data" XDG_CACHE_HOME="$home/cache"
export XDG_RUNTIME_DIR="$home/runtime"
export QT_QPA_PLATFORM=xcb
xvfb-run -a -s "-screen 0 1280x800x24" bash -c '
  "$1" & pid=$!
  for _ in $(seq 100); do
    if xwininfo -root -tree | grep -q "\"Zandrio\""; then
      sleep 0.5
      if [ -n "$2" ]; then import -window root "$2"; fi
      kill "$pid"; wait "$pid" || true
      exit 0
    fi
    kill -0 "$pid" 2>/dev/null || { echo "zandrio exited before showing a window" >&2; exit 1; }
    sleep 0.2
  done
  echo "no Zandrio window after 20 s" >&2
  kill "$pid"; exit 1
' _ "$program" "$screenshot"
