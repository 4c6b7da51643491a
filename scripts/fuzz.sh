#!/usr/bin/env bash
# Builds the fuzz targets with clang, libFuzzer, AddressSanitizer and
# UndefinedBehaviorSanitizer into build-fuzz/, writes the seed corpora from the
# tests' fake pages, and runs each target for FUZZ_SECONDS (60 by default).
# A finding fails the run; its input is saved under build-fuzz/findings/ and
# belongs, with the fix, in fuzz/corpus/<target>/.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh --deps-only
scripts/need.sh clang libclang-rt-14-dev
if [ ! -f build-fuzz/build.ninja ]; then
  CC=clang CXX=clang++ cmake -S . -B build-fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DTESSALWICK_FUZZ=ON -DTESSALWICK_SANITIZE=ON -DBUILD_TESTING=OFF \
    -DTESSALWICK_BENCHMARKS=OFF
fi
targets=(fuzz_links fuzz_listfile fuzz_transfer fuzz_handover fuzz_pages)
cmake --build build-fuzz --target "${targets[@]}" fuzz_seeds
rm -rf build-fuzz/corpus build-fuzz/findings
mkdir -p build-fuzz/findings
QT_QPA_PLATFORM=offscreen build-fuzz/fuzz_seeds build-fuzz/corpus
export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1}"
export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}"
failed=0
for target in "${targets[@]}"; do
  corpus=build-fuzz/corpus/$target
  mkdir -p "$corpus" "fuzz/corpus/$target"
  echo "== $target (${FUZZ_SECONDS:-60} s)"
  if ! QT_QPA_PLATFORM=offscreen build-fuzz/$target -max_total_time="${FUZZ_SECONDS:-60}" \
      -artifact_prefix=build-fuzz/findings/"$target"- -print_final_stats=1 \
      "$corpus" "fuzz/corpus/$target" 2>&1 | tail -12; then
    failed=1
  fi
done
if [ "$failed" -ne 0 ] || compgen -G "build-fuzz/findings/*" >/dev/null; then
  echo "fuzzing found something: see build-fuzz/findings/"
  exit 1
fi
echo "fuzz: nothing found"
