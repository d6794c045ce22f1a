"""A server that accepts the connection and then says nothing: 30 seconds later the program goes on."""

import time
import unittest

from case import CONNECTION_ERROR, COPIED, SLOWNESS, SUCCESS, WindowCase
from fault_server import silent, slow
from server_files import FIRMWARE, SETTINGS, VERSION
from side_by_side import side_by_side

SILENCE = 30
IDLE = 0.05  # of a processor: what waiting may cost


class Silent(WindowCase):
    def expect_word(self, program):
        """The window lives, and tells how long it will still wait."""
        text = program.wait_until(lambda: self.word(program), what="a word about the silence")
        self.assertRegex(text, r"^Server antwortet nicht, warte noch (2[0-5]|1\d) s$")
        program.wait_until(lambda: self.word(program) not in ("", text), what="the next second")

    @staticmethod
    def word(program):
        text = program.get("prgUpdate")["text"]
        return text if text.startswith("Server antwortet nicht") else ""

    def stopwatch(self):
        """A function that tells whether the time-out has passed since now, and not much more."""
        begin = time.monotonic()

        def check():
            self.assertGreaterEqual(time.monotonic() - begin, SILENCE)
            self.assertLess(time.monotonic() - begin, SILENCE + 25)

        return check

    def test_at_the_start(self):
        self.serve("usb-version.txt", silent())
        program = self.start()
        check = self.stopwatch()
        self.expect_word(program)
        box = program.wait_message(title=CONNECTION_ERROR)
        check()
        self.assertEqual(program.get("prgUpdate")["text"], "")
        self.assertIn("Es konnte keine Internet-Verbindung hergestellt werden!", box["text"])
        program.answer("OK")
        program.wait_for("cmdChoose", "text", "Keine Verbindung")
        self.close(program)

    def test_after_half_of_the_version(self):
        self.serve("usb-version.txt", silent(VERSION[:2], 3))
        self.expect_no_connection(self.start())

    def test_in_the_middle_of_the_catalog(self):
        self.serve("usb-list.csv", silent(b"SR 100;sr100.bmp;", 3000))
        self.expect_lost_connection(self.start())

    def test_as_the_job_begins(self):
        program = self.start_loaded()
        self.serve("usb-list.csv", silent())
        check = self.stopwatch()
        self.confirm(program)
        self.expect_word(program)
        box = program.wait_message(title=CONNECTION_ERROR)
        check()
        self.assertIn("Es konnte keine Verbindung hergestellt werden!", box["text"])
        program.answer("OK")
        self.expect_stick({})
        self.close(program)

    def test_in_the_middle_of_the_firmware(self):
        self.serve("sr200.abs.txt", silent(FIRMWARE[:6000], 20000))
        program = self.start_loaded()
        check = self.stopwatch()
        self.confirm(program)
        self.expect_word(program)
        program.wait_message(title=SUCCESS)
        check()
        program.answer("OK")
        self.expect_stick({"sr200.abs": FIRMWARE[:6000], "sr200_at.sdx": SETTINGS} | COPIED)

    def test_closed_while_nothing_comes_at_the_start(self):
        self.serve("usb-version.txt", silent())
        program = self.start()
        program.wait_window("frmMain")
        self.wait_asked("usb-version.txt")
        self.expect_idle(program)
        program.terminate()
        self.expect_end(program)
        self.assertTrue((program.folder / "Settings.ini").exists())

    def expect_idle(self, program):
        """Also with a click that waits for its turn."""
        measured = 2  # seconds
        program.click("chkAuto")
        before = program.processor_seconds()
        time.sleep(measured)
        used = (program.processor_seconds() - before) / measured
        print(f"{self.id().rsplit('.', 1)[-1]}: {used:.1%} of a processor", flush=True)
        self.assertLess(used, IDLE * SLOWNESS)

    def test_closed_while_nothing_comes_of_the_firmware(self):
        self.serve("sr200.abs.txt", silent(FIRMWARE[:6000], 20000))
        program = self.start_loaded()
        self.confirm(program)
        self.wait_asked("sr200.abs.txt")
        program.terminate()
        self.expect_end(program)
        # Nothing has been written yet.
        self.expect_stick({})
        self.assertTrue((program.folder / "Settings.ini").exists())

    def test_closed_while_a_byte_a_second_comes(self):
        self.serve("usb-version.txt", slow(VERSION * 20, 1, 1.0))
        program = self.start()
        program.wait_window("frmMain")
        self.wait_asked("usb-version.txt")
        program.close()
        self.expect_end(program)

    def expect_end(self, program):
        """Long before the silence is over. How long it takes is measured where nothing else runs."""
        begin = time.monotonic()
        self.assertEqual(program.exit_status(), 0)
        self.assertLess(time.monotonic() - begin, SILENCE / 2)

    def wait_asked(self, name):
        end = time.monotonic() + 60
        while name not in self.downloads():
            self.assertLess(time.monotonic(), end, f"{name} is not asked for")
            time.sleep(0.02)


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
