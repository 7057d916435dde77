#!/usr/bin/env bash
# Builds the Debian packages (libqel-somif1, libqel-somif-dev, qel-som-tools)
# in BUILD_DIR (default build-pkg) from a Release configuration for /usr.
# Usage: packaging/make-packages.sh [BUILD_DIR]; the .deb files end up in BUILD_DIR.
set -euo pipefail
cd "$(dirname "$0")/.."
dir=${1:-build-pkg}
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=Release "${launcher[@]}" \
  -DCMAKE_INSTALL_PREFIX=/usr -DCMAKE_INSTALL_LIBDIR="lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)" \
  -DQELSOMIF_BUILD_TESTS=OFF -DQELSOMIF_BUILD_BENCH=OFF >/dev/null
cmake --build "$dir"
rm -f "$dir"/*.deb
(cd "$dir" && cpack -G DEB >/dev/null)
ls "$dir"/*.deb
