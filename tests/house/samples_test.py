#!/usr/bin/env python3
"""The console sessions that the documentation shows give what stands there.

samples_test.py PROGRAM...: PROGRAM is the tool, with what runs it before it. In a block "```console" the lines that begin
with "$ " are run by a shell, with the lines behind them that begin with "> "; what follows is their output, then their
errors. A block "```text NAME" is a file NAME in the folder where the sessions of that document run.
"""
# SPDX-License-Identifier: see LICENSE
import re
import shlex
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).parents[2]
DOCUMENTS = ("docs/rules.md", "docs/qx.md", "docs/urls.md", "docs/settings.md", "docs/network.md")


def blocks(document):
    """(first word, rest of the line, content) of each fenced block."""
    return re.findall(r"^```(\w+)(?: (\S+))?\n(.*?)^```$", document, re.S | re.M)


def sessions(block):
    """(command, output) of each command in a console block."""
    for piece in re.split(r"^\$ ", block, flags=re.M)[1:]:
        lines = piece.splitlines(keepends=True)
        command = lines.pop(0)
        while lines and lines[0].startswith("> "):
            command += lines.pop(0)[2:]
        yield command, "".join(lines)


def check(document, tool):
    """The number of sessions that were run, and of those that answered something else."""
    count = wrong = status = 0
    with tempfile.TemporaryDirectory() as folder:
        (Path(folder) / "examples").symlink_to(ROOT / "examples")
        for kind, name, content in blocks((ROOT / document).read_text()):
            if kind == "text" and name:
                (Path(folder) / name).write_text(content)
            for command, expected in sessions(content) if kind == "console" else ():
                script = f'qx() {{ {shlex.join(tool)} "$@"; }}\n(exit {status})\n{command}'
                run = subprocess.run(["sh", "-c", script], cwd=folder, capture_output=True)
                status = run.returncode
                answer = (run.stdout + run.stderr).replace(b"\r\n", b"\n").decode()
                count += 1
                if answer == expected:
                    continue
                wrong += 1
                print(f"{document}: $ {command}answers\n{answer}instead of\n{expected}")
    return count, wrong


def main(*tool):
    found = [check(document, tool) for document in DOCUMENTS]
    if any(count == 0 or wrong > 0 for count, wrong in found):
        sys.exit("some sessions answer something else, or a document has none")


if __name__ == "__main__":
    main(*sys.argv[1:])
