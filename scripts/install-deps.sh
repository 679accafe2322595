#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Installs what building, testing and benchmarking XYLCore needs on Debian 12.
# Run as root. Does nothing when every package is already there.
set -euo pipefail

packages=(
  build-essential cmake pkg-config git
  zlib1g-dev libicu-dev libisal-dev libxml2-dev unicode-data
  libgtest-dev libgmock-dev libbenchmark-dev
  libapr1-dev libaprutil1-dev
  clang libclang-rt-14-dev clang-format
  libdw-dev gdb
  locales bsdutils time
  abigail-tools lintian doxygen
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -gt 0 ]; then
  echo "installing: ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update
  apt-get install -y --no-install-recommends "${missing[@]}"
fi
