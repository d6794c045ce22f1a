"""What the tests of the real window share: a stick, an update server, a browser that only takes notes, the program.

    class Something(WindowCase):
        def test_it(self):
            self.serve("usb-news.csv", b"a;b;c;d")
            program = self.start()
            self.wait_loaded(program)
"""

import errno
import hashlib
import os
import shutil
import stat
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

sys.path[:0] = [str(Path(__file__).resolve().parents[1] / folder) for folder in ("driver", "support")]

from driver import BUILD, Drive, Program  # noqa: E402
from fault_server import FaultServer  # noqa: E402

from server_files import FIRMWARE, NEWS, ROWS, SETTINGS, VERSION, catalog  # noqa: E402
from side_by_side import Tables  # noqa: E402

REPORT_TITLE = "Orvanta USB-Stick Internetupdate Tool"
TITLE = f"{REPORT_TITLE} {VERSION.decode()}"
COPIED = {"autorun.inf": None, "orvantastick.ico": None}  # onto every stick, from the program's folder
SHIPPED = Path(os.environ.get("USBTOOL_PROGRAM", BUILD / "program" / "orvanta-usbtool")).parent
DOWNLOADS = "/orvanta/download/"
GIB = 1024**3
MIB = 1024**2
SLOWNESS = int(os.environ.get("USBTOOL_SLOWNESS", "1"))  # of the build: under the sanitizers
PATIENCE = 80  # seconds: longer than any time-out of the program's, and than a busy machine takes

CONFIRMATION = "Wollen Sie updaten ?"
SUCCESS = "Update erfolgreich"
CONNECTION_ERROR = "Verbindungs-Fehler"

NO_CONNECTION = ("Es konnte keine Internet-Verbindung hergestellt werden!\n\n"
                 "Die Internet Updatefunktion kann nicht verwendet werden!\n"
                 "Prüfen Sie Ihren Internetanschluss und starten Sie das Programm später nochmal.")

ERRORS = {
    5: "Ungültiger Prozeduraufruf oder ungültiges Argument",
    6: "Überlauf",
    9: "Index außerhalb des gültigen Bereichs",
    13: "Typen unverträglich",
    48: "Fehler beim Laden einer DLL",
    53: "Datei nicht gefunden",
    57: "E/A-Fehler auf dem Gerät",
    61: "Datenträger voll",
    70: "Zugriff verweigert",
    71: "Datenträger nicht bereit",
    75: "Fehler beim Zugriff auf Pfad/Datei",
    76: "Pfad nicht gefunden",
    481: "Ungültiges Bild",
    730: "Steuerelement nicht gefunden",
}


def snapshot(folder):
    """{path below it: what is there}."""
    found = {}
    for path in sorted(Path(folder).rglob("*")):
        kind = path.lstat().st_mode
        if stat.S_ISLNK(kind):
            content = ("link", os.readlink(path))
        elif stat.S_ISREG(kind):
            content = ("file", path.lstat().st_size, _fingerprint(path))
        else:
            content = (stat.S_IFMT(kind),)
        found[path.relative_to(folder).as_posix()] = content
    return found


def _fingerprint(path):
    """A checksum, or for a file that takes long to read when it was changed last."""
    if path.lstat().st_size > MIB:
        return path.lstat().st_mtime_ns
    return hashlib.sha256(path.read_bytes()).hexdigest()


def contents(folder):
    """{path below it: bytes} of all files."""
    return {path.relative_to(folder).as_posix(): path.read_bytes()
            for path in Path(folder).rglob("*") if path.is_file()}


class PatientProgram(Program):
    """The program, asked by somebody who waits longer than its longest silence."""

    def start(self):
        super().start()
        self.wait_until(self.windows, what="a window")

    def request(self, what, timeout=PATIENCE, **arguments):
        return super().request(what, timeout, **arguments)

    def _until(self, condition, timeout, complaint):
        return super()._until(condition, max(timeout, PATIENCE), complaint)

    def exit_status(self, timeout=PATIENCE):
        return super().exit_status(timeout)


def remove(temporary):
    """A browser that the program has started may outlive it, and note its page while the folder goes."""
    try:
        temporary.cleanup()
    except OSError as error:
        if error.errno != errno.ENOTEMPTY:
            raise
        time.sleep(1)
        temporary.cleanup()


class WindowCase(Tables, unittest.TestCase):
    """A stick, a server whose files are all as they should be, and programs that end with the test."""

    maxDiff = None

    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="usbtool-window-")
        self.addCleanup(remove, temporary)
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
        """A desktop that takes a note of what it opens, and has a program for every kind of file."""
        self._make_command("xdg-open", 'printf "%s\\n" "$1" >> "$(dirname "$0")/opened"')
        self._make_command("xdg-mime", 'case "$2" in filetype) echo text/plain ;; default) echo any.desktop ;; esac')

    def _make_command(self, name, line):
        command = self.home / "bin" / name
        command.write_text(f"#!/bin/sh\n{line}\n")
        command.chmod(0o755)

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

    def start(self, drives=None, server=None, files=None, start=True, **arguments):
        """The program with a stick and the server; it is stopped when the test ends, if it has not ended by then, and
        also when nothing came of its start."""
        environment = {"PATH": f"{self.home / 'bin'}:{os.environ['PATH']}"} | arguments.pop("environment", {})
        program = PatientProgram(drives=self.drives() if drives is None else drives,
                                 server=self.server.url() if server is None else server, files=files,
                                 environment=environment, start=False, **arguments)
        self.addCleanup(self._stop, program)
        if start:
            program.start()
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

    def expect_error(self, program, number, subject=""):
        """The one report of that error is shown, and then the program ends with status 1, settings not saved."""
        settings = program.folder / "Settings.ini"
        before = settings.read_bytes() if settings.is_file() else None
        box = program.wait_message()
        self.assertEqual((box["title"], box["icon"], box["buttons"]), (REPORT_TITLE, 16, ["OK"]), box)
        self.assertEqual(box["text"].splitlines()[0], f"Laufzeitfehler '{number}':", box)
        self.assertIn(ERRORS[number], box["text"])
        self.assertIn(subject, box["text"])
        program.answer("OK")
        self.assertEqual(program.exit_status(), 1, program.output())
        self.assertEqual(settings.read_bytes() if settings.is_file() else None, before)

    def expect(self, program, expected):
        """{"control.property": value}."""
        found = {}
        for key in expected:
            name, prop = key.split(".")
            found[key] = program.get(name)[prop]
        self.assertEqual(found, expected)

    def expect_no_connection(self, program):
        self.expect_lost_connection(program)
        self.assertNotIn("usb-news.csv", self.downloads())

    def expect_lost_connection(self, program):
        self.drop_message(program, CONNECTION_ERROR, NO_CONNECTION, 16)
        program.wait_for("cmdChoose", "text", "Keine Verbindung")
        self.assertFalse(program.get("cmdChoose")["enabled"])
        panel = program.get("StatusBar1_2")
        self.assertEqual((panel["text"], panel["enabled"], panel["toolTip"]),
                         ("Keine Internetverbindung", True, "Überprüfen Sie Ihren Internetanschluss."))

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

    def write_protect(self, folder):
        """Whoever the user is; the test is skipped where that is not allowed."""
        if os.geteuid() != 0:
            folder.chmod(0o555)
            self.addCleanup(folder.chmod, 0o755)
            return
        result = subprocess.run(["mount", "--bind", folder, folder], capture_output=True, text=True, check=False)
        if result.returncode != 0:
            self.skipTest(f"this machine does not mount: {result.stderr.strip()}")
        self.addCleanup(subprocess.run, ["umount", "-l", folder], check=True)
        subprocess.run(["mount", "-o", "remount,bind,ro", folder], check=True)

    def remount(self, *options):
        subprocess.run(["mount", "-o", "remount," + ",".join(options), self.stick], check=True)

    def program_path(self, program, name):
        """The end of the path of a file in the program's folder, as people know it."""
        return f"{program.folder}/{name}"

    def stick_path(self, name):
        """A file on the stick as people know it."""
        return f"{self.stick}/{name}"

    def pull_stick(self):
        """As far as files go: the folder is gone."""
        shutil.rmtree(self.stick)


def snapshot_of(files):
    """Sizes and checksums: shorter to read than the bytes when they differ."""
    return {name: (len(data), hashlib.sha256(data).hexdigest()) for name, data in files.items()}
