#!/usr/bin/env python3
"""The tool answers the same documents with the same bytes and exit statuses on every system: those of the committed list.

outputs_test.py [--write] PROGRAM...: PROGRAM is the tool, with what runs it before it; --write makes the list anew.
"""
# SPDX-License-Identifier: see LICENSE
import hashlib
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).parents[2]
LIST = Path(__file__).parent / "outputs.sha256"
COMMANDS = ("events --all", "tree --keep-space", "format")


def large_document():
    """About 4 MB of everything that documents hold, in lines that all differ."""
    lines = ["<?xml version='1.0'?>\n<!DOCTYPE large [<!ENTITY e 'v'>]>\n<large>"]
    for i in range(60000):
        attributes = f"n='{i}' t=\"&lt;{i * 7919 % 1000}&#x20AC;\"" if i % 3 else f"n='{i}'"
        content = (f"text {i} \u00e9\u20ac\U0001f600", f"<![CDATA[<{i}>]]>", f"<!-- {i} --> a <b>{i}</b> c", "&e;&amp;")[i % 4]
        lines.append(f"  <item{i % 50} {attributes}>{content}<?pi {i}?></item{i % 50}>")
    return "\r\n".join([*lines, "</large>"]).encode()


def documents():
    yield "large", large_document()
    # The seeds of the tree begin with a byte of options.
    for folder, start in (("examples/data", 0), ("fuzz/seeds/xml_tree", 1), ("fuzz/seeds/xml_read", 0)):
        for file in sorted((ROOT / folder).iterdir()):
            yield file.relative_to(ROOT).as_posix(), file.read_bytes()[start:]


def answers(program):
    for name, document in documents():
        for command in COMMANDS:
            run = subprocess.run([*program, "xml", *command.split(), "-"], input=document, capture_output=True)
            digest = hashlib.sha256(run.stdout + b"\0" + run.stderr.replace(b"\r\n", b"\n"))
            yield f"{digest.hexdigest()} {run.returncode} {command}: {name}\n"


def main(*arguments):
    found = list(answers([word for word in arguments if word != "--write"]))
    if "--write" in arguments:
        LIST.write_text("".join(found))
        return
    expected = LIST.read_text().splitlines(keepends=True)
    wrong = [line for line in found if line not in expected]
    sys.stdout.writelines(wrong)
    if wrong or len(found) != len(expected):
        sys.exit(f"{len(wrong)} answers differ from those listed, {len(found)} of {len(expected)} were given")


if __name__ == "__main__":
    main(*sys.argv[1:])
