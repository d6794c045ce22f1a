#!/usr/bin/env python3
"""Prints the program's version, which CMakeLists.txt alone spells."""

import re
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent


def program_version(root=ROOT):
    return re.search(r"^project\(\S+ VERSION ([\d.]+)", (root / "CMakeLists.txt").read_text(), re.MULTILINE)[1]


if __name__ == "__main__":
    print(program_version())
