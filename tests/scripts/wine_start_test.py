"""tests/wine/start: the kernel gives Wine and what it starts the same addresses each time."""

import os
import subprocess
import tempfile
import unittest
from pathlib import Path

START = Path(__file__).resolve().parents[1] / "wine" / "start"
NOT_RANDOM = 0x0040000  # ADDR_NO_RANDOMIZE, personality(2)


def allows_fixed_addresses():
    return subprocess.run(["setarch", "-R", "true"], stderr=subprocess.DEVNULL, check=False).returncode == 0


class WineStart(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.folder = Path(temporary.name)

    def program(self, name, text):
        (self.folder / name).write_text("#!/bin/sh\n" + text)
        (self.folder / name).chmod(0o755)

    def start(self, *arguments):
        """With a wine that does what `program` wrote. Status and output."""
        environment = os.environ | {"PATH": f"{self.folder}:{os.environ['PATH']}"}
        done = subprocess.run([START, *arguments], env=environment, capture_output=True, text=True, check=False)
        return done.returncode, done.stdout

    def test_arguments_output_and_status(self):
        self.program("wine", 'printf "[%s]" "$@"; exit 3\n')
        self.assertEqual(self.start("a b.exe", "c"), (3, "[a b.exe][c]"))

    @unittest.skipUnless(allows_fixed_addresses(), "this container does not allow it")
    def test_addresses_of_what_it_starts(self):
        self.program("wine", "sh -c 'cat /proc/self/personality'\n")
        personality = int(self.start("a.exe")[1], 16)
        self.assertEqual(personality & NOT_RANDOM, NOT_RANDOM)

    def test_where_it_is_not_allowed(self):
        self.program("wine", "echo begun\n")
        self.program("setarch", "exit 1\n")
        self.assertEqual(self.start("a.exe"), (0, "begun\n"))


if __name__ == "__main__":
    unittest.main()
