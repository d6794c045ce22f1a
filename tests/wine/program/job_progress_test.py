"""How far the job has come, in the status bar."""

import unittest

from windows_case import WindowsCase

import progress_test as shared


class Progress(WindowsCase, shared.Progress):
    def finish(self, program, gate):
        self.picture(program, "progress-" + self._testMethodName)
        super().finish(program, gate)


if __name__ == "__main__":
    unittest.main()
