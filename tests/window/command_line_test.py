"""What the program prints without a display, and what of its command line means nothing."""

import os
import subprocess
import unittest

from case import SHIPPED, TITLE, WindowCase
from driver import BUILD
from side_by_side import each, side_by_side

PROGRAM = os.environ.get("USBTOOL_PROGRAM", BUILD / "program" / "orvanta-usbtool")


class CommandLine(WindowCase):
    def printed(self, *arguments):
        environment = {"PATH": os.environ["PATH"], "HOME": str(self.home), "LC_ALL": "C.UTF-8"}
        before = sorted(SHIPPED.iterdir())
        result = subprocess.run([PROGRAM, *arguments], env=environment, capture_output=True, timeout=60, check=False)
        self.assertEqual((result.returncode, result.stderr), (0, b""), result)
        self.assertEqual(sorted(SHIPPED.iterdir()), before)
        return result.stdout.decode("utf-8")

    def test_the_version(self):
        self.assertEqual(self.printed("--version"), TITLE + "\n")

    def test_the_help(self):
        text = self.printed("--help")
        self.assertIn("--version", text)
        self.assertIn("öffnet", text)

    @each({"the toolkit's": ("-platform", "nosuch", "-style", "nosuch", "-stylesheet", "/nosuch", "-reverse"),
           "unknown": ("--nosuch", "-h", "E:\\")})
    def test_nothing_else_is_read(self, *arguments):
        program = self.start(start=False)
        program.arguments = arguments
        program.start()
        self.wait_loaded(program)
        self.close(program)
        self.assertEqual(program.output(), "")


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
