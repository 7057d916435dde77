#!/usr/bin/env bash
# The main job: builds what is missing, starts a SOM service in a sandbox
# QEL_SYSROOT, and walks through calls of the library against it.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Debug >/dev/null
cmake --build build --target som_example qel_fake_somd >/dev/null

coproc SERVICE { build/tests/qel_fake_somd 2; }
read -r sysroot <&"${SERVICE[0]}"
echo "service sandbox: $sysroot"
QEL_SYSROOT=$sysroot build/som_example
wait "$SERVICE_PID"
echo "demo finished"
