#!/bin/bash
# Runs a program for Windows through Wine: wine.sh PROGRAM [ARGUMENT…]. With --start and --stop it makes and ends the world
# that programs run in, which lives in the folder QX_WINE_PREFIX, by default wine in the folder above the program's.
# SPDX-License-Identifier: see LICENSE
set -u

export WINEARCH=win64
export WINEDEBUG=-all
export WINEDLLOVERRIDES='mscoree,mshtml=;winemenubuilder.exe=d'
export LC_ALL=C.UTF-8 # or names outside ASCII do not reach the files
unset DISPLAY WAYLAND_DISPLAY
case ${1:-} in
--start | --stop) prefix=${2:-} ;;
*) prefix=$(cd "$(dirname "$1")/.." && pwd)/wine ;;
esac
export WINEPREFIX=${QX_WINE_PREFIX:-$prefix}

case ${1:-} in
--start)
    wineserver -k 2>/dev/null # one that stayed from before would be waited for without end
    wineboot -i </dev/null >/dev/null 2>&1
    wineserver -w
    wineserver -p # stays, or each program takes more than a second
    # Dialogs have nowhere to be seen, and work all the same.
    wine reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f </dev/null >/dev/null 2>&1
    # The first program with a window starts the desktop, which then holds its output open for as long as others follow.
    wine explorer </dev/null >/dev/null 2>&1 &
    ;;
--stop) wineserver -k ;;
*) exec wine "$@" ;;
esac
