#!/bin/bash
# Builds the library and runs every test; see --help.
# SPDX-License-Identifier: see LICENSE
set -u
. "$(dirname "${BASH_SOURCE[0]}")/scripts/common.sh"

usage="usage: ./test.sh [--sanitize | --windows] [CTEST-OPTION…]
Builds preset dev (warnings are errors) and runs every test. With --sanitize the tests run in two further builds
instead: with the address and undefined-behaviour sanitizers, and with the thread sanitizer. With --windows they are
built for 64-bit Windows instead and run through Wine.
Other options go to ctest: ./test.sh -R qxString"

presets=(dev)
options=()
for argument in "$@"; do
    case $argument in
    --sanitize) presets=(asan tsan) ;;
    --windows) presets=(mingw) ;;
    --help) echo "$usage" && exit 0 ;;
    *) options+=("$argument") ;;
    esac
done

need_tools gtest python
wine=
if [ "${presets[0]}" = mingw ]; then
    need_windows_tools
    wine=$root/build/mingw/wine
    mkdir -p "$wine"
    "$root/scripts/wine.sh" --start "$wine"
    trap '"$root/scripts/wine.sh" --stop "$wine"' EXIT
fi
status=0
for preset in "${presets[@]}"; do
    say "== $preset: build"
    started=$SECONDS
    begin_building
    configure "$preset"
    build "$preset"
    end_building
    say "== $preset: tests (built in $((SECONDS - started)) s)"
    run=()
    # The thread sanitizer of some compilers cannot start where addresses are chosen at random.
    if [ "$preset" = tsan ] && setarch -R true 2>/dev/null; then run=(setarch -R); fi
    passed=1
    (cd "$root" && "${run[@]}" ctest --preset "$preset" -j "$jobs" "${options[@]}") </dev/null || passed=0
    if [ "$preset" = mingw ]; then
        if [ $passed = 0 ] && python3 "$root/scripts/wine_started.py" "$root/build/mingw/Testing/Temporary"; then
            (cd "$root" && ctest --preset mingw --rerun-failed) </dev/null && passed=1
        fi
        "$root/scripts/wine.sh" "$root/build/mingw/bin/qx.exe" demo </dev/null || status=1
    fi
    [ $passed = 1 ] || status=1
done
exit $status
