#!/usr/bin/env python3
"""Runs the tests of this folder, all beside each other on a few machines: run_tests.py [-v] [name ...]

A name is one of unittest's, "dialog_test" or "dialog_test.Ways.test_a_double_click". It takes Xvfb, ImageMagick and
Wine; where the program is, and where the Wine prefixes are kept, is told by environment variables:

    USBTOOL_BUILD      build folder of the cross build, build/windows
    USBTOOL_PROGRAM    another orvanta-usbtool.exe than program/orvanta-usbtool.exe in there
    USBTOOL_WINE       folder of the prefixes, else window-prefixes in the build folder; they are made when missing
    USBTOOL_MACHINES   how many programs run beside each other
    USBTOOL_PICTURES   where pictures of the windows go
    USBTOOL_PATIENCE   seconds until something that is waited for counts as missing
"""

import importlib.util
import sys
import unittest
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE))

import windows_case  # noqa: E402, F401: it knows where the shared tests are
from side_by_side import side_by_side  # noqa: E402


def expect_own(name):
    """The shared tests come first where Python looks, so a file that is called as one of them would never be run."""
    file = Path(importlib.util.find_spec(name.split(".")[0]).origin)
    if file.parent != HERE:
        sys.exit(f"{name} is {file}; a test of {HERE} needs a name of its own.")


def main(arguments):
    verbosity = 2 if "-v" in arguments else 1
    names = [name for name in arguments if name != "-v"] or sorted(path.stem for path in HERE.glob("*_test.py"))
    for name in names:
        expect_own(name)
    loaded = unittest.TestSuite(unittest.defaultTestLoader.loadTestsFromName(name) for name in names)
    result = unittest.TextTestRunner(verbosity=verbosity).run(side_by_side(None, loaded, None))
    return 0 if result.wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
