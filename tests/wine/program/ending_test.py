"""Every way to end, at bad moments."""

import unittest

from windows_case import WindowsCase, without

import endings_test as shared
from side_by_side import side_by_side


class MidDownload(WindowsCase, shared.MidDownload):
    pass


class SecondClick(WindowsCase, shared.SecondClick):
    pass


class BehindABox(WindowsCase, shared.BehindABox):
    pass


class Idle(WindowsCase, without(shared.Idle, "test_signals")):
    pass


class Report(WindowsCase, shared.Report):
    pass


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
