"""A server that accepts the connection and then says nothing: 30 seconds later the program goes on."""

import time
import unittest

from case import CONNECTION_ERROR, COPIED, SUCCESS, WindowCase
from fault_server import silent
from server_files import FIRMWARE, SETTINGS
from side_by_side import side_by_side

SILENCE = 30


class Silent(WindowCase):
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
        box = program.wait_message(title=CONNECTION_ERROR)
        check()
        self.assertIn("Es konnte keine Internet-Verbindung hergestellt werden!", box["text"])
        program.answer("OK")
        program.wait_for("cmdChoose", "text", "Keine Verbindung")
        self.close(program)

    def test_after_half_of_the_version(self):
        self.serve("usb-version.txt", silent(b"1.", 3))
        self.expect_no_connection(self.start())

    def test_in_the_middle_of_the_catalog(self):
        self.serve("usb-list.csv", silent(b"SR 100;sr100.bmp;", 3000))
        self.expect_lost_connection(self.start())

    def test_as_the_job_begins(self):
        program = self.start_loaded()
        self.serve("usb-list.csv", silent())
        check = self.stopwatch()
        self.confirm(program)
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
        program.wait_message(title=SUCCESS)
        check()
        program.answer("OK")
        self.expect_stick({"sr200.abs": FIRMWARE[:6000], "sr200_at.sdx": SETTINGS} | COPIED)

    def test_closed_while_nothing_comes_at_the_start(self):
        self.serve("usb-version.txt", silent())
        program = self.start()
        program.wait_window("frmMain")
        self.wait_asked("usb-version.txt")
        program.terminate()
        self.assertEqual(program.exit_status(), 0)
        self.assertTrue((program.folder / "Settings.ini").exists())

    def test_closed_while_nothing_comes_of_the_firmware(self):
        self.serve("sr200.abs.txt", silent(FIRMWARE[:6000], 20000))
        program = self.start_loaded()
        self.confirm(program)
        self.wait_asked("sr200.abs.txt")
        program.terminate()
        self.assertEqual(program.exit_status(), 0)
        # The window hears of it when the silence is over, and before anything is written.
        self.expect_stick({})
        self.assertTrue((program.folder / "Settings.ini").exists())

    def wait_asked(self, name):
        end = time.monotonic() + 60
        while name not in self.downloads():
            self.assertLess(time.monotonic(), end, f"{name} is not asked for")
            time.sleep(0.02)


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
