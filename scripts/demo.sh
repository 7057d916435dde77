#!/usr/bin/env bash
# The main job: installs what is missing, builds, lays out a sandbox
# installation with the default scenario, starts the reference SOM service
# there and walks through the library's operations with somctl. It builds in
# build-demo/ (never touching build/); only installing missing Debian packages
# needs root.
set -euo pipefail
cd "$(dirname "$0")/.."
if [ "$(id -u)" != 0 ] && ! bash scripts/setup.sh --check; then
  echo "demo: Debian packages are missing; installing them needs root:" >&2
  echo "  sudo bash scripts/setup.sh" >&2
  exit 1
fi
bash scripts/setup.sh
build=build-demo
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DQELSOMIF_BUILD_TESTS=OFF \
  -DQELSOMIF_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" --target somd somctl som_example >/dev/null

sandbox=$(mktemp -d "${TMPDIR:-/tmp}/qel-demo.XXXXXX")
bash scripts/make-sandbox.sh "$sandbox"
export QEL_SYSROOT=$sandbox
"$build/somd" --work-ms 800 2>"$sandbox/somd.log" &
somd_pid=$!
trap 'kill "$somd_pid" 2>/dev/null || true; wait "$somd_pid" 2>/dev/null || true; rm -rf "$sandbox"' EXIT
for _ in $(seq 50); do [ -S "$sandbox/run/som.sock" ] && break; sleep 0.1; done

step() { printf '\n\033[1m== %s\033[0m\n$ somctl %s\n' "$1" "${*:2}"; "$build/somctl" "${@:2}" || true; }

echo "SOM service sandbox: $sandbox"
step "What is installed" versions
step "Which device and tool services are registered" services device
step "Which device services have hardware present" services alive
step "What a device provider manages (names from the PCI ID database)" providers device VELMORA_NicProvider
step "The updates that are available" plans
step "Take the operating authority" authority take
step "A second application is refused while it is held" --app-key other-tool authority take
step "Configure automatic downloads (passwords are never shown)" download-setting set WebSiteUrl=https://updates.example/qel ProxyAddress=proxy.local ProxyPort=3128 ProxyPassword=demo-secret IsAutoSetting=true RepeatType=1 Time=03:00
step "Read the download setting back" download-setting
step "Schedule automatic updates" update-setting set IsAutoSetting=true RepeatType=2 DayOfWeek=Sunday Time=04:00
step "Download everything" download
step "Apply everything" update
step "What the update did" log updates
step "Now the plans are rollback plans" plans --rollback
step "Roll back" rollback
step "The result log" log result
step "Alive-monitor parameters" monitor get Interval
step "Change one" monitor set Interval 45
step "Read it back" monitor get Interval
step "Release the operating authority" authority release
step "Any method through ExecMethod" exec VELMORA_UpdateManager ExecuteUpdateApplyCheck AppKey=somctl
step "The same as JSON for scripts" --json plans
echo
echo "An example program using the library directly:"
"$build/som_example" || true
echo
echo "demo finished"
