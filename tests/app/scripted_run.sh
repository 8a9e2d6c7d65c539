#!/usr/bin/env bash
# The scripted run: the real program makes a folder, a snippet with two parts, tags it, finds
# it with an "in:" token and quits; a second start finds all of it. Usage:
#   scripted_run.sh PROGRAM [LIBRARY] [SCREENSHOT-FOLDER]
# Without LIBRARY a small library is made in a temporary folder. Screenshots need ImageMagick.
set -euo pipefail
program="$1"
home="$(mktemp -d)"
trap 'rm -rf "$home"' EXIT
library="${2:-$home/main.zandriolibrary}"
shots="${3:-}"
mkdir -m 700 "$home/runtime"
export HOME="$home" XDG_CONFIG_HOME="$home/config" XDG_DATA_HOME="$home/data" XDG_CACHE_HOME="$home/cache"
export XDG_RUNTIME_DIR="$home/runtime"
extra=()
if [ -n "$shots" ]; then extra=(--screenshots "$shots"); fi
run() {
  if [ -n "$shots" ]; then
    QT_QPA_PLATFORM=xcb xvfb-run -a -s "-screen 0 1440x900x24" "$program" --library "$library" "$@" "${extra[@]}"
  else
    QT_QPA_PLATFORM=offscreen "$program" --library "$library" "$@"
  fi
}
run --phase create --seed 300
run --phase verify
