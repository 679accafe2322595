#!/usr/bin/env bash
# Installs what is missing, then builds and runs every test three times:
#   1. a normal build: unit, C-API, tool and fuzz-corpus tests, and one short
#      smoke run of every benchmark;
#   2. AddressSanitizer + UndefinedBehaviorSanitizer: the same tests;
#   3. ThreadSanitizer: the tests labelled "concurrency";
#   4. the libFuzzer targets built with clang, each run over its corpus and
#      then for 20 seconds (scripts/fuzz.sh).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bash "$root/scripts/install-deps.sh"
jobs=$(nproc)

echo "== normal build"
bash "$root/scripts/build.sh" "$root/build/test"
ctest --test-dir "$root/build/test" -j"$jobs" --output-on-failure

echo "== AddressSanitizer + UndefinedBehaviorSanitizer build"
bash "$root/scripts/build.sh" "$root/build/asan" -DXYL_SANITIZE=address -DXYL_BUILD_BENCHMARKS=OFF
ASAN_OPTIONS=detect_leaks=1:abort_on_error=0 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
  ctest --test-dir "$root/build/asan" -j"$jobs" --output-on-failure

echo "== ThreadSanitizer build (concurrency tests)"
bash "$root/scripts/build.sh" "$root/build/tsan" -DXYL_SANITIZE=thread -DXYL_BUILD_BENCHMARKS=OFF -DXYL_BUILD_TOOLS=OFF
TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 \
  ctest --test-dir "$root/build/tsan" -j"$jobs" -L concurrency --output-on-failure --no-tests=ignore

echo "== Fuzzing (clang libFuzzer): every target's corpus, then 20 s of new inputs each"
bash "$root/scripts/fuzz.sh" 20
