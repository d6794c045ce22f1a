"""Runs the tests of a file beside each other: a program spends its first four seconds waiting.

    class Something(Tables, unittest.TestCase):
        @each({"one": 1, "two": 2})
        def test_number(self, number):
            ...

    load_tests = side_by_side
"""

import threading
import unittest
from concurrent.futures import ThreadPoolExecutor

SIDE_BY_SIDE = 8  # threads


def each(table):
    """Makes one test for every entry of a table {label: arguments}, so that each is run and told of by itself."""

    def mark(method):
        method.table = table
        return method

    return mark


def _test_of(method, entry):
    arguments = entry if isinstance(entry, tuple) else (entry,)
    return lambda self: method(self, *arguments)


class Tables:
    """Base of test cases whose methods are marked with `each`."""

    def __init_subclass__(cls, **arguments):
        super().__init_subclass__(**arguments)
        for name, method in list(vars(cls).items()):
            if not hasattr(method, "table"):
                continue
            delattr(cls, name)
            for number, (label, entry) in enumerate(method.table.items()):
                words = "".join(c if c.isalnum() else "_" for c in label)
                setattr(cls, f"{name}_{number:02}_{words}", _test_of(method, entry))


class Notes(unittest.TestResult):
    """Keeps what happens to one test, to tell it in one go."""

    KINDS = ("startTest", "stopTest", "addSuccess", "addError", "addFailure", "addSkip", "addExpectedFailure",
             "addUnexpectedSuccess", "addSubTest")

    def __init__(self):
        super().__init__()
        self.calls = []

    def tell(self, result):
        for kind, arguments in self.calls:
            getattr(result, kind)(*arguments)


def _noting(kind):
    def note(self, *arguments):
        getattr(unittest.TestResult, kind)(self, *arguments)
        self.calls.append((kind, arguments))

    return note


for _kind in Notes.KINDS:
    setattr(Notes, _kind, _noting(_kind))


class SideBySide(unittest.TestSuite):
    """Runs its tests in threads; each is reported when it is done."""

    def run(self, result, debug=False):
        lock = threading.Lock()

        def run_one(test):
            notes = Notes()
            test(notes)
            with lock:
                notes.tell(result)

        with ThreadPoolExecutor(SIDE_BY_SIDE) as threads:
            list(threads.map(run_one, self))
        return result


def _tests_of(suite):
    for test in suite:
        if isinstance(test, unittest.TestSuite):
            yield from _tests_of(test)
        else:
            yield test


def side_by_side(_loader, tests, _pattern):
    return SideBySide(_tests_of(tests))
