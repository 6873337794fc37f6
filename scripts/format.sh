#!/bin/bash
# Lays out all C++ files with clang-format; --check changes nothing and fails where a file would change.
# SPDX-License-Identifier: see LICENSE
set -u
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1

command -v clang-format >/dev/null || { echo "please install clang-format" >&2; exit 1; }
options=(-i)
if [ "${1:-}" = --check ]; then options=(--dry-run -Werror); fi
git ls-files -z --cached --others --exclude-standard '*.h' '*.cpp' | xargs -0 -r clang-format "${options[@]}"
