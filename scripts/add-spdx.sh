#!/usr/bin/env bash
# add-spdx.sh: puts "SPDX-License-Identifier: Apache-2.0" at the top of every
# tracked source, header, script and CMake file that lacks it. Idempotent:
# run it again after adding or merging files.
#
#   C and C headers, linker scripts   /* SPDX-License-Identifier: Apache-2.0 */
#     (a file that opens with a "/*" line on its own gets the tag on that
#     line, so its line numbers stay as they are)
#   C++ sources (.cpp, .cc, .inc)      // SPDX-License-Identifier: Apache-2.0
#   scripts, CMake, awk, Doxyfile      # SPDX-License-Identifier: Apache-2.0
#                                      (after a "#!" line)
# Back-trace lines are part of the contract: a file that says its raise
# sites "stay on lines" N loses its first empty line for the tag's line.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
tag='SPDX-License-Identifier: Apache-2.0'

style_of() {
  case $1 in
  *.c | *.h | *.map) echo c ;;
  *.cpp | *.cc | *.inc) echo cpp ;;
  *.sh | *.cmake | *.cmake.in | *.pc.in | *.awk | */CMakeLists.txt | CMakeLists.txt | .ci/run | */Doxyfile) echo hash ;;
  *) echo none ;;
  esac
}

changed=0
while IFS= read -r file; do
  style=$(style_of "$file")
  [ "$style" = none ] && continue
  [ -f "$file" ] || continue
  head -n 3 "$file" | grep -q 'SPDX-License-Identifier:' && continue
  first=$(head -n 1 "$file")
  inserted=yes
  case $style in
  c)
    if [ "$first" = "/*" ]; then
      sed -i "1s|^/\*\$|/* $tag|" "$file"
      inserted=no
    else
      sed -i "1i /* $tag */" "$file"
    fi
    ;;
  cpp) sed -i "1i // $tag" "$file" ;;
  hash)
    if [[ $first == '#!'* ]]; then
      sed -i "1a # $tag" "$file"
    else
      sed -i "1i # $tag" "$file"
    fi
    ;;
  esac
  if [ $inserted = yes ] && grep -q 'stay on lines' "$file"; then
    sed -i '0,/^$/{/^$/d}' "$file"
  fi
  changed=$((changed + 1))
done < <(git ls-files)
echo "add-spdx: tagged $changed files"
