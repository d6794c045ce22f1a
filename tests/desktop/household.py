"""A stick, an update server, a browser that takes notes, a formatter that only plays one: those of the window tests.
The program is the finished one, without anything that tests put into it, in a desktop session."""

import subprocess
import sys
import tempfile

from report import RESULTS, ROOT

sys.path[:0] = [str(ROOT / "tests" / folder) for folder in ("driver", "support", "window")]

from assistant import ANSWER, FORMATTER, HEAD, QUESTION_TITLE, AssistantCase  # noqa: E402
from case import CONFIRMATION, COPIED, REPORT_TITLE, SUCCESS, TITLE  # noqa: E402
from driver import Program, server_ini  # noqa: E402
from fault_server import silent, slow, truncated  # noqa: E402
from server_files import FIRMWARE, SETTINGS  # noqa: E402

WORK = RESULTS / "work"
COPIED_NAMES = sorted(COPIED)
DIALOG, ASSISTANT = "USB Stick Tool", "Fat32 Format Assistent"  # titles, as are the texts of the window tests


class DesktopProgram(Program):
    """Started by the session instead of on a screen of its own; nobody is in it."""

    def __init__(self, session, **arguments):
        self._session = session
        super().__init__(**arguments)

    def environment(self):
        return self._session.environment | {name: str(value) for name, value in self._environment.items()}

    def start(self):
        self._launch([str(self.executable)], self.environment())


class Household(AssistantCase):
    """All that a run of the program needs, gone at the end of a `with` block."""

    def __init__(self, session):
        super().__init__()
        self._session = session

    firmware, list = FIRMWARE, SETTINGS  # as the server has them, for every receiver

    def runTest(self):
        """There is none: what it offers to tests is borrowed."""

    def __enter__(self):
        WORK.mkdir(parents=True, exist_ok=True)
        tempfile.tempdir = str(WORK)
        self.setUp()
        return self

    def __exit__(self, *_):
        self.doCleanups()

    def start(self, drives=None, formatter=ANSWER + "echo Done\n", environment=None, **arguments):
        files = {FORMATTER: (HEAD + formatter).encode()} | arguments.pop("files", {})
        environment = {"PATH": f"{self.home / 'bin'}:{self._session.environment['PATH']}", "USERNAME": "root"} | (
            environment or {})
        program = DesktopProgram(self._session, drives=self.drives() if drives is None else drives,
                                 server=self.server.url(), files=files, environment=environment, start=False,
                                 **arguments)
        (program.folder / FORMATTER).chmod(0o755)
        self.addCleanup(program.stop)
        program.start()
        return program

    def serve_slowly(self, name, megabytes, rate=1.0):
        """That file takes megabytes / rate seconds; a server on the other side of a thin line."""
        piece = 65536
        self.serve(name, slow(bytes(int(megabytes * 1024 * 1024)), piece, piece / (rate * 1024 * 1024)))


def ended(program):
    """The program's exit status, after it has ended."""
    try:
        return program.process.wait(30)
    except subprocess.TimeoutExpired:
        return None


__all__ = ["ASSISTANT", "CONFIRMATION", "COPIED_NAMES", "DIALOG", "FIRMWARE", "FORMATTER", "QUESTION_TITLE",
           "REPORT_TITLE", "SUCCESS", "TITLE", "DesktopProgram", "Household", "ended", "server_ini", "silent", "truncated"]
