#!/bin/bash
# Measures the library beside its peers; see --help.
# SPDX-License-Identifier: see LICENSE
set -u
. "$(dirname "${BASH_SOURCE[0]}")/scripts/common.sh"

peers=(libexpat1-dev libxml2-dev libpugixml-dev libtinyxml2-dev libboost-dev libfmt-dev libspdlog-dev
    libboost-serialization-dev qtbase5-dev uuid-dev libpoco-dev libglib2.0-dev flex)

usage="usage: ./bench.sh [group…] [--peers] [--json FILE] [--rounds N]
Builds the release with whatever peers are installed and runs ours and theirs by turns on the same input, all groups
or those named; prints one row a contender. The ratio is the contender's cost divided by ours: above 1, ours is cheaper.
--peers first installs the peers: ${peers[*]}
--json FILE writes the rows as JSON besides; a wrong group shows the list of groups"

arguments=()
for argument in "$@"; do
    case $argument in
    --peers) install_packages "${peers[@]}" ;;
    --help) echo "$usage" && exit 0 ;;
    *) arguments+=("$argument") ;;
    esac
done

need_tools
begin_building
rm -f "$root/build/bench/configured" # peers may have come or gone
configure bench
build bench
end_building
exec "$root/build/bench/bin/qxbench" "${arguments[@]}"
