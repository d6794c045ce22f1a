"""What the program prints when it is started from a console or a script."""

import subprocess
import unittest

from case import TITLE
from side_by_side import side_by_side
from windows_case import WindowsCase
from windows_program import PROGRAM
from wine_machine import WINE


class CommandLine(WindowsCase):
    def printed(self, *arguments):
        file = self.home / "printed"
        with open(file, "wb") as output:  # not a pipe: Wine's own processes would keep it open
            result = subprocess.run([WINE, str(PROGRAM), *arguments], env=self.machine.environment,
                                    stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.DEVNULL, timeout=120,
                                    check=False)
        self.assertEqual(result.returncode, 0)
        return file.read_bytes().decode("utf-8")

    def test_the_version(self):
        self.assertEqual(self.printed("--version"), TITLE + "\n")

    def test_the_help(self):
        text = self.printed("--help")
        self.assertIn("--version", text)
        self.assertIn("öffnet", text)


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
