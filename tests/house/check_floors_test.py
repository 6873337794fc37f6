#!/usr/bin/env python3
"""Feeds scripts/check_floors.py small trees, good and bad, and compares all it says."""
# SPDX-License-Identifier: see LICENSE
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SCRIPT = Path(__file__).parents[2] / "scripts/check_floors.py"
sys.dont_write_bytecode = True
sys.path.insert(0, str(SCRIPT.parent))

from check_floors import check

# A tree without a fault, of three floors; tests change single files of it.
GOOD = {
    "source/qxbase/CMakeLists.txt": "set(QX_FLOORS\n platform # the system\n core\n xml)\nqx_floor(HEADERS qxbase.h SOURCES)\n",
    "source/qxbase/platform/CMakeLists.txt": "qx_floor(HEADERS qxconfig.h SOURCES ${system}/clock.cpp)\n",
    "source/qxbase/core/CMakeLists.txt": "qx_floor(HEADERS qxlist.h qxstring.h\nSOURCES qxstring.cpp)\n",
    "source/qxbase/xml/CMakeLists.txt": "qx_floor(HEADERS qxxml.h SOURCES qxxml.cpp)\n",
    "include/qxconfig.h": "#ifdef _WIN32\n#endif\n",
    "include/qxlist.h": '#include "qxconfig.h"\n',
    "include/qxstring.h": '#include "qxlist.h"\n\n#include <vector>\n#if defined(__SSE2__)\n#include <emmintrin.h>\n#endif\n',
    "include/qxxml.h": '#include "qxstring.h"\n',
    "include/qxbase.h": "".join(f'#include "{name}.h"\n' for name in ("qxconfig", "qxlist", "qxstring", "qxxml")),
    "source/qxbase/platform/clock.h": "",
    "source/qxbase/platform/posix/clock.cpp": '#include "platform/clock.h"\n#include <time.h>\n#if defined(__linux__)\n#endif\n',
    "source/qxbase/core/qxstring.cpp": '#include "qxstring.h"\n#include "platform/clock.h"\n',
    "source/qxbase/xml/qxxml.cpp": '#include "qxxml.h"\n',
}


def lay_out(folder, changes):
    """Writes the good tree with changes: {file: text}, None for no such file."""
    for name, text in {**GOOD, **changes}.items():
        if text is not None:
            path = Path(folder, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text)


def faults_of(changes):
    with tempfile.TemporaryDirectory() as folder:
        lay_out(folder, changes)
        return "".join(fault + "\n" for fault in check(Path(folder).resolve()))


class CheckFloors(unittest.TestCase):
    def test_says_nothing_of_a_good_tree(self):
        self.assertEqual(faults_of({}), "")

    def test_finds_each_fault(self):
        string = "include/qxstring.h"
        source = "source/qxbase/core/qxstring.cpp"
        rows = [
            (string, '#include "qxxml.h"\n', 'include/qxstring.h:1: "qxxml.h" is of a higher floor\n'
             "include/qxstring.h:1: headers in a circle: qxstring.h qxxml.h qxstring.h\n"),
            (source, '\n#include "qxxml.h"\n', f'{source}:2: "qxxml.h" is of a higher floor\n'),
            (source, '  #  include "qxbase.h"\n', f'{source}:1: "qxbase.h" is of a higher floor\n'),
            ("source/qxbase/platform/clock.h", '#include "qxlist.h"\n',
             'source/qxbase/platform/clock.h:1: "qxlist.h" is of a higher floor\n'),
            ("include/qxlist.h", '#include "qxstring.h"\n',
             "include/qxlist.h:1: headers in a circle: qxlist.h qxstring.h qxlist.h\n"),
            (string, "#if defined(_WIN32)\n#endif\n", "include/qxstring.h:1: #if for an operating system outside platform/\n"),
            (source, "#if 0\n#elif __linux__\n#endif\n", f"{source}:2: #if for an operating system outside platform/\n"),
            (source, "#ifndef __MINGW32__\n#endif\n", f"{source}:1: #if for an operating system outside platform/\n"),
            (source, "#if 1 // not for _WIN32\n#endif\n", ""),
            (source, "#include <unistd.h>\n", f"{source}:1: header of the system <unistd.h> outside platform/\n"),
            (source, "#include <sys/stat.h>\n", f"{source}:1: header of the system <sys/stat.h> outside platform/\n"),
            (source, "#include <zlib.h>\n", ""),
            (string, "#include <zlib.h>\n", f"{string}:1: header of the system <zlib.h> outside platform/\n"),
            (source, '#include "elsewhere.h"\n', f'{source}:1: no floor has "elsewhere.h"\n'),
            ("include/qxlost.h", "", "include/qxlost.h:1: is in no floor's list\n"),
            ("source/qxbase/core/lost.cpp", "", "source/qxbase/core/lost.cpp:1: is in no floor's list\n"),
            (source, None, "source/qxbase/core/CMakeLists.txt:2: qxstring.cpp is missing\n"),
            ("include/qxbase.h", '#include "qxconfig.h"\n#include "qxstring.h"\n#include "qxxml.h"\n',
             "include/qxbase.h:1: does not include qxlist.h\n"),
            ("include/qxxml.h", None, "source/qxbase/xml/CMakeLists.txt:1: qxxml.h is missing\n"
             'include/qxbase.h:4: no floor has "qxxml.h"\n'
             'source/qxbase/xml/qxxml.cpp:1: no floor has "qxxml.h"\n'),
        ]
        for name, text, expected in rows:
            with self.subTest(file=name, text=text):
                self.assertEqual(faults_of({name: text}), expected)

    def test_prints_the_faults_and_ends_with_status_1(self):
        with tempfile.TemporaryDirectory() as folder:
            lay_out(folder, {"include/qxlost.h": ""})
            run = subprocess.run([sys.executable, SCRIPT, folder], capture_output=True, text=True)
        self.assertEqual((run.returncode, run.stdout), (1, "include/qxlost.h:1: is in no floor's list\n"))


if __name__ == "__main__":
    unittest.main()
