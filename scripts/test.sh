#!/usr/bin/env bash
# Installs what is missing, builds the project plainly and with
# AddressSanitizer + UndefinedBehaviorSanitizer (LeakSanitizer included),
# and runs every test in both builds.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
jobs=$(nproc)

cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Debug >/dev/null
cmake --build build -j "$jobs"
(cd build && ctest --output-on-failure -j "$jobs")

cmake -S . -B build-asan -G Ninja -DCMAKE_BUILD_TYPE=Debug -DQELSOMIF_SANITIZE=ON >/dev/null
cmake --build build-asan -j "$jobs"
(cd build-asan && ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 \
   UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 ctest --output-on-failure -j "$jobs")
