#!/usr/bin/env bash
# install_test.sh <build-dir> <source-dir>: installs the built project into a
# temporary prefix, builds the two example hosts against the installed
# package, once through find_package and once through pkg-config, and runs
# them with no variable pointing at the installation.
set -eu
build=$1
source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix

cmake --install "$build" --prefix "$prefix" >"$work/install.log"
test -e "$prefix/lib/libXYLCore.so.1"
test -e "$prefix/lib/xylpluginmsgs.bmf"
test -e "$prefix/lib/i18n_res.xml"
test -e "$prefix/lib/pkgconfig/xylcore.pc"
test -e "$prefix/lib/cmake/XYLCore/XYLCoreConfig.cmake"
test -e "$prefix/include/XYLCore/i18n/c/i18n_c.h"
"$prefix/bin/xyl" --help >/dev/null

run() { # run <label> <program>: the program must succeed and print its lines
  local out
  out=$(env -u QOR_EXEC_PATH -u QOR_ROOT -u XYL_MSG_PATH "$2")
  echo "$out" | grep -q . || { echo "$1 printed nothing"; exit 1; }
  echo "$out" | sed "s|^|$1: |"
}
expect_line() { # expect_line <label> <program> <text that must appear>
  env -u QOR_EXEC_PATH -u QOR_ROOT -u XYL_MSG_PATH "$2" | grep -qF -- "$3" ||
    { echo "$1: no line with '$3'"; exit 1; }
}

# find_package
cmake -S "$source/examples" -B "$work/cmake" -DCMAKE_PREFIX_PATH="$prefix" >"$work/configure.log"
cmake --build "$work/cmake" >"$work/build.log"
run cmake/cpp_host "$work/cmake/cpp_host"
run cmake/c_host "$work/cmake/c_host"

# pkg-config
export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
flags="$(pkg-config --cflags --libs xylcore) -Wl,-rpath,$prefix/lib"
g++ -std=c++17 "$source/examples/cpp_host/main.cpp" -o "$work/cpp_host" $flags
gcc -std=c99 -pedantic -Wall -Werror "$source/examples/c_host/main.c" -o "$work/c_host" $flags
run pkg-config/cpp_host "$work/cpp_host"
run pkg-config/c_host "$work/c_host"

# What the hosts must have found in the installation on their own: the
# library's catalog (its text, not the XML fallback) and the resources.
expect_line cpp_host "$work/cpp_host" "pool ran 100 tasks"
expect_line cpp_host "$work/cpp_host" "duration: "
expect_line cpp_host "$work/cpp_host" "could not be loaded: libexample.so"
expect_line c_host "$work/c_host" "sorts before"
