#!/usr/bin/env bash
# Runs one fuzz target for a bounded time over its checked-in seeds; new inputs it finds go to
# a scratch folder, so the seeds stay as committed. A crash leaves its input in that folder.
# Usage: run-fuzzer.sh MAIN_BUILD_DIR NAME SEED_DIR SECONDS
set -euo pipefail
here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
main="$1" name="$2" seeds="$3" seconds="$4"
"$here/build-fuzzers.sh" "$main"
work="$main/tests/fuzz/work/$name"
rm -rf "$work" && mkdir -p "$work/corpus" "$work/artifacts"
exec "$main-fuzz/fuzz/$name" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
  -print_final_stats=1 -artifact_prefix="$work/artifacts/" "$work/corpus" "$seeds"
