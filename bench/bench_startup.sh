#!/usr/bin/env bash
# Start-up time of the desktop program to a usable window: the window with the library's
# snippets listed and painted. Makes a synthetic library once, then starts the program RUNS
# times with --quit-when-ready and prints each run's figures and the median.
#   bench_startup.sh ZANDRIO GENERATOR [COUNT=10000] [RUNS=5]
# Runs under Xvfb when xvfb-run is there, else on the offscreen platform.
set -euo pipefail
program="$1"
generator="$2"
count="${3:-10000}"
runs="${4:-5}"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
library="$work/library/main.zandriolibrary"
"$generator" --count "$count" --seed 1 "$library" > /dev/null
mkdir -m 700 "$work/runtime"
export HOME="$work" XDG_CONFIG_HOME="$work/config" XDG_DATA_HOME="$work/data" XDG_CACHE_HOME="$work/cache"
export XDG_RUNTIME_DIR="$work/runtime"
launch() {
  if command -v xvfb-run > /dev/null; then
    QT_QPA_PLATFORM=xcb xvfb-run -a -s "-screen 0 1440x900x24" "$program" --library "$library" --quit-when-ready
  else
    QT_QPA_PLATFORM=offscreen "$program" --library "$library" --quit-when-ready
  fi
}
times=()
for i in $(seq "$runs"); do
  line="$(launch 2>/dev/null | grep '^ready')"
  echo "run $i: $line"
  times+=("$(echo "$line" | awk '{print $2}')")
done
median="$(printf '%s\n' "${times[@]}" | sort -n | awk '{a[NR]=$1} END {print a[int((NR+1)/2)]}')"
echo "start-up to a usable window, $count snippets: median $median ms over $runs runs"
