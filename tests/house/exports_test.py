#!/usr/bin/env python3
"""The library exports the functions and variables of the committed list and nothing else, on every system.

exports_test.py LIBRARY [--write]: --write makes the list anew, to be looked through before it is committed. QX_OBJDUMP and
QX_CXXFILT name the compiler's tools.
"""
# SPDX-License-Identifier: see LICENSE
import os
import re
import subprocess
import sys
from pathlib import Path

LIST = Path(__file__).parents[2] / "source/qxbase/qxbase.exports"
OBJDUMP = os.environ.get("QX_OBJDUMP", "objdump")
CXXFILT = os.environ.get("QX_CXXFILT", "c++filt")

# What compilers add to a class; which of it they emit, and where, is theirs to choose.
OF_A_CLASS = re.compile(r"(?:vtable|typeinfo|typeinfo name|(?:non-virtual|virtual|covariant return) thunk) (?:for|to) (?:qx\w+)")


def output(*command, text=None):
    return subprocess.run(command, input=text, capture_output=True, text=True, check=True).stdout


def raw_names(library):
    if library.suffix == ".dll":
        table = output(OBJDUMP, "-p", library).split("[Ordinal/Name Pointer] Table", 1)[1].split("\n\n", 1)[0]
        return re.findall(r"^\s*\[ *\d+\].* (\S+)$", table, re.M)
    return re.findall(r"^[0-9a-f]+ .{7} (?!\*UND\*)\S+\s+[0-9a-f]+ +(?:Base +)?(\S+)$", output(OBJDUMP, "-T", library), re.M)


def exported(library):
    names = output(CXXFILT, text="\n".join(raw_names(library))).split("\n")
    # A 64-bit integer and a size are long on one system and long long on the other.
    names = {re.sub(r"\blong long\b", "long", name) for name in names if name}
    names = {re.sub(r"\b_GUID\b", "qxGUIDRecord", name) for name in names}  # the system's own record, where it has one
    return {name for name in names if not OF_A_CLASS.match(name)}


def main(library, *options):
    names = exported(Path(library))
    if len(names) < 100:
        sys.exit(f"{library}: only {len(names)} names found")
    if "--write" in options:
        LIST.write_text("".join(name + "\n" for name in sorted(names)))
        return
    listed = set(LIST.read_text().splitlines())
    for name in sorted(names - listed):
        print("exported but not listed:", name)
    for name in sorted(listed - names):
        print("listed but not exported:", name)
    if names != listed:
        sys.exit(f"look at each; if it is meant: {sys.argv[0]} {library} --write")


if __name__ == "__main__":
    main(*sys.argv[1:])
