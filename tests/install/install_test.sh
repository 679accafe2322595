#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# install_test.sh <build-dir | folder of .deb files> <source-dir>
#
# Installs XYLCore and builds the two example hosts against what was
# installed, once through find_package and once through pkg-config, then runs
# them with no variable pointing at the installation:
#   - a shared build is installed into a temporary prefix;
#   - a static build (BUILD_SHARED_LIBS=OFF) is installed into the prefix it
#     was configured with, because its hosts find the catalogs and resource
#     files in the data directory compiled in from that prefix;
#   - a folder of Debian packages is unpacked into a temporary root.
set -eu
from=$1
source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cache_value() { sed -n "s/^$1:[A-Z]*=//p" "$from/CMakeCache.txt"; }

static=no
if compgen -G "$from/*.deb" >/dev/null; then
  for deb in "$from"/*.deb; do dpkg-deb -x "$deb" "$work/root"; done
  prefix=$work/root/usr
elif [ "$(cache_value BUILD_SHARED_LIBS)" = OFF ]; then
  static=yes
  prefix=$(cache_value CMAKE_INSTALL_PREFIX)
  cmake --install "$from" >"$work/install.log"
else
  prefix=$work/prefix
  cmake --install "$from" --prefix "$prefix" >"$work/install.log"
fi
libdir=$(dirname "$(find "$prefix" -name xylcore.pc -path '*/pkgconfig/*' | head -n1)")
libdir=${libdir%/pkgconfig}

if [ $static = yes ]; then
  test -e "$libdir/libXYLCore.a"
  test ! -e "$libdir/libXYLCore.so"
else
  test -e "$libdir/libXYLCore.so.1"
fi
test -e "$libdir/xylpluginmsgs.bmf"
test -e "$libdir/i18n_res.xml"
test -x "$libdir/XYLWriteDump"
test -e "$libdir/cmake/XYLCore/XYLCoreConfig.cmake"
test -e "$prefix/include/XYLCore/i18n/c/i18n_c.h"
# The packaged tool relies on the system's library path, which the
# unpacked root is not on.
LD_LIBRARY_PATH=$libdir "$prefix/bin/xyl" --help >/dev/null

run() { # run <label> <program>: the program must succeed and print its lines
  local out
  out=$(env -u QOR_EXEC_PATH -u QOR_ROOT -u XYL_MSG_PATH "$2")
  echo "$out" | grep -q . || {
    echo "$1 printed nothing"
    exit 1
  }
  echo "$out" | sed "s|^|$1: |"
}
expect_line() { # expect_line <label> <program> <text that must appear>
  env -u QOR_EXEC_PATH -u QOR_ROOT -u XYL_MSG_PATH "$2" | grep -qF -- "$3" ||
    {
      echo "$1: no line with '$3'"
      exit 1
    }
}

# The hosts run from a folder of their own, away from the installation. A
# consumer that asks for C++11 still gets the C++17 the headers need.
cmake -S "$source/examples" -B "$work/cmake" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_STANDARD=11 \
  >"$work/configure.log"
cmake --build "$work/cmake" >"$work/build.log"
run cmake/cpp_host "$work/cmake/cpp_host"
run cmake/c_host "$work/cmake/c_host"

# pkg-config, with only ICU's .pc files besides ours: zlib, ISA-L and
# libxml2 are the library's own business.
mkdir "$work/pc"
for icu in icu-uc icu-i18n; do
  cp "$(pkg-config --variable=pcfiledir $icu)/$icu.pc" "$work/pc/"
done
export PKG_CONFIG_LIBDIR=$work/pc:$libdir/pkgconfig PKG_CONFIG_PATH=
if [ $static = yes ]; then
  flags="$(pkg-config --static --cflags --libs xylcore)"
else
  flags="$(pkg-config --cflags --libs xylcore) -Wl,-rpath,$libdir"
fi
g++ -std=c++17 "$source/examples/cpp_host/main.cpp" -o "$work/cpp_host" $flags
gcc -std=c99 -pedantic -Wall -Werror "$source/examples/c_host/main.c" -o "$work/c_host" $flags
run pkg-config/cpp_host "$work/cpp_host"
run pkg-config/c_host "$work/c_host"

if [ $static = yes ]; then
  # A static host's directory holds no resource file: the installed one is
  # taken.
  cat >"$work/probe.cpp" <<'PROBE'
#include <XYLCore/i18n/cpp/i18n_init.h>
#include <XYLCore/i18n/cpp/i18n_internalresources.h>
#include <cstdio>
int main() { return I18NInitialize() == 0 || std::puts(I18NInternalResources::getResourceFilePath()) < 0; }
PROBE
  g++ -std=c++17 "$work/probe.cpp" -o "$work/probe" $flags
  expect_line probe "$work/probe" "$libdir/./i18n_res.xml"
  for host in "$work/cpp_host" "$work/c_host" "$work/cmake/cpp_host"; do
    if ldd "$host" | grep -q libXYLCore; then
      echo "$host: linked against the shared library"
      exit 1
    fi
  done
fi

# What the hosts must have found in the installation on their own: the
# library's catalog (its text, not the XML fallback) and the resources.
for dir in "$work" "$work/cmake"; do
  expect_line cpp_host "$dir/cpp_host" "pool ran 100 tasks"
  expect_line cpp_host "$dir/cpp_host" "duration: "
  expect_line cpp_host "$dir/cpp_host" "could not be loaded: libexample.so"
  expect_line c_host "$dir/c_host" "sorts before"
done
