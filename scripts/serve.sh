#!/usr/bin/env bash
# The main job: builds the provider and the simulated switch, loads the
# example fabric and serves it to CIM-XML clients on 127.0.0.1:5988.
#   scripts/serve.sh [FABRIC.json] [extra zonecim serve options]
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh

build=build-serve
jobs=$(nproc 2>/dev/null || echo 2)
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DZONE_BUILD_TESTS=OFF -DZONE_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" -j "$jobs" --target zonecim zone_provider zoning_platform

fabric=examples/fabric.json
if [ $# -gt 0 ] && [ "${1#-}" = "$1" ]; then fabric=$1; shift; fi
export ZONE_SIM_DB=${ZONE_SIM_DB:-$PWD/$build/zone-switch.db}
zonecim=$build/src/zonecim/zonecim
"$zonecim" fabric load "$fabric"

# The address the server will listen on, for the commands printed below.
listen=127.0.0.1:5988
args=("$@")
for ((i = 0; i < ${#args[@]}; ++i)); do
  case ${args[i]} in
    --listen=*) listen=${args[i]#--listen=} ;;
    --listen) ((i + 1 < ${#args[@]})) && listen=${args[i + 1]} ;;
  esac
done
url=http://$listen

cat <<MSG
Simulated switch loaded from $fabric (database $ZONE_SIM_DB).
Serving it on $url ; try, from another shell:
  wbemcli ein '$url/root/cimv2:VORNA_ZoneService'
  wbemcli ei  '$url/root/cimv2:VORNA_Zone'
  wbemcli ain -ac VORNA_ZoneMemberOfCollection '$url/root/cimv2:VORNA_ZoneSet.InstanceID="10^1^1"'
  wbemcli cm  '$url/root/cimv2:VORNA_ZoneService.SystemCreationClassName="VORNA_Vsan",SystemName="10",CreationClassName="VORNA_ZoneService",Name="10"' 'CreateZoneSet.ZoneSetName="lab_zs"'
or, without a server, the same through the command line tool:
  ZONE_SIM_DB=$ZONE_SIM_DB $zonecim ei 'root/cimv2:VORNA_Zone'
Stop with Ctrl-C.
MSG
exec "$zonecim" serve "$@"
