"""The user guide: what opens it, and what is said when it is missing."""

import unittest
import urllib.parse

from windows_case import without

import handbook_test as shared
from assistant_test import WindowsAssistant
from side_by_side import side_by_side


class Handbook(WindowsAssistant, without(shared.Handbook, "test_a_desktop_without", "test_it_is_the_last")):
    def page(self, program):
        return str(program.folder / shared.PAGE)

    def opened(self):
        """Wine hands over files as addresses, or as paths of this machine."""
        return [urllib.parse.unquote(address).removeprefix("file://") for address in super().opened()]

    def expect_name(self, program):
        self.expect(program, {"cmdHelp.spokenName": "Hilfe", "cmdHelp.spokenDescription": "Öffnet die Anleitung (F1)"})


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
