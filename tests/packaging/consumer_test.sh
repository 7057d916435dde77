#!/usr/bin/env bash
# Installs the built project into an empty prefix, builds a separate consumer
# project against the installed CMake package (and checks the pkg-config
# file), then runs the consumer against somd in a sandbox.
set -euo pipefail
build_dir=$1
consumer_src=$2
somd=$3
source_dir=$(cd "$(dirname "$0")/../.." && pwd)

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

bash "$source_dir/scripts/make-sandbox.sh" "$work/sysroot"
export QEL_SYSROOT=$work/sysroot
"$somd" 2>/dev/null &
somd_pid=$!
for _ in $(seq 100); do [ -S "$work/sysroot/run/som.sock" ] && break; sleep 0.05; done
status=0
"$work/build/consumer" && "$work/consumer-pc" || status=1
kill "$somd_pid"; wait "$somd_pid" || true
[ "$status" = 0 ]
echo "consumer built against the installed package: ok"
