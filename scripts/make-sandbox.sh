#!/usr/bin/env bash
# Lays out a sandbox installation for somd and the library under DIR: the
# scenario's files (MOF file, provider INI files, device inventory,
# ProcessStatus.ini), the scenario data, socket.conf and a link to the
# system's PCI ID database. Usage: make-sandbox.sh DIR [SCENARIO]
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
dir=$1
scenario=${2:-$here/tools/somd/scenario/default}
mkdir -p "$dir/opt/velmora/qel/som/scenario" "$dir/usr/share/hwdata" "$dir/run"
cp -R "$scenario/sysroot/." "$dir/"
cp "$scenario"/*.json "$dir/opt/velmora/qel/som/scenario/"
ln -sf /usr/share/hwdata/pci.ids "$dir/usr/share/hwdata/pci.ids"
cat > "$dir/opt/velmora/qel/som/socket.conf" <<CONF
# Socket of the SOM service in this sandbox
socket=$dir/run/som.sock
timeout=30
CONF
