"""What the tests of the Windows program share: those of the Linux program are used where both have to do the same.

    import typical_run_test as shared

    class Job(WindowsCase, shared.Job):
        pass
"""

import os
import sys
import threading
from pathlib import Path

TESTS = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(TESTS / folder) for folder in ("driver", "support", "window")]

from case import SHIPPED, WindowCase, contents, snapshot_of  # noqa: E402
from driver import Drive  # noqa: E402
from window import DriverError, ProgramEnded  # noqa: E402
from windows_program import WindowsProgram  # noqa: E402
from wine_machine import TOOLS, Machines  # noqa: E402

MACHINES = int(os.environ.get("USBTOOL_MACHINES", "6"))  # how many tests run beside each other
PATIENCE = float(os.environ.get("USBTOOL_PATIENCE", "60"))  # seconds: longer than what a busy machine takes
LABEL = ".windows-label"  # where Wine keeps the label of a folder that is a drive

_machines = None
_lock = threading.Lock()


def machines():
    global _machines
    with _lock:
        if _machines is None:
            _machines = Machines(MACHINES)
        return _machines


class PatientProgram(WindowsProgram):
    """The program, asked by somebody who waits longer than its longest silence."""

    def _until(self, condition, timeout, complaint):
        """A window may just be going, or coming, while it is asked."""
        refusals = []

        def patiently():
            try:
                return condition()
            except ProgramEnded:
                raise
            except DriverError as error:
                refusals[:] = [str(error)]
                return None

        return super()._until(patiently, PATIENCE, lambda: " ".join([complaint(), *refusals]))

    def exit_status(self, timeout=None):
        return super().exit_status(PATIENCE if timeout is None else timeout)


class WindowsCase(WindowCase):
    """A machine for each test; its programs run on it one after the other."""

    def setUp(self):
        super().setUp()
        self.machine = machines().acquire()
        self.addCleanup(machines().release, self.machine)

    def _stop(self, program):
        result = self._outcome.result
        if any(test is self for test, _ in result.failures + result.errors):
            self._take_picture("failed-" + self.id())
        super()._stop(program)

    def start(self, drives=None, server=None, files=None, environment=None, start=True, **arguments):
        arguments.pop("screen", None)
        path = f"{self.home / 'bin'}:{os.environ['PATH']}"
        program = PatientProgram(self.machine, drives=self.drives() if drives is None else drives,
                                 server=self.server.url() if server is None else server, files=files,
                                 environment={"PATH": path} | (environment or {}), start=False, **arguments)
        self.addCleanup(self._stop, program)
        if start:
            program.start()
        return program

    def stick_files(self, folder=None):
        """{path: bytes} of what is on the stick."""
        return {name: data for name, data in contents(folder or self.stick).items() if name != LABEL}

    def expect_stick(self, expected):
        shipped = {name: (SHIPPED / name).read_bytes() for name, bytes_ in expected.items() if bytes_ is None}
        self.assertEqual(snapshot_of({**expected, **shipped}), snapshot_of(self.stick_files()))

    def program_path(self, program, name):
        return f"\\{name}"

    def stick_path(self, name):
        return f"E:\\{name}"

    def label(self, folder=None):
        path = (folder or self.stick) / LABEL
        return path.read_bytes().decode().rstrip("\n") if path.exists() else ""

    def picture(self, program, name, window=None):
        """A picture to look at; no test depends on it."""
        self._take_picture(name)

    def _take_picture(self, name):
        folder = Path(os.environ.get("USBTOOL_PICTURES", TOOLS / "pictures"))
        folder.mkdir(parents=True, exist_ok=True)
        self.machine.screenshot(folder / f"{name}.png")

    def mark_of_input(self, program):
        """Input is dealt with in its order: when this box has changed, everything before it has had its effect."""
        checked = program.get("chkAuto", "frmMain")["checked"]
        program.click("chkAuto", "frmMain")
        program.wait_for("chkAuto", "checked", not checked, window="frmMain")


class WindowsSticksCase(WindowsCase):
    """Sticks by letter, in front of a case of the tests with several of them."""

    def wait_stick(self, program, letter):
        program.wait_for("txtDT_Cap", "text", f"STICK {letter}", window="frmMain")
        self.expect(program, {"StatusBar1_1.text": "USB Stick", "StatusBar1_1.enabled": True,
                              "StatusBar1_1.toolTip": "USB-Stick gefunden.", "lblLW.text": f"{letter}:\\",
                              "txtFAT.text": "NTFS"})


def only(case, *names):
    """A case of the Linux program's tests, of which these suit Windows, too."""
    others = [name for name in dir(case) if name.startswith("test_") and not name.startswith(names)]
    return type(case.__name__, (case,), dict.fromkeys(others))


def without(case, *names):
    """A case of the Linux program's tests, but for what Windows or this machine cannot do."""
    left_out = [name for name in dir(case) if name.startswith("test_") and name.startswith(names)]
    return type(case.__name__, (case,), dict.fromkeys(left_out))


__all__ = ["TOOLS", "Drive", "LABEL", "PatientProgram", "WindowsCase", "WindowsSticksCase", "only", "without"]
