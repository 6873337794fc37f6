#!/bin/bash
# Builds the release and runs the tool `qx` with the arguments given, or its demonstration without any.
# SPDX-License-Identifier: see LICENSE
set -u
. "$(dirname "${BASH_SOURCE[0]}")/scripts/common.sh"

if [ ! -e "$root/tools/qx/CMakeLists.txt" ]; then fail "run.sh: the tool qx is not part of this version yet"; fi
need_tools
begin_building
configure release
build release
end_building
if [ $# = 0 ]; then set -- demo; fi
exec "$root/build/release/bin/qx" "$@"
