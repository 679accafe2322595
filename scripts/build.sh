#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# build.sh <build-dir> [cmake options...]: configures and builds XYLCore.
# Uses ccache when it is installed, so that rebuilds and sibling checkouts
# under the same parent folder share their objects.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
dir=$1
shift
launcher=()
if command -v ccache >/dev/null 2>&1; then
  launcher=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
cmake -S "$root" -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo "${launcher[@]}" "$@" >/dev/null
cmake --build "$dir" -j"$(nproc)"
