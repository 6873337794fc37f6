#!/usr/bin/env python3
"""Checks that the library keeps to its floors; usage: check_floors.py [ROOT].

Prints `file:line: fault` and ends with status 1 where an include points up the floors; where headers include one another
in a circle; where `#if` asks for an operating system, or a header of the system is included, outside platform/ (and
qxconfig.h), but for those of libraries that sources may use; where a public header or a source is in no floor's CMakeLists.txt, or is listed there and missing; where
qxbase.h does not include a public header. Internal headers belong to the floor in whose folder they stand and need not be
listed.
"""
# SPDX-License-Identifier: see LICENSE
import re
import sys
from pathlib import Path

STANDARD = set("""algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono cinttypes
climits clocale cmath codecvt compare complex concepts condition_variable coroutine csetjmp csignal cstdarg cstddef cstdint
cstdio cstdlib cstring ctime cuchar cwchar cwctype deque exception execution filesystem format forward_list fstream
functional future initializer_list iomanip ios iosfwd iostream istream iterator latch limits list locale map memory
memory_resource mutex new numbers numeric optional ostream queue random ranges ratio regex scoped_allocator semaphore set
shared_mutex source_location span sstream stack stdexcept stop_token streambuf string string_view strstream syncstream
system_error thread tuple type_traits typeindex typeinfo unordered_map unordered_set utility valarray variant vector version
""".split()) | {"arm_neon.h", "emmintrin.h", "immintrin.h"}  # the last three are the processor's, not the system's
DEPENDENCIES = {"zlib.h"}  # libraries that sources may use; those who include our headers need not have them
SYSTEM = re.compile(r"\b(_?WIN(32|64|NT)|__(MINGW|CYGWIN)\w*|(__)?(gnu_)?(linux|unix)(__)?|__APPLE__|__MACH__|__ANDROID__"
                    r"|__\w+BSD__|__sun|_POSIX_\w+)\b")


def read_lists(root, faults):
    """Gives the floors' names, lowest first and the library's own list last, and for each file its floor's number."""
    library = root / "source/qxbase"
    names = re.search(r"set\(QX_FLOORS(.*?)\)", (library / "CMakeLists.txt").read_text(), re.S)[1]
    floors, floor_of = re.sub("#.*", "", names).split() + ["."], {}
    for number, floor in enumerate(floors):
        table = library / floor / "CMakeLists.txt"
        for line, text in enumerate(table.read_text().splitlines(), 1):
            for word in re.findall(r"[\w./${}]+\.(?:h|cpp)\b", text.split("#")[0]):
                pattern = re.sub(r"\$\{\w+\}", "*", word)  # a variable stands for any folder
                files = [*(root / "include").glob(pattern), *(library / floor).glob(pattern)]
                floor_of.update((file.resolve(), number) for file in files)
                if not files: faults.append(f"{table}:{line}: {word} is missing")
        floor_of.update((file, number) for file in table.parent.rglob("*.h") if floor != ".")
    for file in sorted([*library.rglob("*.*"), *root.glob("include/**/*.*")]):
        if file.suffix in (".h", ".cpp") and file not in floor_of: faults.append(f"{file}:1: is in no floor's list")
    return floors, floor_of


def read_file(file, root, floors, floor_of, faults):
    """Checks the lines of one file and gives the files of the library that it includes."""
    included = []
    may_know_the_system = file.name == "qxconfig.h" or floors[floor_of[file]] == "platform"
    for line, text in enumerate(file.read_text().splitlines(), 1):
        where = f"{file}:{line}"
        if re.match(r"\s*#\s*(el)?if", text) and SYSTEM.search(text.split("//")[0]) and not may_know_the_system:
            faults.append(f"{where}: #if for an operating system outside platform/")
        include = re.match(r'\s*#\s*include\s*(["<])([^">]+)', text)
        if include and include[1] == "<":
            is_used = include[2] in DEPENDENCIES and file.suffix == ".cpp"
            if include[2] not in STANDARD and not is_used and not may_know_the_system:
                faults.append(f"{where}: header of the system <{include[2]}> outside platform/")
        elif include:
            places = [(root / base / include[2]).resolve() for base in ("include", "source/qxbase")]
            target = next((place for place in places if place in floor_of), None)
            if not target: faults.append(f"{where}: no floor has \"{include[2]}\"")
            elif floor_of[target] > floor_of[file]: faults.append(f"{where}: \"{include[2]}\" is of a higher floor")
            if target: included.append(target)
    return included


def find_circles(includes, faults):
    walked = set()

    def walk(file, way):
        if file in way:
            names = " ".join(step.name for step in [*way[way.index(file):], file])
            faults.append(f"{file}:1: headers in a circle: {names}")
        elif file not in walked:
            for target in includes[file]: walk(target, [*way, file])
            walked.add(file)

    for file in includes: walk(file, [])


def check(root):
    faults = []
    floors, floor_of = read_lists(root, faults)
    includes = {file: read_file(file, root, floors, floor_of, faults) for file in sorted(floor_of)}
    find_circles(includes, faults)
    whole = root / "include/qxbase.h"
    for file in includes:
        if file.parent == whole.parent and file not in [whole, *includes.get(whole, [])]:
            faults.append(f"{whole}:1: does not include {file.name}")
    return [fault.removeprefix(f"{root}/") for fault in faults]


if __name__ == "__main__":
    found = check(Path(sys.argv[1] if len(sys.argv) > 1 else Path(__file__).parents[1]).resolve())
    for fault in found: print(fault)
    sys.exit(1 if found else 0)
