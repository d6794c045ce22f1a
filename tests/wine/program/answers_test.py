"""The window answers, and input waits, while the server says nothing."""

import time
import unittest

from windows_case import WindowsCase

from fault_server import silent, slow
from server_files import FIRMWARE, VERSION
from side_by_side import side_by_side

SILENCE = 30  # seconds that the program waits for a server


class LivingWindow(WindowsCase):
    def start_asking(self, behaviour):
        """The program, waiting for the first file it asks for."""
        self.serve("usb-version.txt", behaviour)
        program = self.start()
        program.wait_until(lambda: "usb-version.txt" in self.downloads(), what="a request")
        return program

    def expect_answers(self, program):
        longest = program.longest_answer(3)
        print(f"{self.id().rsplit('.', 1)[-1]}: the window's longest answer took {longest:.2f} s", flush=True)
        self.assertLess(longest, SILENCE / 10)

    def expect_end(self, program):
        """Long before the silence is over."""
        begin = time.monotonic()
        self.assertEqual(program.exit_status(), 0)
        self.assertLess(time.monotonic() - begin, SILENCE / 2)
        self.assertTrue((program.folder / "Settings.ini").exists())

    def test_a_silent_server(self):
        program = self.start_asking(silent())
        self.expect_answers(program)
        text = program.wait_for("prgUpdate", "text", lambda text: text.startswith("Server antwortet nicht"))
        self.assertRegex(text, r"^Server antwortet nicht, warte noch \d\d s$")
        checked = program.get("chkAuto")["checked"]
        program.focus("chkAuto")
        program.type("", "Space")
        self.expect_answers(program)
        self.assertEqual(program.get("chkAuto")["checked"], checked)
        program.close()
        self.expect_end(program)
        self.assertIn(f"chkAuto={int(not checked)}", (program.folder / "Settings.ini").read_text(encoding="cp1252"))

    def test_a_server_that_falls_silent_in_the_firmware(self):
        self.serve("sr200.abs.txt", silent(FIRMWARE[:6000], 20000))
        program = self.start_loaded()
        self.confirm(program)
        program.wait_for("prgUpdate", "text", lambda text: text.startswith("Server antwortet nicht"))
        self.expect_answers(program)
        program.close()
        self.expect_end(program)
        self.expect_stick({})

    def test_a_byte_a_second(self):
        program = self.start_asking(slow(VERSION * 30, 1, 1.0))
        self.expect_answers(program)
        program.close()
        self.expect_end(program)

    def test_the_end_of_the_session(self):
        program = self.start_asking(silent())
        program.request("endSession")
        self.expect_end(program)


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
