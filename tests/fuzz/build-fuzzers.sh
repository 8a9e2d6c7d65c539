#!/usr/bin/env bash
# Configures (once) and builds the clang tree of libFuzzer targets beside a main build tree.
# Usage: tests/fuzz/build-fuzzers.sh MAIN_BUILD_DIR   (the fuzz tree is MAIN_BUILD_DIR-fuzz)
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)"
main="$(cd "$1" && pwd)"
fuzz="${main}-fuzz"
if [ ! -f "$fuzz/build.ninja" ]; then
  cmake -S "$root" -B "$fuzz" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DZANDRIO_FUZZ=ON \
    -DZANDRIO_BUILD_TESTS=OFF -DZANDRIO_BUILD_BENCHMARKS=OFF \
    -DPython3_EXECUTABLE=/usr/bin/python3 >/dev/null
fi
cmake --build "$fuzz" -j "${ZANDRIO_FUZZ_JOBS:-2}" --target zandrio_fuzzers
