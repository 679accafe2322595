#!/usr/bin/env bash
# xyl_cli_test.sh <path-to-xyl>: each case runs one command line with a given
# standard input and compares standard output and the exit code.
set -u
xyl=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
passed=0
failed=0

# expect <name> <expected-exit> <expected-stdout> <stdin> -- <args...>
expect() {
  local name=$1 code=$2 out=$3 input=$4
  shift 5
  local got rc
  got=$(printf '%s' "$input" | "$xyl" "$@" 2>"$work/stderr")
  rc=$?
  if [ "$rc" -eq "$code" ] && [ "$got" == "$out" ]; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    echo "FAIL $name: exit $rc (want $code)"
    echo "  stdout: $got"
    echo "  want:   $out"
    echo "  stderr: $(cat "$work/stderr")"
  fi
}

# Base64, both alphabets, both directions; the lax decoder skips white space.
expect base64-encode 0 "QUJDRA==" "ABCD" -- base64
expect base64-empty 0 "" "" -- base64
expect base64-decode 0 "ABCD" "QUJD
RA==" -- base64 -d
expect base64-url 0 "_~8=" "$(printf '\xfb\xff')" -- base64 -u
expect base64-url-decode-roundtrip 0 "hello?>" "aGVsbG8~Pg==" -- base64 -d -u
expect base64-partial-group 1 "" "QUJ" -- base64 -d
expect base64-bad-char 1 "" "QU{D" -- base64 -d
expect base64-bad-option 2 "" "" -- base64 -x
expect base64-extra-operand 2 "" "" -- base64 file

# The squisher round-trips through the tool and rejects damaged tokens.
token=$(printf 'the quick brown fox jumps over the lazy dog' | "$xyl" squish)
expect squish-roundtrip 0 "the quick brown fox jumps over the lazy dog" "$token" -- unsquish
expect squish-empty-roundtrip 0 "" "$(printf '' | "$xyl" squish)" -- unsquish
damaged="${token:0:10}A${token:11}"
[ "$damaged" == "$token" ] && damaged="${token:0:10}B${token:11}"
expect unsquish-damaged 1 "" "$damaged" -- unsquish
expect unsquish-short 1 "" "QUJD" -- unsquish
expect unsquish-garbage 1 "" "not a token!" -- unsquish

# CRC-32 of files and of standard input.
printf '123456789' >"$work/digits"
: >"$work/empty"
expect crc32-file 0 "cbf43926  $work/digits
00000000  $work/empty" "" -- crc32 "$work/digits" "$work/empty"
expect crc32-stdin 0 "cbf43926  -" "123456789" -- crc32
expect crc32-missing 1 "" "" -- crc32 "$work/no-such-file"

# Usage.
expect no-command 2 "" "" --
expect unknown-command 2 "" "" -- frobnicate
"$xyl" --help | grep -q "squish" && passed=$((passed + 1)) || { failed=$((failed + 1)); echo "FAIL help lists commands"; }
"$xyl" base64 --help | grep -q "usage: xyl base64" && passed=$((passed + 1)) || { failed=$((failed + 1)); echo "FAIL command help"; }
"$xyl" demo >"$work/demo" && grep -q "unsquished back: identical" "$work/demo" && passed=$((passed + 1)) ||
  { failed=$((failed + 1)); echo "FAIL demo"; }

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
