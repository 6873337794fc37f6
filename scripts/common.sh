# What run.sh, test.sh and bench.sh share: installing what is missing, configuring and building a preset.
# Everything said here goes to standard error; standard output belongs to the program that is run in the end.
# SPDX-License-Identifier: see LICENSE

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
jobs=$(nproc 2>/dev/null || echo 2)

say() { echo "$*" >&2; }

fail() {
    say "$*"
    exit 1
}

# Installs the packages named; where that is not allowed or does not succeed, says what to install and ends.
install_packages() {
    local as_root=()
    if [ "$(id -u)" != 0 ]; then as_root=(sudo -n); fi
    if command -v apt-get >/dev/null && "${as_root[@]}" true 2>/dev/null; then
        say "installing $*"
        export DEBIAN_FRONTEND=noninteractive
        local get=("${as_root[@]}" apt-get -q -y -o Dpkg::Use-Pty=0)
        # The lists of packages may be missing or old: fetch them only when the first try fails.
        "${get[@]}" install "$@" </dev/null >&2 ||
            { "${get[@]}" update </dev/null >&2 && "${get[@]}" install "$@" </dev/null >&2; } ||
            fail "these packages could not be installed: $*"
    else
        fail "please install these first (names as in Debian): $*"
    fi
}

# need_tools [gtest] [python]: the compiler, CMake and Ninja, and what else is asked for.
need_tools() {
    local missing=() what
    command -v "${CXX:-c++}" >/dev/null || missing+=(g++)
    command -v cmake >/dev/null || missing+=(cmake)
    command -v ninja >/dev/null || missing+=(ninja-build)
    have_header zlib.h || missing+=(zlib1g-dev)
    for what in "$@"; do
        case $what in
        gtest) have_header gtest/gtest.h || missing+=(libgtest-dev) ;;
        python) command -v python3 >/dev/null || missing+=(python3) ;;
        esac
    done
    if [ ${#missing[@]} != 0 ]; then install_packages "${missing[@]}"; fi
}

# The compiler for Windows, and what runs its programs.
need_windows_tools() {
    local missing=()
    command -v x86_64-w64-mingw32-g++-posix >/dev/null || missing+=(g++-mingw-w64-x86-64-posix)
    command -v wine >/dev/null || missing+=(wine)
    [ -e /usr/lib/wine/wine64 ] || missing+=(wine64)
    [ -d /usr/src/googletest ] || missing+=(googletest)
    [ -e /usr/x86_64-w64-mingw32/include/zlib.h ] || missing+=(libz-mingw-w64-dev)
    if [ ${#missing[@]} != 0 ]; then install_packages "${missing[@]}"; fi
}

# Whether the compiler finds a header.
have_header() {
    printf '#if !__has_include(<%s>)\n#error missing\n#endif\n' "$1" | "${CXX:-c++}" -x c++ -E - >/dev/null 2>&1
}

# Waits until no other command of this folder builds: the commands may stand on both sides of a pipe.
begin_building() {
    mkdir -p "$root/build"
    exec 9>"$root/build/lock"
    if command -v flock >/dev/null; then flock 9; fi
}

end_building() { exec 9>&-; }

# configure PRESET [OPTION…]: makes build/PRESET, or brings it up to date when the presets have changed since.
# Changes of the CMake lists are noticed by the build itself.
configure() {
    local preset=$1 stamp=$root/build/$1/configured
    shift
    if [ "$stamp" -nt "$root/CMakePresets.json" ] && [ "$(cat "$stamp")" = "$*" ]; then return; fi
    (cd "$root" && cmake --preset "$preset" "$@") </dev/null >"$root/build/$preset.log" 2>&1 ||
        { cat "$root/build/$preset.log" >&2; fail "configuring $preset failed"; }
    echo "$*" >"$stamp"
}

# build PRESET: with progress on a terminal, otherwise without a word unless something is wrong.
build() {
    if ninja -C "$root/build/$1" -n | grep -q "no work to do"; then return; fi
    local command=(cmake --build --preset "$1" -j "$jobs")
    cd "$root" || exit 1
    if [ -t 2 ]; then
        "${command[@]}" </dev/null >&2
    else
        "${command[@]}" -- --quiet </dev/null 2>&1 | grep -v "^ninja: no work to do" >&2
        [ "${PIPESTATUS[0]}" = 0 ]
    fi || fail "building $1 failed"
    cd "$OLDPWD" || exit 1
}
