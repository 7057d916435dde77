#!/usr/bin/env bash
# Installs the built project into an empty prefix, builds a separate consumer
# project against the installed CMake package (and checks the pkg-config
# file), then runs the consumer against a fake service.
set -euo pipefail
build_dir=$1
consumer_src=$2
fake_somd=$3

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix

cmake --install "$build_dir" --prefix "$prefix" >/dev/null
test -f "$prefix/include/qel/CSomIf.h"
test -f "$prefix/lib/libqel_SomIf.so.1"
test -f "$prefix/lib/cmake/QelSomIf/QelSomIfConfig.cmake"

cmake -S "$consumer_src" -B "$work/build" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_CXX_FLAGS="${CXXFLAGS:-}" >/dev/null
cmake --build "$work/build" >/dev/null

# The pkg-config file gives a working compile and link line too.
PKG_CONFIG_PATH=$prefix/lib/pkgconfig
export PKG_CONFIG_PATH
c++ -std=c++17 ${CXXFLAGS:-} "$consumer_src/main.cpp" -o "$work/consumer-pc" \
  $(pkg-config --cflags --libs qel_SomIf) -Wl,-rpath,"$prefix/lib"

# The fake service prints its QEL_SYSROOT, then serves one request.
coproc FAKE { "$fake_somd"; }
read -r sysroot <&"${FAKE[0]}"
QEL_SYSROOT=$sysroot "$work/build/consumer"
wait "$FAKE_PID"
echo "consumer built against the installed package: ok"
