#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
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

# ---- Release checks: static variant, ABI, Debian packages, API reference ----
# Kept together and apart from the test builds above. The extra builds compile
# only the library and the tools, and reuse the compiler cache.
echo "== static variant: libXYLCore.a installed and used by both examples"
bash "$root/scripts/build.sh" "$root/build/static" -DBUILD_SHARED_LIBS=OFF \
  -DCMAKE_INSTALL_PREFIX="$root/build/static/prefix" \
  -DXYL_BUILD_TESTS=OFF -DXYL_BUILD_BENCHMARKS=OFF
rm -rf "$root/build/static/prefix"
bash "$root/tests/install/install_test.sh" "$root/build/static" "$root" >/dev/null

echo "== ABI of libXYLCore.so against abi/libXYLCore.abi"
bash "$root/scripts/abi-check.sh" "$root/build/test"

echo "== Debian packages (cpack), lintian, and both examples against them"
bash "$root/scripts/build.sh" "$root/build/deb" -DCMAKE_INSTALL_PREFIX=/usr -DXYL_PACKAGE_STATIC=ON \
  -DXYL_BUILD_TESTS=OFF -DXYL_BUILD_BENCHMARKS=OFF
rm -f "$root"/build/deb/*.deb
(cd "$root/build/deb" && cpack -G DEB >/dev/null)
lintian --fail-on error "$root"/build/deb/*.deb
bash "$root/tests/install/install_test.sh" "$root/build/deb" "$root" >/dev/null

echo "== API reference (doxygen)"
bash "$root/scripts/api-docs.sh" "$root/build/api"
