#!/usr/bin/env bash
# Line coverage of the core (src without src/ui) over the whole test run, as
# gcovr reports it. Builds into build-coverage/ with gcc's --coverage, runs
# every test, prints gcovr's summary; the last line holds the figure.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh --deps-only
if ! command -v gcovr >/dev/null; then
  SUDO=""
  [ "$(id -u)" -ne 0 ] && SUDO="sudo"
  $SUDO apt-get update
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y --no-install-recommends gcovr
fi
if [ ! -f build-coverage/build.ninja ]; then
  cmake -S . -B build-coverage -G Ninja -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_CXX_FLAGS="--coverage -O0" -DTESSALWICK_BENCHMARKS=OFF
fi
cmake --build build-coverage
# Counts of an earlier run go, and so do the notes of objects that no longer
# exist (a removed source), which gcovr would otherwise try to read.
find build-coverage -name '*.gcda' -delete
ninja -C build-coverage -t cleandead >/dev/null
find build-coverage -name '*.gcno' | while read -r note; do
  [ -f "${note%.gcno}.o" ] || rm -f "$note"
done
QT_QPA_PLATFORM=offscreen ctest --test-dir build-coverage --output-on-failure -j2
# The extension table writer runs only as a build step, before the counts are reset.
gcovr -r . --object-directory build-coverage --filter 'src/' --exclude 'src/ui/' \
  --exclude 'src/main.cpp' --exclude 'src/helper/extensiontable.cpp' --exclude-unreachable-branches --print-summary \
  -o build-coverage/coverage.txt build-coverage
tail -3 build-coverage/coverage.txt
