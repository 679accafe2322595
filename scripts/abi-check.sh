#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# abi-check.sh [--update] <build-dir>: compares the ABI of the built
# libXYLCore.so with the committed description abi/libXYLCore.abi (abigail-
# tools' abidw/abidiff), and fails on any difference.
#
# A compatible change (an added function or type) updates the description in
# the same commit: run with --update. An incompatible change (a removed or
# changed symbol or type) is refused by --update too, unless the SONAME
# changed with it (a new major version of the project).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
update=no
if [ "${1:-}" = --update ]; then
  update=yes
  shift
fi
library=$(readlink -f "$1/src/libXYLCore.so")
description=$root/abi/libXYLCore.abi
# Only the public headers' types count; locations and paths do not.
read_opts=(--headers-dir "$root/include" --drop-private-types)
write_opts=(--no-show-locs --no-comp-dir-path --no-corpus-path --type-id-style hash)

status=0
report=$(abidiff --no-show-locs --headers-dir2 "$root/include" --drop-private-types \
  "$description" "$library") || status=$?
if [ $status -eq 0 ]; then
  echo "ABI: $(basename "$library") matches abi/libXYLCore.abi"
  exit 0
fi
echo "$report"
if [ $((status & 3)) -ne 0 ]; then
  echo "ABI: abidiff failed (status $status)"
  exit 1
fi
old_soname=$(sed -n "1s/.* soname='\([^']*\)'.*/\1/p" "$description")
new_soname=$(readelf -d "$library" | sed -n 's/.*Library soname: \[\(.*\)\]/\1/p')
if [ $((status & 8)) -ne 0 ] && [ "$old_soname" = "$new_soname" ]; then
  echo "ABI: incompatible change with the same SONAME ($new_soname): keep the ABI or raise the major version"
  exit 1
fi
if [ $update = yes ]; then
  abidw "${write_opts[@]}" "${read_opts[@]}" --out-file "$description" "$library"
  echo "ABI: abi/libXYLCore.abi updated; commit it with the change"
  exit 0
fi
echo "ABI: the library differs from abi/libXYLCore.abi; if that is intended, run"
echo "     scripts/abi-check.sh --update $1 and commit the description"
exit 1
