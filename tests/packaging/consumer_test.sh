#!/usr/bin/env bash
# Builds a separate consumer project against an installed QelSomIf CMake
# package (and checks the pkg-config file), then runs both consumers against
# somd in a sandbox.
#   consumer_test.sh BUILD_DIR CONSUMER_SRC SOMD     installs BUILD_DIR into an empty prefix
#   consumer_test.sh --installed PREFIX CONSUMER_SRC SOMD   uses a copy already installed
#                                                    there (the Debian packages: /usr)
set -euo pipefail
source_dir=$(cd "$(dirname "$0")/../.." && pwd)
work=$(mktemp -d)
somd_pid=
trap '[ -n "$somd_pid" ] && kill "$somd_pid" 2>/dev/null; rm -rf "$work"' EXIT

if [ "$1" = --installed ]; then
  prefix=$2
  shift
else
  prefix=$work/prefix
  cmake --install "$1" --prefix "$prefix" >/dev/null
fi
consumer_src=$2
somd=$3

# The libraries may be in lib or in a multiarch folder such as lib/x86_64-linux-gnu.
library=$(find "$prefix/lib" -name libqel_SomIf.so.1 -print -quit)
test -n "$library"
libdir=${library%/*}
test -f "$prefix/include/qel/CSomIf.h"
test -f "$libdir/cmake/QelSomIf/QelSomIfConfig.cmake"

cmake -S "$consumer_src" -B "$work/build" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_CXX_FLAGS="${CXXFLAGS:-}" >/dev/null
cmake --build "$work/build" >/dev/null

# The pkg-config file gives a working compile and link line too.
export PKG_CONFIG_PATH=$libdir/pkgconfig
c++ -std=c++17 ${CXXFLAGS:-} "$consumer_src/main.cpp" -o "$work/consumer-pc" \
  $(pkg-config --cflags --libs qel_SomIf) -Wl,-rpath,"$libdir"

bash "$source_dir/scripts/make-sandbox.sh" "$work/sysroot"
export QEL_SYSROOT=$work/sysroot
"$somd" 2>/dev/null &
somd_pid=$!
for _ in $(seq 100); do [ -S "$work/sysroot/run/som.sock" ] && break; sleep 0.05; done
"$work/build/consumer"
"$work/consumer-pc"
# The installed somctl talks to somd through the installed library.
"$prefix/bin/somctl" --json versions >/dev/null
# The consumer must have loaded the installed library, not a build tree's.
loaded=$(ldd "$work/build/consumer" | awk '$1 == "libqel_SomIf.so.1" { print $3 }')
[ "$(readlink -f "$loaded")" = "$(readlink -f "$library")" ]
echo "consumer built against the package installed in $prefix: ok"
