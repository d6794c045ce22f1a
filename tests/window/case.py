"""What the tests of the real window share: a stick, an update server, a browser that only takes notes, the program.

    class Something(WindowCase):
        def test_it(self):
            self.serve("usb-news.csv", b"a;b;c;d")
            program = self.start()
            self.wait_loaded(program)

    load_tests = side_by_side

A program spends its first four seconds waiting, so the tests of a file run in threads beside each other.
"""

import hashlib
import os
import shutil
import stat
import subprocess
import sys
import tempfile
import threading
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

sys.path[:0] = [str(Path(__file__).resolve().parents[1] / folder) for folder in ("driver", "support")]

from driver import BUILD, Drive, Program  # noqa: E402
from fault_server import FaultServer, body  # noqa: E402, F401

TITLE = "Orvanta USB-Stick Internetupdate Tool 1.5"
REPORT_TITLE = "Orvanta USB-Stick Internetupdate Tool"
SHIPPED = Path(os.environ.get("USBTOOL_PROGRAM", BUILD / "program" / "orvanta-usbtool")).parent
DOWNLOADS = "/orvanta/download/"
GIB = 1024**3
MIB = 1024**2
PATIENCE = 80  # seconds: longer than any time-out of the program's, and than a busy machine takes
SIDE_BY_SIDE = 8

CONFIRMATION = "Wollen Sie updaten ?"
SUCCESS = "Update erfolgreich"
CONNECTION_ERROR = "Verbindungs-Fehler"

ERRORS = {
    5: "Ungültiger Prozeduraufruf oder ungültiges Argument",
    6: "Überlauf",
    9: "Index außerhalb des gültigen Bereichs",
    13: "Typen unverträglich",
    53: "Datei nicht gefunden",
    61: "Datenträger voll",
    70: "Zugriff verweigert",
    71: "Datenträger nicht bereit",
    75: "Fehler beim Zugriff auf Pfad/Datei",
    76: "Pfad nicht gefunden",
    481: "Ungültiges Bild",
    730: "Steuerelement nicht gefunden",
}

# Every byte value, among them NUL and those that Windows-1252 leaves undefined, in more than one read of 2048 bytes.
FIRMWARE = bytes(range(256)) * 40
SETTINGS = bytes(range(255, -1, -1)) * 20
VERSION = b"1.5"
NEWS = "Neu: der SR 900;Weiß und Grau für 199 €;Größere Schrift;Fragen?".encode("cp1252")


def row(name="", picture="", firmware="", date="", note="", settings=None):
    """One line of the catalog; `settings` maps a kind (0 Austria .. 4 Spain) to (file, date)."""
    fields = [name, picture, firmware, date, note]
    for kind in range(5):
        fields += (settings or {}).get(kind, ("", ""))
    return ";".join(fields)


ROWS = [
    row("SR 100", "sr100.bmp"),
    row("SR 200 CI", "sr200ci.gif", "sr200.abs", "14.03.2026 (V1.32)", "Größere Schrift",
        {0: ("sr200_at.sdx", "02.09.2026"), 1: ("sr200_de.sdx", "28.08.2026"), 4: ("sr200_es.sdx", "11.06.2026")}),
    row("SR 300 PVR", "sr300pvr.jpg", "sr300.abs", "22.04.2026 (V2.07)", "Neue Timer",
        {1: ("sr300_de.sdx", "19.07.2026")}),
    row("SR 400 Twin", "sr400twin.gif", "sr400.abs", "09.01.2026 (V1.18)", "Zweiter Tuner"),
    row("SR 500 HD", "sr500hd.jpg"),
    row("SR 600 HD CI", "sr600hdci.ico", "sr600.abs", "30.06.2026 (V1.05)", "Kürzere Startzeit",
        {2: ("sr600_it.sdx", "01.01.2026"), 3: ("sr600_fr.sdx", "01.02.2026")}),
    row("SR 700 HD Twin", "sr700hdtwin.jpg"),
    row("SR 800 HD PVR", "sr800hdpvr.bmp"),
    row("SR 900 UHD", "sr900uhd.jpg"),
]


def catalog(rows=None, changes=None):
    """The catalog's bytes; `changes` maps the number of a row to another one."""
    lines = list(rows or ROWS)
    for number, line in (changes or {}).items():
        lines[number] = line
    return "\r\n".join(lines).encode("cp1252")


def snapshot(folder):
    """{path below it: what is there, to the last byte}."""
    found = {}
    for path in sorted(Path(folder).rglob("*")):
        kind = path.lstat().st_mode
        if stat.S_ISLNK(kind):
            content = ("link", os.readlink(path))
        elif stat.S_ISREG(kind):
            content = ("file", path.lstat().st_size, hashlib.sha256(path.read_bytes()).hexdigest())
        else:
            content = (stat.S_IFMT(kind),)
        found[path.relative_to(folder).as_posix()] = content
    return found


def contents(folder):
    """{path below it: bytes} of all files."""
    return {path.relative_to(folder).as_posix(): path.read_bytes() for path in Path(folder).rglob("*") if path.is_file()}


class PatientProgram(Program):
    """The program, asked by somebody who waits longer than its longest silence."""

    def request(self, what, timeout=PATIENCE, **arguments):
        return super().request(what, timeout, **arguments)

    def _until(self, condition, timeout, complaint):
        return super()._until(condition, max(timeout, PATIENCE), complaint)

    def exit_status(self, timeout=PATIENCE):
        return super().exit_status(timeout)

    def restart(self):
        """Once more in the same folder, after the first run has ended."""
        for closing in (self._stream, self._socket, self._output):
            closing.close()
        self.start()


class WindowCase(unittest.TestCase):
    """A stick, a server whose files are all as they should be, and programs that end with the test."""

    maxDiff = None

    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="usbtool-window-")
        self.addCleanup(temporary.cleanup)
        self.home = Path(temporary.name)
        self.stick = self.home / "stick"
        self.system = self.home / "system"  # what stands for the drives C: and Z:
        for folder in (self.stick, self.system, self.home / "bin"):
            folder.mkdir()
        (self.system / "canary.txt").write_bytes(b"untouched")
        self._make_browser()
        self.server = FaultServer()
        self.addCleanup(self.server.stop)
        self.serve_all()

    # The server

    def serve(self, name, behaviour):
        """What the server answers for a file of its download folder: bytes or a behaviour of the fault server."""
        self.server.set(DOWNLOADS + name, behaviour)

    def serve_all(self):
        self.serve("usb-version.txt", VERSION)
        self.serve("usb-news.csv", NEWS)
        self.serve("usb-list.csv", catalog())
        for line in ROWS:
            fields = line.split(";")
            for name in fields[2:3] + fields[5::2]:
                if name:
                    self.serve(name + ".txt", FIRMWARE if name.endswith(".abs") else SETTINGS)

    def downloads(self):
        """The names that were asked of the server, oldest first."""
        return [path.removeprefix(DOWNLOADS) for path in self.server.paths()]

    # The browser

    def _make_browser(self):
        browser = self.home / "bin" / "xdg-open"
        browser.write_text('#!/bin/sh\nprintf "%s\\n" "$1" >> "$(dirname "$0")/opened"\n')
        browser.chmod(0o755)

    def opened(self):
        """Addresses and folders that were opened, oldest first."""
        notes = self.home / "bin" / "opened"
        return notes.read_text(encoding="utf-8").splitlines() if notes.exists() else []

    # The program

    def drives(self, **stick):
        """C:, the stick as E:, and Z:, which is never looked at. No stick with `stick=None`."""
        table = [Drive("C", 3, self.system)]
        if stick.pop("stick", True) is not None:
            values = {"label": "ORVANTA", "file_system": "FAT32", "total": 4 * GIB, "path": self.stick} | stick
            path = values.pop("path")
            table.append(Drive("E", 2, path, **values))
        return table + [Drive("Z", 4, self.system)]

    def start(self, drives=None, server=None, files=None, **arguments):
        """The program with a stick and the server; it is stopped when the test ends, if it has not ended by then."""
        environment = {"PATH": f"{self.home / 'bin'}:{os.environ['PATH']}"} | arguments.pop("environment", {})
        program = PatientProgram(drives=self.drives() if drives is None else drives,
                                 server=self.server.url() if server is None else server, files=files,
                                 environment=environment, **arguments)
        self.addCleanup(self._stop, program)
        return program

    def _stop(self, program):
        status = program.process.poll() if program.process is not None else None
        output = program.output()
        program.stop()
        if status is not None:
            self.assertIn(status, (0, 1), f"not a way to end:\n{output}")
        self.assertNotIn("terminate called", output)
        self.assertNotIn("ERROR: AddressSanitizer", output)
        self.assertNotIn("runtime error", output)

    def wait_loaded(self, program):
        program.wait_for("StatusBar1_2", "text", "Updates geladen.")

    def start_loaded(self, **arguments):
        program = self.start(**arguments)
        self.wait_loaded(program)
        return program

    def confirm(self, program):
        """Presses the main button and agrees."""
        program.click("cmdChoose")
        program.wait_message(title=CONFIRMATION)
        program.answer("OK")

    def run_job(self, program):
        """The whole job, to the end of its message."""
        self.confirm(program)
        program.wait_message(title=SUCCESS)
        program.answer("OK")

    def close(self, program):
        program.close()
        self.assertEqual(program.exit_status(), 0, program.output())

    def drop_message(self, program, title, text, icon, buttons=("OK",)):
        """The open message box is exactly this; then its first button is pressed."""
        box = program.wait_message()
        self.assertEqual((box["title"], box["text"], box["icon"], tuple(box["buttons"])), (title, text, icon, buttons))
        self.assertTrue(box["plainText"])
        program.answer(buttons[0])

    def expect_error(self, program, number):
        """The one report of that error is shown, and then the program ends with status 1, settings not saved."""
        settings = program.folder / "Settings.ini"
        before = settings.read_bytes() if settings.is_file() else None
        box = program.wait_message()
        self.assertEqual((box["title"], box["icon"], box["buttons"]), (REPORT_TITLE, 16, ["OK"]), box)
        self.assertEqual(box["text"].splitlines()[0], f"Laufzeitfehler '{number}':", box)
        self.assertIn(ERRORS[number], box["text"])
        program.answer("OK")
        self.assertEqual(program.exit_status(), 1, program.output())
        self.assertEqual(settings.read_bytes() if settings.is_file() else None, before)

    # The stick

    def expect_stick(self, expected):
        """The stick holds exactly these files; names alone mean the files that ship with the program."""
        shipped = {name: (SHIPPED / name).read_bytes() for name, bytes_ in expected.items() if bytes_ is None}
        self.assertEqual(snapshot_of({**expected, **shipped}), snapshot_of(contents(self.stick)))

    def mount(self, *options, kind="tmpfs"):
        """A file system of its own as the stick's folder; the test is skipped where that is not allowed."""
        if os.geteuid() != 0:
            self.skipTest("only root can mount a file system")
        result = subprocess.run(["mount", "-t", kind, "-o", ",".join(options), "usbtool", self.stick],
                                capture_output=True, text=True, check=False)
        if result.returncode != 0:
            self.skipTest(f"this machine does not mount {kind}: {result.stderr.strip()}")
        self.addCleanup(subprocess.run, ["umount", "-l", self.stick], check=True)

    def remount(self, *options):
        subprocess.run(["mount", "-o", "remount," + ",".join(options), self.stick], check=True)

    def pull_stick(self):
        """As far as files go: the folder is gone."""
        shutil.rmtree(self.stick)


def snapshot_of(files):
    """Sizes and checksums: shorter to read than the bytes when they differ."""
    return {name: (len(data), hashlib.sha256(data).hexdigest()) for name, data in files.items()}


# Running the tests of a file beside each other


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
