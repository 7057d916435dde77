#!/usr/bin/env bash
# Installs what a fresh Debian 12 machine lacks to build, test and demo the
# library (needs root when something is missing). Packages already present
# are not fetched again. With --check it only reports, by its exit code,
# whether something is missing.
set -euo pipefail
packages=(
  cmake ninja-build g++ pkg-config binutils libcli11-dev
  libboost-dev libinih-dev nlohmann-json3-dev
  libgtest-dev googletest libbenchmark-dev rapidjson-dev libpci-dev
  clang libclang-rt-14-dev valgrind
  hwdata pci.ids
  libsystemd-dev dpkg-dev file lintian
)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ "${1:-}" = --check ]; then
  ((${#missing[@]} == 0))
  exit
fi
if ((${#missing[@]})); then
  echo "installing: ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
