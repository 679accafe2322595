#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# xyl_vs_peers.sh <path-to-xyl> [MiB]: makes inputs of MiB mebibytes (default
# 64; the sort input is 500,000 lines), runs each xyl command and the tool a
# user already has on the same input, and prints the median wall time and
# peak resident memory of 5 runs of each, and their ratios.
#
#   base64 encode / decode  vs  base64 -w0 / base64 -d
#   convert UTF-8 -> UTF-16LE  vs  iconv
#   sort --locale de        vs  GNU sort under de_DE.UTF-8
#   crc32                   vs  cat FILE >/dev/null
#
# Needs /usr/bin/time (package "time") and the de_DE locale source (package
# "locales"), which is compiled into a private directory.
set -euo pipefail
xyl=$1
mib=${2:-64}
runs=5
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# median <numbers...>
median() { printf '%s\n' "$@" | sort -n | sed -n "$((($# + 1) / 2))p"; }

# measure <command...>: sets $ms (median milliseconds) and $kb (median peak
# RSS in KiB); the command's output goes to $sink (a file unless set).
sink=
measure() {
  local times=() mems=() start end
  for _ in $(seq "$runs"); do
    start=$(date +%s%N)
    /usr/bin/time -f %M -o "$work/mem" "$@" >"${sink:-$work/out}"
    end=$(date +%s%N)
    times+=($(((end - start) / 1000000)))
    mems+=("$(tail -1 "$work/mem")")
  done
  ms=$(median "${times[@]}")
  kb=$(median "${mems[@]}")
}

# compare <label> <peer-label> -- <xyl command...> -- <peer command...>
compare() {
  local label=$1 peer=$2
  shift 3
  local ours=() theirs=()
  while [ "$1" != "--" ]; do ours+=("$1"); shift; done
  shift
  theirs=("$@")
  measure "${ours[@]}"
  local oms=$ms okb=$kb
  cp "$work/out" "$work/ours"
  measure "${theirs[@]}"
  local same=same
  cmp -s "$work/ours" "$work/out" || same=DIFFERENT
  [ -z "$sink" ] || same="not kept"
  printf '%-16s %7d ms %8d KiB | %-22s %7d ms %8d KiB | time %5.2fx  memory %6.2fx  output %s\n' \
    "$label" "$oms" "$okb" "$peer" "$ms" "$kb" "$(echo "$oms / ($ms + 0.0001)" | bc -l)" \
    "$(echo "$okb / $kb" | bc -l)" "$same"
}

echo "making the inputs ($mib MiB) in $work"
head -c $((mib * 1024 * 1024)) /dev/urandom >"$work/bin"
base64 -w0 "$work/bin" >"$work/b64"
# UTF-8 text: lines of ASCII words with accented and non-Latin letters.
awk -v n=$((mib * 1024 * 1024 / 48)) 'BEGIN {
  srand(17); split("a b c d e f g h i j k l m n o p q r s t u v w x y z A B C D E F é ü ö ä ß ç € Ω Ж 中", l, " ")
  for (i = 0; i < n; i++) { s = ""; for (j = 0; j < 40; j++) s = s l[int(rand() * 40) + 1]; print s }
}' >"$work/text"
# 500,000 German-looking lines of 3 to 24 letters.
awk 'BEGIN {
  srand(42); split("a b c d e f g h i j k l m n o p r s t u v w z ä ö ü ß A B D E G K L M S T Ä Ö Ü", l, " ")
  for (i = 0; i < 500000; i++) { s = ""; k = 3 + int(rand() * 22); for (j = 0; j < k; j++) s = s l[int(rand() * 38) + 1]; print s }
}' >"$work/words"
mkdir -p "$work/locale"
localedef -i de_DE -f UTF-8 "$work/locale/de_DE.UTF-8" 2>/dev/null || true
[ -d "$work/locale/de_DE.UTF-8" ] || { echo "cannot compile the de_DE.UTF-8 locale" >&2; exit 1; }

echo "inputs: $(du -h "$work/bin" | cut -f1) bytes, $(du -h "$work/b64" | cut -f1) Base64," \
  "$(du -h "$work/text" | cut -f1) text, $(wc -l <"$work/words") lines to sort ($(du -h "$work/words" | cut -f1))"
compare "base64 encode" "base64 -w0" -- "$xyl" base64 "$work/bin" -- base64 -w0 "$work/bin"
compare "base64 decode" "base64 -d" -- "$xyl" base64 -d "$work/b64" -- base64 -d "$work/b64"
compare "convert" "iconv" -- "$xyl" convert --from UTF-8 --to UTF-16LE "$work/text" -- \
  iconv -f UTF-8 -t UTF-16LE "$work/text"
compare "sort de" "sort (de_DE.UTF-8)" -- "$xyl" sort --locale de "$work/words" -- \
  env LOCPATH="$work/locale" LC_ALL=de_DE.UTF-8 sort -s "$work/words"
sink=/dev/null compare "crc32" "cat FILE >/dev/null" -- "$xyl" crc32 "$work/bin" -- cat "$work/bin"
echo "sort input: $(($(stat -c %s "$work/words") / 1024)) KiB (memory at most twice that is the aim)"
echo "(base64 -w0 ends without a line feed, xyl base64 with one: their outputs differ by it)"
