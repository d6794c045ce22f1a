"""How far the job has come, in the status bar: from the first byte to the success box."""

import os
import re
import subprocess
import threading
import unittest

from case import CONFIRMATION, MIB, SUCCESS, WindowCase
from fault_server import body, pattern, truncated
from server_files import FIRMWARE

PIECE = 2048  # what the program reads at once
CHECKED = "Geprüft: 4 Dateien stimmen überein."


class Gate:
    """A file that comes at once as far as `sent`, then drips, and comes to its end when the gate is opened."""

    def __init__(self, content, sent, announced=True):
        self._content = content
        self._sent = sent
        self._announced = announced
        self._open = threading.Event()

    def open(self):
        self._open.set()

    def __call__(self, handler):
        handler.send_head(len(self._content) if self._announced else None)
        at = self._sent
        handler.wfile.write(self._content[:at])
        while not self._open.is_set() and not handler.server.stopping.wait(0.02):
            handler.wfile.write(self._content[at : at + PIECE])
            at += PIECE
        handler.wfile.write(self._content[at:])


class Progress(WindowCase):
    def start_job(self, gate):
        self.serve("sr200.abs.txt", gate)
        program = self.start_loaded()
        self.places = self.geometry(program)
        self.confirm(program)
        return program

    @staticmethod
    def geometry(program):
        return {name: program.get(name)["geometry"] for name in
                ("frmMain", "StatusBar1_1", "StatusBar1_2", "cmdChoose", "lbl_news_3", "cmdtest")}

    def wait_text(self, program, expression):
        def matched():
            return re.fullmatch(expression, program.text("prgUpdate"))

        return program.wait_until(matched, what=f"the text {expression}")

    def finish(self, program, gate):
        gate.open()
        program.wait_message(title=SUCCESS)
        self.assertEqual(program.text("prgUpdate"), CHECKED)
        program.answer("OK")
        self.assertEqual(program.text("prgUpdate"), CHECKED)
        self.assertEqual(self.geometry(program), self.places, "something moved")

    def test_share_amount_and_time(self):
        gate = Gate(pattern(64 * MIB), 16 * MIB)
        program = self.start_job(gate)
        # Where the first quarter takes its time, the time that is left is told at once.
        self.wait_text(program, r"Firmware 25 % \(16[.,]\d von 64[.,]0 MB(, noch etwa \d+ (s|min))?\)")
        self.assertEqual(self.geometry(program), self.places, "something moved")
        self.wait_text(program, r"Firmware 25 % \(16[.,]\d von 64[.,]0 MB, noch etwa \d+ (s|min)\)")
        self.finish(program, gate)

    def test_without_a_length_the_amount_alone(self):
        gate = Gate(pattern(4 * MIB), 3 * MIB, announced=False)
        program = self.start_job(gate)
        self.wait_text(program, r"Firmware 3[.,]\d MB")
        self.finish(program, gate)

    def test_who_does_not_agree_sees_none(self):
        program = self.start_loaded()
        program.click("cmdChoose")
        program.wait_message(title=CONFIRMATION)
        program.answer("Abbrechen")
        self.assertEqual(program.text("prgUpdate"), "")

    def test_a_download_that_ends_early_is_warned_of(self):
        self.serve("sr200.abs.txt", truncated(pattern(MIB), 64 * MIB))
        program = self.start_loaded()
        self.confirm(program)
        program.wait_message(title=SUCCESS)
        program.answer("OK")
        self.wait_text(program, r"Achtung: Firmware unvollständig \(1[.,]0 von 64[.,]0 MB\)\. "
                                r"Bitte das Update wiederholen\.")
        self.serve("sr200.abs.txt", FIRMWARE)
        self.run_job(program)
        self.assertEqual(program.text("prgUpdate"), CHECKED)

    def test_a_file_that_is_not_there_any_more_is_not_what_was_written(self):
        gate = Gate(pattern(MIB), 0)
        self.serve("sr200_at.sdx.txt", gate)
        program = self.start_loaded()
        self.confirm(program)
        self.wait_text(program, "Settings .*")
        (self.stick / "sr200.abs").unlink()
        gate.open()
        self.expect_error(program, 57, "sr200.abs")


class Launcher(WindowCase):
    """What a dock or a taskbar is told, on a session bus of the test's own."""

    def setUp(self):
        super().setUp()
        bus = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address=1"],
                               stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.addCleanup(self.end, bus)
        self.address = bus.stdout.readline().strip()
        self.notes = open(self.home / "notes", "wb")
        self.addCleanup(self.notes.close)

    @staticmethod
    def end(process):
        process.kill()
        process.communicate()

    def heard(self):
        return (self.home / "notes").read_text()

    def test_follows_the_bar(self):
        monitor = subprocess.Popen(["dbus-monitor", "--address", self.address,
                                    "interface='com.canonical.Unity.LauncherEntry'"], stdout=self.notes)
        self.addCleanup(self.end, monitor)
        gate = Gate(pattern(64 * MIB), 16 * MIB)
        self.serve("sr200.abs.txt", gate)
        program = self.start_loaded(environment={"DBUS_SESSION_BUS_ADDRESS": self.address})
        self.assertNotIn("LauncherEntry", self.heard(), "nothing has happened yet")
        self.confirm(program)
        share = re.compile(r'application://orvanta-usbtool.desktop".*?"progress"\s+variant\s+double 0\.25\d*'
                           r'.*?"progress-visible"\s+variant\s+boolean true', re.DOTALL)
        program.wait_until(lambda: share.search(self.heard()), what="a quarter")
        gate.open()
        program.wait_message(title=SUCCESS)
        program.wait_until(lambda: self.heard().rstrip().endswith("]") and
                           self.heard().rfind("boolean false") > self.heard().rfind("boolean true"), what="the end")
        program.answer("OK")


class SpoiledStick(WindowCase):
    """A stick that does not keep what it was given, which nobody sees as long as the system remembers it."""

    def setUp(self):
        super().setUp()
        self.image = self.home / "image"
        self.image.write_bytes(bytes(16 * MIB))
        subprocess.run(["mke2fs", "-q", "-F", "-t", "ext4", self.image], check=True)
        if os.geteuid() != 0:
            self.skipTest("only root can mount a file system")
        result = subprocess.run(["mount", "-o", "loop", self.image, self.stick], capture_output=True, text=True)
        if result.returncode != 0:
            self.skipTest(f"this machine does not mount an image: {result.stderr.strip()}")
        self.addCleanup(subprocess.run, ["umount", "-l", self.stick], check=True)

    def overwrite(self, wanted):
        """Behind the file system's back."""
        with open(self.image, "r+b") as image:
            found = image.read().find(wanted)
            self.assertGreater(found, 0, "it has not reached the medium")
            image.seek(found)
            image.write(bytes(len(wanted)))

    def test_is_an_error_with_the_files_name(self):
        content = os.urandom(MIB)
        gate = Gate(pattern(MIB), 0)
        self.serve("sr200.abs.txt", body(content))
        self.serve("sr200_at.sdx.txt", gate)
        program = self.start_loaded()
        self.confirm(program)
        program.wait_until(lambda: program.text("prgUpdate").startswith("Settings"), what="the channel list")
        self.overwrite(content[0x8000:0x9000])
        self.assertEqual((self.stick / "sr200.abs").read_bytes(), content, "the system has forgotten it by itself")
        gate.open()
        self.expect_error(program, 57, "sr200.abs")
        self.assertEqual(self.opened(), [])


if __name__ == "__main__":
    unittest.main()
