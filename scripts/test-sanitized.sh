#!/usr/bin/env bash
# Builds everything with AddressSanitizer and UndefinedBehaviorSanitizer into
# build-sanitize/ and runs every test there. A report of either fails the run.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh --deps-only
if [ ! -f build-sanitize/build.ninja ]; then
  cmake -S . -B build-sanitize -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DTESSALWICK_SANITIZE=ON -DTESSALWICK_BENCHMARKS=OFF \
    -DTESSALWICK_WERROR="${TESSALWICK_WERROR:-OFF}"
fi
cmake --build build-sanitize
export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}"
export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}"
QT_QPA_PLATFORM=offscreen ctest --test-dir build-sanitize --output-on-failure -j2
