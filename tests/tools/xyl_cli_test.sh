#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
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
expect base64-missing-file 1 "" "" -- base64 "$work/no-such-file"

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

# Intervals: English words built in, Russian plural words from the shipped
# time-period files, both styles, and bad arguments.
export QOR_EXEC_PATH="$(cd "$(dirname "$0")/../../resources" && pwd)"
expect interval-long-en 0 " 1 year 2 months" "" -- interval --ym 1 2
expect interval-short-en 0 "3 04:05:06.007" "" -- interval --style short 3 4 5 6 7
expect interval-long-ru 0 " 22 дня 1 час 5 минут 21 секунда 0 миллисекунд" "" -- interval --locale ru 22 1 5 21 0
expect interval-missing-value 2 "" "" -- interval 1 2 3 4
expect interval-bad-style 2 "" "" -- interval --style medium 1 2 3 4 5
expect interval-not-a-number 2 "" "" -- interval --ym 1 x
unset QOR_EXEC_PATH

# Message catalogs: msgc compiles a source, msgdump prints it back in the
# same format, and compiling the dump gives the identical file.
printf '# plug-in texts\n2 "Unload failed: {0}"\n0x80000000 caf\\u00e9 \\"q\\"\n1 "tab\\there\\nnext"\n' >"$work/m.msg"
expect msgc-compile 0 "" "" -- msgc -o "$work/m.bmf" "$work/m.msg"
expect msgdump-print 0 "# 3 messages
1 \"tab\\there\\nnext\"
2 \"Unload failed: {0}\"
2147483648 \"café \\\"q\\\"\"" "" -- msgdump "$work/m.bmf"
"$xyl" msgdump "$work/m.bmf" >"$work/m2.msg" && "$xyl" msgc "$work/m2.msg" && cmp -s "$work/m.bmf" "$work/m2.bmf" &&
  passed=$((passed + 1)) || { failed=$((failed + 1)); echo "FAIL msgc(msgdump) round trip"; }
printf '1 a\n1 b\n' >"$work/dup.msg"
expect msgc-duplicate 1 "" "" -- msgc -o "$work/dup.bmf" "$work/dup.msg"
grep -q "line 2: message number 1 already defined on line 1" "$work/stderr" && passed=$((passed + 1)) ||
  { failed=$((failed + 1)); echo "FAIL msgc duplicate message"; }
printf '5 x' | "$xyl" msgc - | cmp -s - <(printf 'BMF1\0\0\0\0\0\0\0\1\0\0\0\2\0\0\0\5\0\0\0\0\0\0\0\2x\0') &&
  passed=$((passed + 1)) || { failed=$((failed + 1)); echo "FAIL msgc from standard input"; }
expect msgc-no-source 2 "" "" -- msgc
expect msgc-attached-output 0 "" "5 x" -- msgc "-o$work/attached.bmf" -
cmp -s "$work/attached.bmf" <(printf 'BMF1\0\0\0\0\0\0\0\1\0\0\0\2\0\0\0\5\0\0\0\0\0\0\0\2x\0') && passed=$((passed + 1)) ||
  { failed=$((failed + 1)); echo "FAIL msgc -oOUT"; }
printf 'BMF10\0\0\0\0\0\0\0\0\0\0\0' >"$work/bad.bmf"
expect msgdump-bad-magic 1 "" "" -- msgdump "$work/bad.bmf"
expect msgdump-missing 1 "" "" -- msgdump "$work/no-such.bmf"

# Encodings: each unconvertible-sequence mode, a bad source sequence, an
# unknown encoding, and a stream larger than the tool's chunks round-tripping
# through UTF-16; normal forms line by line.
euro=$(printf 'caf\xc3\xa9 \xe2\x82\xac')
expect convert-latin1-escape 0 "$(printf 'caf\xe9 %%U20AC')" "$euro" -- convert --from UTF-8 --to ISO-8859-1 --mode escape
expect convert-latin1-stop 1 "" "$euro" -- convert --from UTF-8 --to ISO-8859-1 --mode stop
expect convert-bad-input-stop 1 "" "$(printf 'x\xff')" -- convert --from UTF-8 --to UTF-16LE --mode stop
expect convert-bad-input-substitute 0 "$(printf 'x\xef\xbf\xbd')" "$(printf 'x\xff')" -- convert --from UTF-8 --to UTF-8 --mode substitute
expect convert-unknown-encoding 2 "" "" -- convert --from no-such-encoding --to UTF-8
expect convert-missing-to 2 "" "" -- convert --from UTF-8
expect convert-bad-mode 2 "" "" -- convert --from UTF-8 --to UTF-8 --mode loud
head -c 300000 /dev/urandom | od -An -tx1 | sed 's/$/ é€𝄞/' >"$work/big.txt"
"$xyl" convert --from UTF-8 --to UTF-16BE <"$work/big.txt" | "$xyl" convert --from UTF-16BE --to UTF-8 |
  cmp -s - "$work/big.txt" && passed=$((passed + 1)) || { failed=$((failed + 1)); echo "FAIL convert round trip"; }
expect normalize-nfc 0 "$(printf '\xc3\xa9\n\xef\xac\x81')" "$(printf 'e\xcc\x81\n\xef\xac\x81')" -- normalize --form NFC
expect normalize-nfkd 0 "$(printf 'fi\ne\xcc\x81')" "$(printf '\xef\xac\x81\n\xc3\xa9')" -- normalize --form NFKD
expect normalize-bad-form 2 "" "" -- normalize --form NFX

# Number and date formats: locale defaults, an OLAP string with a zero
# section, exact digit buffers, a zone; bad values and patterns.
expect format-number-de 0 "$(printf '1.234.567,891\n-0,5')" "" -- format-number --locale de-de 1234567.891 -0.5
expect format-number-olap 0 "$(printf '($1,234.50)\nnil')" "" -- format-number --pattern '\$#,##0.00;(\$#,##0.00);"nil"' -1234.5 0
expect format-number-exact 0 "12,345,678,901,234,567,890.12" "" -- format-number --pattern '#,##0.00' 12345678901234567890.123
expect format-number-bad-value 1 "" "" -- format-number 12abc
expect format-number-bad-pattern 1 "" "" -- format-number --pattern '0"x' 1
expect format-number-stdin 0 "$(printf '1,5\n-2')" "$(printf '1.5\n -2 \n')" -- format-number --locale de-de
expect format-number-stdin-bad 1 "3" "$(printf '3\nx')" -- format-number
expect interval-stdin 0 "$(printf ' 1 year 2 months\n 3 years 0 months')" "$(printf '1 2\n3\t0')" -- interval --ym
expect interval-stdin-short-line 1 "" "1" -- interval --ym
expect format-date-zone 0 "2009-02-14 00:31:30.123 +01:00" "" -- format-date --pattern 'yyyy-MM-dd HH:mm:ss.SSS xxx' --zone Europe/Paris 1234567890123
expect format-date-de 0 "Freitag, 13. Februar 2009" "" -- format-date --locale de-de --pattern 'EEEE, d. MMMM y' 1234567890123
expect format-date-bad-zone 1 "" "" -- format-date --zone Mars/Base 0
expect format-date-bad-value 2 "" "" -- format-date 12abc
expect format-date-stdin 0 "$(printf '1970-01-01\n1970-01-02')" "$(printf '0\n86400000')" -- format-date --pattern yyyy-MM-dd

# Collation: Swedish puts a-umlaut after z, German does not; level 0 keeps
# the input order of lines equal but for case; bad locale and level.
expect sort-sv 0 "$(printf 'apa\nzebra\n\xc3\xa4lg')" "$(printf '\xc3\xa4lg\nzebra\napa\n')" -- sort --locale sv
expect sort-de 0 "$(printf '\xc3\xa4lg\napa\nzebra')" "$(printf '\xc3\xa4lg\nzebra\napa')" -- sort --locale de
expect sort-level0-stable 0 "$(printf 'A\nb\nB\nb')" "$(printf 'b\nB\nb\nA')" -- sort --locale en-us --level 0
expect sort-level2-case 0 "$(printf 'A\nb\nb\nB')" "$(printf 'b\nB\nb\nA')" -- sort --locale en-us --level 2
expect sort-bad-locale 2 "" "x" -- sort --locale 'en_US@colCaseFirst=what'
expect sort-bad-level 2 "" "x" -- sort --locale en-us --level 4
expect sort-no-locale 2 "" "x" -- sort
expect sort-bad-utf8 1 "" "$(printf 'b\n\xff\xfe')" -- sort --locale en
# Visual order: a Hebrew run reversed inside English, brackets not mirrored.
expect bidi-mixed 0 "$(printf 'abc \xd7\x92\xd7\x91\xd7\x90 def')" "$(printf 'abc \xd7\x90\xd7\x91\xd7\x92 def')" -- bidi
expect bidi-rtl-brackets 0 "$(printf ')\xd7\x92(\xd7\x91\xd7\x90\nplain')" "$(printf '\xd7\x90\xd7\x91(\xd7\x92)\nplain')" -- bidi
expect bidi-missing-file 1 "" "" -- bidi "$work/no-such-file"

# The same look and feel for every command: --help answers on standard
# output with the synopsis the command list shows, explains its options,
# gives an example and exits 0; an unknown option (long or short) prints
# usage and exits 2.
ok() { passed=$((passed + 1)); }
bad() { failed=$((failed + 1)); echo "FAIL $*"; }
names=$("$xyl" --help | sed -n 's/^  \([a-z][a-z0-9-]*\)\( .*\)\?$/\1/p' | sort -u)
[ "$(echo "$names" | wc -l)" -eq 15 ] && ok || bad "xyl --help lists $(echo "$names" | wc -l) commands, want 15"
for name in $names; do
  own=$("$xyl" "$name" --help)
  rc=$?
  synopsis=${own%%$'\n'*}
  [ "$rc" -eq 0 ] && "$xyl" --help | grep -qF "  ${synopsis#usage: xyl }" && ok ||
    bad "$name --help: exit $rc, '$synopsis' not in the command list"
  "$xyl" "$name" -h >/dev/null && ok || bad "$name -h"
  # Each option of the synopsis has a line of its own, and there is an
  # example; the manual page (made from these texts) has the command.
  for option in $(tr ' []|' '\n' <<<"$synopsis" | grep -E '^--?[a-z]'); do
    grep -qE "^  $option( |$)" <<<"$own" && ok || bad "$name --help does not explain $option"
  done
  grep -q "^example: xyl $name" <<<"$own" && ok || bad "$name --help gives no example"
  grep -qx "\.SS $name" "$(dirname "$xyl")/xyl.1" && ok || bad "xyl.1 lacks $name"
  for option in --no-such-option -Z; do
    "$xyl" "$name" "$option" 1 2 3 4 5 </dev/null >/dev/null 2>"$work/stderr"
    rc=$?
    [ "$rc" -eq 2 ] && grep -q "^usage: xyl $name" "$work/stderr" && ok || bad "$name $option: exit $rc"
  done
done

# File operands: each reading command gives the same output for a file, for
# "-" and for standard input, joins several inputs, and exits 1 (after the
# other inputs) for a file that does not open.
printf 'ab\n' >"$work/f1"
printf 'c\xc3\xa9' >"$work/f2"
printf 'QUJD\n' >"$work/b64"
export QOR_EXEC_PATH="$(cd "$(dirname "$0")/../../resources" && pwd)"
while IFS='|' read -r label args stdin want; do
  # shellcheck disable=SC2086
  expect "files-$label" 0 "$(printf "$want")" "$(printf "$stdin")" -- $args
done <<CASES
base64-file|base64 $work/f1|x|YWIK
base64-stdin-dash|base64 - $work/f2|ab|YWJjw6k=
base64-decode-file|base64 -du $work/b64||ABC
crc32-dash|crc32 $work/f2 -|123456789|fa0d33aa  $work/f2\\ncbf43926  -
convert-two-files|convert --from UTF-8 --to ISO-8859-1 $work/f1 $work/f2||ab\\nc\\xe9
normalize-dash|normalize --form NFD - $work/f2|\\xc3\\xa9\\ny|e\\xcc\\x81\\nyce\\xcc\\x81
sort-joined|sort --locale en $work/f2 - $work/f1|b\\n|ab\\nb\\nc\\xc3\\xa9
bidi-file|bidi $work/f1 $work/f2||ab\\nc\\xc3\\xa9
CASES
token=$(printf 'squished' | "$xyl" squish "$work/f1" - "$work/f2")
expect squish-files 0 "$(printf 'ab\nsquishedc\xc3\xa9')" "$token" -- unsquish -
expect crc32-missing-then-file 1 "cbf43926  $work/digits" "" -- crc32 "$work/no-such-file" "$work/digits"
expect sort-missing-file 1 "" "" -- sort --locale en "$work/no-such-file"
expect normalize-missing-file 1 "" "" -- normalize --form NFC "$work/no-such-file"
expect convert-missing-file 1 "" "" -- convert --from UTF-8 --to UTF-8 "$work/no-such-file"
# NUL characters are data: inside the stream, across its chunks and as the
# very last character.
{ head -c 200000 /dev/zero; printf 'x\0y\0'; } >"$work/nuls"
timeout 60 "$xyl" convert --from ISO-8859-1 --to UTF-16BE "$work/nuls" |
  timeout 60 "$xyl" convert --from UTF-16BE --to UTF-8 | cmp -s - "$work/nuls" && ok || bad "convert NUL characters"
unset QOR_EXEC_PATH

# The progress line: forced on, a 6 MiB input draws "xyl crc32: N MiB" and
# clears it; a small input and a standard error that is no terminal draw
# nothing; under a terminal (script) it shows by itself.
head -c $((6 * 1024 * 1024)) /dev/zero | tr '\0' x >"$work/big6"
XYL_PROGRESS=always "$xyl" crc32 "$work/big6" >/dev/null 2>"$work/stderr"
grep -q $'\rxyl crc32: [0-9]* MiB' "$work/stderr" && [ "$(tail -c 1 "$work/stderr")" == $'\r' ] && ok ||
  bad "progress line forced: $(od -c "$work/stderr" | head -3)"
"$xyl" base64 <"$work/big6" | "$xyl" base64 -d | XYL_PROGRESS=always "$xyl" convert --from ISO-8859-1 --to UTF-8 \
  2>"$work/stderr" | cmp -s - "$work/big6" && grep -q 'xyl convert: [45] MiB' "$work/stderr" && ok ||
  bad "progress through a pipe: $(od -c "$work/stderr" | head -3)"
XYL_PROGRESS=always "$xyl" crc32 "$work/digits" >/dev/null 2>"$work/stderr"
[ ! -s "$work/stderr" ] && ok || bad "progress line for a small input"
"$xyl" crc32 "$work/big6" >/dev/null 2>"$work/stderr"
[ ! -s "$work/stderr" ] && ok || bad "progress line without a terminal"
if command -v script >/dev/null; then
  script -qec "'$xyl' crc32 '$work/big6' >/dev/null" /dev/null </dev/null >"$work/tty" 2>&1
  grep -q 'xyl crc32: [0-9]* MiB' "$work/tty" && ok || bad "progress line on a terminal: $(od -c "$work/tty" | head -3)"
fi

# Strict Base64: only the alphabet, line feeds and final padding; each
# fault names its offset. The same inputs are what lax decoding accepts.
while IFS='|' read -r label args input code want message; do
  # shellcheck disable=SC2086
  expect "strict-$label" "$code" "$want" "$(printf "$input")" -- base64 -d $args
  [ -z "$message" ] || grep -q "$message" "$work/stderr" && ok || bad "strict-$label message: $(cat "$work/stderr")"
done <<'CASES'
lines|--strict|QUJD\nRA==\n|0|ABCD|
space|--strict|QUJ DRA==|1||offset 3: byte 0x20 is outside the standard alphabet
lax-space||QUJ DRA==|0|ABCD|
url-letter|-u --strict|QU+D|1||offset 2: byte 0x2b is outside the URL-safe alphabet
pad-early|--strict|QU=D|1||offset 2: misplaced padding
pad-then-data|--strict|QUI=QUJD|1||offset 3: misplaced padding
pad-three|--strict|QUJDR===|1||offset 5: misplaced padding
short|--strict|QUJDRA=|1|ABC|not a whole number of 4-character groups
encode-strict|--strict -x|x|2||
CASES

# Empty input and binary garbage reach every reading command: empty input is
# no data (unsquish names the empty token); garbage is refused with a message
# that starts with the command, never a crash.
export QOR_EXEC_PATH="$(cd "$(dirname "$0")/../../resources" && pwd)"
{ printf '\xff\xfe\x01\0x'; head -c 65536 /dev/urandom; } >"$work/garbage" # the first line is no text
while IFS='|' read -r name args empty_code empty_out garbage_code; do
  # shellcheck disable=SC2086
  expect "empty-$name" "$empty_code" "$(printf "$empty_out")" "" -- $args
  "$xyl" $args <"$work/garbage" >/dev/null 2>"$work/stderr"
  rc=$?
  [ "$rc" -eq "$garbage_code" ] && { [ "$rc" -eq 0 ] || grep -q "^xyl ${args%% *}: " "$work/stderr"; } && ok ||
    bad "garbage to $args: exit $rc, $(head -c 200 "$work/stderr")"
done <<'CASES'
base64|base64|0||0
base64-d|base64 -d|0||1
base64-strict|base64 -d --strict|0||1
squish|squish|0|AAAAAH5qa_l42gMAAAAAAQ==|1
unsquish|unsquish|1||1
crc32|crc32|0|00000000  -|0
interval|interval|0||1
format-number|format-number|0||1
format-date|format-date|0||1
sort|sort --locale en|0||1
bidi|bidi|0||1
convert|convert --from UTF-8 --to UTF-16LE|0||1
normalize|normalize --form NFC|0||1
CASES
printf '' | "$xyl" unsquish 2>&1 >/dev/null | grep -q "^xyl unsquish: the token is empty$" && ok || bad "unsquish of nothing"
"$xyl" msgc -o - - </dev/null | cmp -s - <(printf 'BMF1\0\0\0\0\0\0\0\0\0\0\0\0') && ok || bad "msgc of nothing"
"$xyl" msgc -o - - <"$work/garbage" >/dev/null 2>"$work/stderr"
[ $? -eq 1 ] && grep -q "^xyl msgc: -: line 1: " "$work/stderr" && ok || bad "msgc of garbage: $(cat "$work/stderr")"
expect msgdump-garbage 1 "" "" -- msgdump "$work/garbage"

# The one output policy, for every command: standard output on a full disk
# is reported as "xyl <command>: standard output: <reason>" with exit 1; a
# pipe that nobody reads any more ends the command quietly (SIGPIPE, or exit
# 1 where it is ignored), never with exit 0. `xyl crash` keeps its report in
# the scratch directory.
export XYL_DUMP_DIR=$work
printf '1 one\n' >"$work/p.msg"
"$xyl" msgc -o "$work/p.bmf" "$work/p.msg" || bad "msgc for the output cases"
tok=$(printf 'abc' | "$xyl" squish)
while IFS='|' read -r args input; do
  [ -n "${XYL_TEST_SANITIZED:-}" ] && [ "${args%% *}" == crash ] && continue # the sanitizer's handler answers
  name=" ${args%% *}"
  [ "${args:0:2}" == "--" ] && name=
  # shellcheck disable=SC2086
  printf "$input" | "$xyl" $args >/dev/full 2>"$work/stderr"
  rc=$?
  [ "$rc" -eq 1 ] && grep -q "^xyl$name: standard output: No space left on device$" "$work/stderr" && ok ||
    bad "$args >/dev/full: exit $rc, $(head -c 200 "$work/stderr")"
  exec {pipe}> >(:)
  wait $! 2>/dev/null
  # shellcheck disable=SC2086
  printf "$input" | "$xyl" $args >&"$pipe" 2>"$work/stderr"
  rc=$?
  exec {pipe}>&-
  { [ "$rc" -eq 141 ] || [ "$rc" -eq 1 ]; } && ! grep -v '^XYLWin32SEHHandler: no dump writer' "$work/stderr" >/dev/null &&
    ok || bad "$args into a closed pipe: exit $rc, $(head -c 200 "$work/stderr")"
done <<CASES
base64|abc
base64 -d|QUJD
squish|abc
unsquish|$tok
crc32|
crash --mode 1 --kind segv|
msgc -o - -|5 x
msgdump $work/p.bmf|
interval 1 2 3 4 5|
interval --ym|1 2
format-number 1|
format-number|2
format-date 0|
format-date|0
sort --locale en|b\\na
bidi|abc
convert --from UTF-8 --to UTF-16LE|abc
normalize --form NFC|abc
demo|
--version|
--help|
CASES
"$xyl" msgc -o /dev/full "$work/p.msg" 2>"$work/stderr"
rc=$?
[ "$rc" -eq 1 ] && grep -q "^xyl msgc: /dev/full: No space left on device" "$work/stderr" && ok ||
  bad "msgc -o /dev/full: exit $rc, $(cat "$work/stderr")"
# A read error names the file (a directory reads with EISDIR).
for args in "base64" "base64 -d" "crc32" "squish" "sort --locale en" "bidi" "convert --from UTF-8 --to UTF-8" \
  "normalize --form NFC"; do
  # shellcheck disable=SC2086
  "$xyl" $args "$work" >/dev/null 2>"$work/stderr"
  rc=$?
  [ "$rc" -eq 1 ] && grep -q "^xyl ${args%% *}: $work: Is a directory" "$work/stderr" && ok ||
    bad "$args on a directory: exit $rc, $(cat "$work/stderr")"
done
unset XYL_DUMP_DIR
[ -n "${XYL_TEST_SANITIZED:-}" ] || { ls "$work"/xyl_seh_* >/dev/null 2>&1 && ok || bad "xyl crash left no report in XYL_DUMP_DIR"; }

# --version names the tool's version (the project's) and the library's.
version=$(sed -n 's/^project(XYLCore VERSION \([0-9.]*\).*/\1/p' "$(dirname "$0")/../../CMakeLists.txt")
"$xyl" --version | tr '\n' '|' | grep -qx "xyl $version|libXYLCore API [0-9]*\.[0-9]*|" && ok ||
  bad "--version: $("$xyl" --version)"

# The squish limit: 10,000,000 bytes make a token that comes back; one more
# byte is refused before anything is written.
head -c 10000000 /dev/zero | tr '\0' 'q' >"$work/limit"
"$xyl" squish "$work/limit" | "$xyl" unsquish | cmp -s - "$work/limit" && ok || bad "squish of 10000000 bytes"
printf 'q' >>"$work/limit"
"$xyl" squish "$work/limit" >"$work/out" 2>"$work/stderr"
rc=$?
[ "$rc" -eq 1 ] && [ ! -s "$work/out" ] && grep -q "over 10000000 bytes" "$work/stderr" && ok ||
  bad "squish of 10000001 bytes: exit $rc, $(wc -c <"$work/out") bytes out, $(cat "$work/stderr")"
rm -f "$work/limit"

# Inputs of 100 MB, made on the fly from seeds whose lengths do not divide
# the tool's chunks: each stream comes back whole through its inverse with
# a peak resident memory under 32 MiB; the line commands hold a line at a
# time; sort holds at most twice its input. The seeds themselves check the
# chunk seams against the peer tools.
export QOR_EXEC_PATH="$(cd "$(dirname "$0")/../../resources" && pwd)"
head -c 1000003 /dev/urandom >"$work/seed"
awk 'BEGIN { for (i = 0; i < 25000; i++) printf "%d caf\303\251 \342\202\254 \360\235\204\236 \327\220\327\221 x%d\n", i, i * 7 }' \
  >"$work/tseed"
"$xyl" base64 "$work/seed" | cmp -s - <(base64 -w0 "$work/seed" && echo) && ok || bad "base64 against base64 -w0"
base64 "$work/seed" | "$xyl" base64 -d --strict | cmp -s - "$work/seed" && ok || bad "base64 -d --strict of lines"
[ "$("$xyl" crc32 <"$work/seed")" == "$(gzip -1 <"$work/seed" | tail -c 8 | od -An -tx4 -N4 | tr -d ' ')  -" ] &&
  ok || bad "crc32 against gzip's"
"$xyl" convert --from UTF-8 --to UTF-16LE "$work/tseed" | cmp -s - <(iconv -f UTF-8 -t UTF-16LE "$work/tseed") && ok ||
  bad "convert against iconv"
repeat() { for ((i = 0; i < $2; i++)); do cat "$1"; done; }
# peak <label> <command...>: runs the command, noting its peak RSS in KiB.
peak() { /usr/bin/time -f %M -o "$work/peak.$1" "${@:2}"; }
# within <KiB> <labels...>: each noted peak is at most KiB.
within() {
  local limit=$1 label kib
  [ -n "${XYL_TEST_SANITIZED:-}" ] && return # shadow memory and quarantine count as peak
  for label in "${@:2}"; do
    kib=$(tail -1 "$work/peak.$label")
    [ "$kib" -le "$limit" ] && ok || bad "$label: peak $kib KiB, want at most $limit"
  done
}
repeat "$work/seed" 100 | peak b64 "$xyl" base64 | peak unb64 "$xyl" base64 -d | peak crc "$xyl" crc32 >"$work/crc"
[ "$(cat "$work/crc")" == "$(repeat "$work/seed" 100 | "$xyl" crc32)" ] && ok || bad "base64 round trip of 100 MB"
tsize=$(($(wc -c <"$work/tseed") * 110 / 1000000))
repeat "$work/tseed" 110 | peak nfd "$xyl" normalize --form NFD | peak to16 "$xyl" convert --from UTF-8 --to UTF-16BE |
  peak from16 "$xyl" convert --from UTF-16BE --to UTF-8 | peak nfc "$xyl" normalize --form NFC | peak bidi "$xyl" bidi |
  "$xyl" bidi | cmp -s - <(repeat "$work/tseed" 110) && ok || bad "$tsize MB through NFD, UTF-16, NFC and bidi twice"
within 32768 b64 unb64 crc nfd to16 from16 nfc bidi
# Line commands: 100,000 values padded to 1 KB a line.
padded() { awk -v v="$1" 'BEGIN { p = sprintf("%500s", ""); for (i = 0; i < 100000; i++) print p v p }'; }
[ "$(padded 12345.5 | peak fnum "$xyl" format-number | sort -u)" == "12,345.5" ] && ok || bad "format-number, 100 MB"
[ "$(padded 86400000 | peak fdate "$xyl" format-date --pattern yyyy-MM-dd | sort -u)" == "1970-01-02" ] && ok ||
  bad "format-date, 100 MB"
[ "$(padded '1 2' | peak ival "$xyl" interval --ym | sort -u)" == " 1 year 2 months" ] && ok || bad "interval, 100 MB"
within 32768 fnum fdate ival
# sort: 20 MB of lines of 30 to 40 bytes in several scripts.
awk 'BEGIN { srand(7); split("a b c d e é ä ö ß Z Ж 中 א", l, " ")
  for (i = 0; i < 600000; i++) { s = ""; for (j = 0; j < 24; j++) s = s l[int(rand() * 13) + 1]; print s } }' >"$work/words"
size=$(wc -c <"$work/words")
[ "$(peak sort "$xyl" sort --locale de "$work/words" | wc -c)" -eq "$size" ] && ok || bad "sort of $size bytes"
within $((2 * size / 1024)) sort
rm -f "$work/words"
unset QOR_EXEC_PATH

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
