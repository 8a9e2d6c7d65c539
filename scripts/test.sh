#!/usr/bin/env bash
# Builds Zandrio and runs every test, with no display needed: widget tests use the
# offscreen platform, window tests run under Xvfb, keyring tests in their own D-Bus session.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${ZANDRIO_TEST_BUILD_DIR:-$root/build}"
"$root/scripts/build.sh" "$build"
# The libFuzzer targets build with clang in a tree of their own beside the main one.
"$root/tests/fuzz/build-fuzzers.sh" "$build"
export QT_QPA_PLATFORM=offscreen
cd "$build"
ctest --output-on-failure -j "$(nproc)" "$@"
