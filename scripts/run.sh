#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The main job: install what is missing, build, and run the `xyl` tool's tour.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bash "$root/scripts/install-deps.sh"
bash "$root/scripts/build.sh" "$root/build/release" -DXYL_BUILD_TESTS=OFF -DXYL_BUILD_BENCHMARKS=OFF
"$root/build/release/tools/xyl/xyl" demo
