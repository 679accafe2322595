#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# fuzz.sh [seconds]: builds the libFuzzer targets with clang (library and
# targets only) and runs each one: first over its stored corpus
# (fuzz/corpus/<decoder>/), then for `seconds` (default 20) of new inputs.
# Two targets run at a time. A crash fails the run, and the input that
# caused it is left in the target's corpus folder as crash-<hash>, so that
# once committed every later replay runs it too.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
seconds=${1:-20}
dir=$root/build/fuzz
launcher=()
if command -v ccache >/dev/null 2>&1; then
  launcher=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
CC=clang CXX=clang++ cmake -S "$root" -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo "${launcher[@]}" \
  -DXYL_BUILD_FUZZERS=ON -DXYL_BUILD_BENCHMARKS=OFF -DXYL_BUILD_TOOLS=OFF >/dev/null
mapfile -t targets < <(sed -n 's/^xyl_add_fuzzer(\([A-Za-z0-9_]*\).*/\1/p' "$root"/fuzz/*.cmake)
cmake --build "$dir" -j"$(nproc)" --target "${targets[@]}"

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
run_one() {
  local target=$1 corpus=$root/fuzz/corpus/${1%_fuzzer}
  mkdir -p "$scratch/$target" "$scratch/$target.cwd" "$corpus"
  # New inputs go to the scratch folder; the stored corpus is read first.
  # Each target runs in a folder of its own (some write scratch files there).
  if (cd "$scratch/$target.cwd" && "$dir/fuzz/$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
      -artifact_prefix="$corpus/" -print_final_stats=1 "$scratch/$target" "$corpus" >"$scratch/$target.log" 2>&1); then
    echo "fuzz $target: ok ($(grep -m1 -o 'stat::number_of_executed_units: *[0-9]*' "$scratch/$target.log" | grep -o '[0-9]*$') runs)"
  else
    echo "fuzz $target: FAILED; the input is in $corpus/"
    tail -n 40 "$scratch/$target.log"
    return 1
  fi
}
export -f run_one
export root dir seconds scratch
printf '%s\n' "${targets[@]}" | xargs -P 2 -I{} bash -c 'run_one {}'
