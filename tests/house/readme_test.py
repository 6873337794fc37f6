#!/usr/bin/env python3
"""The programs and build files that the README shows are those of examples/, which the tests build and run."""
# SPDX-License-Identifier: see LICENSE
import re
import unittest
from pathlib import Path

ROOT = Path(__file__).parents[2]


class Readme(unittest.TestCase):
    def test_shows_the_first_example_as_it_is(self):
        shown = re.findall(r"```(?:cmake|cpp)\n(.*?)```", (ROOT / "README.md").read_text(), re.S)
        files = [(ROOT / "examples/first" / name).read_text() for name in ("main.cpp", "CMakeLists.txt")]
        without_licence = [re.sub(r".*SPDX.*\n\n?", "", text) for text in files]
        self.assertEqual(shown, without_licence)


if __name__ == "__main__":
    unittest.main()
