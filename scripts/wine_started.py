#!/usr/bin/env python3
"""wine_started.py FOLDER: succeeds when every failed test of the last run, whose logs are in FOLDER, printed nothing at all.

GoogleTest begins with a line of its own, so such a program was never started: under load Wine refuses that now and then.
"""
# SPDX-License-Identifier: see LICENSE
import re
import sys
from pathlib import Path

folder = Path(sys.argv[1])
failed = [line.split(":", 1)[1] for line in (folder / "LastTestsFailed.log").read_text().splitlines()]
log = (folder / "LastTest.log").read_text(errors="replace")
silent = set(re.findall(r'^"(.*)" start time: .*\nOutput:\n-+\n<end of output>', log, re.M))
if not failed or not silent.issuperset(failed):
    sys.exit(1)
print("not started by Wine, tried again:", *failed, sep="\n  ", file=sys.stderr)
