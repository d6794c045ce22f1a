"""The keyboard, a real one."""

import unittest

from windows_case import WindowsCase, only

import keys_test as shared
from side_by_side import side_by_side


class InputMethod(WindowsCase, only(shared.InputMethod, "test_a_path")):
    pass


class Enter(WindowsCase, shared.Enter):
    def wait_label(self, program, label):
        program.wait_until(lambda: self.label() == label, what="the new name")

    def input_done(self, program):
        self.mark_of_input(program)


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
