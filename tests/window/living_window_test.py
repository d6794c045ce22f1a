"""The window is painted, and input waits, while something blocks: the stick, the name server."""

import os
import signal
import unittest

from case import COPIED, SHIPPED, SUCCESS, WindowCase
from driver import BUILD
from server_files import FIRMWARE, SETTINGS
from side_by_side import side_by_side

BLOCKED = 6  # seconds that each thing takes; a window that waited for it would not be painted for as long


class LivingWindow(WindowCase):
    def start_slow(self, server=None, **slowness):
        """The program on a system that is slow in that way."""
        environment = {f"USBTOOL_SLOW_{key.upper()}": str(value) for key, value in slowness.items()}
        environment |= {"LD_PRELOAD": str(BUILD / "tests" / "libslowness.so"), "USBTOOL_SLOW_FOLDER": str(self.stick),
                        "ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", "") + ":verify_asan_link_order=0"}
        program = self.start(environment=environment, server=server)
        program.heartbeat()
        return program

    def start_job(self, **slowness):
        program = self.start_slow(**slowness)
        self.wait_loaded(program)
        program.click("Firm_Option_1")
        program.heartbeat()
        self.confirm(program)
        return program

    def expect_alive(self, program):
        """It never waited for the whole of what blocks, and was painted again and again."""
        paints, gap = program.heartbeat()
        print(f"{self.id().rsplit('.', 1)[-1]}: longest time without being painted {gap:.2f} s", flush=True)
        self.assertLess(gap, BLOCKED / 2)
        self.assertGreater(paints, 2 * BLOCKED)

    def wait_for_panel(self, program, text):
        program.wait_for("StatusBar1_2", "text", lambda shown: shown.startswith(text))

    def expect_success(self, program):
        program.wait_message(title=SUCCESS)
        self.expect_alive(program)
        program.answer("OK")
        self.expect_stick({"sr200.abs": FIRMWARE, "sr200_at.sdx": SETTINGS} | COPIED)
        self.close(program)

    def test_a_stick_that_takes_its_time_to_sync(self):
        self.expect_success(self.start_job(sync=BLOCKED))

    def test_a_stick_that_writes_slowly(self):
        shipped = sum((SHIPPED / name).stat().st_size for name in COPIED)
        kilobytes = (len(FIRMWARE) + len(SETTINGS) + shipped) / 1000
        self.expect_success(self.start_job(write=kilobytes / BLOCKED))

    def test_what_is_clicked_while_the_stick_syncs(self):
        """It acts with the next events, as it did when the window was dead; the job is the one that was confirmed."""
        program = self.start_job(sync=BLOCKED)
        program.wait_for("prgUpdate", "text", lambda text: text.startswith("Wird auf den Stick geschrieben"))
        before = program.get("chkAuto")["checked"]
        program.click("chkAuto")
        program.click("Firm_Option_2")
        self.assertEqual(program.get("chkAuto")["checked"], before)
        self.assertFalse(program.get("Firm_Option_2")["checked"])
        program.wait_message(title=SUCCESS)
        self.assertEqual(program.get("chkAuto")["checked"], not before)
        self.assertTrue(program.get("Firm_Option_2")["checked"])
        program.answer("OK")
        self.expect_stick({"sr200.abs": FIRMWARE, "sr200_at.sdx": SETTINGS} | COPIED)
        self.close(program)

    def test_what_is_dropped_while_the_stick_syncs(self):
        """Nobody takes it: by the time somebody could, the other program does not keep it any more."""
        program = self.start_slow(sync=BLOCKED)
        self.wait_loaded(program)
        self.assertTrue(program.drop("txtDT_Cap", "Musik"))
        before = program.text("txtDT_Cap")
        self.assertIn("Musik", before)
        self.confirm(program)
        program.wait_for("prgUpdate", "text", lambda text: text.startswith("Wird auf den Stick geschrieben"))
        self.assertFalse(program.drop("txtDT_Cap", "Bilder"))
        program.wait_message(title=SUCCESS)
        self.assertEqual(program.text("txtDT_Cap"), before)

    def test_closed_while_the_stick_syncs(self):
        program = self.start_job(sync=10 * BLOCKED)
        program.wait_for("prgUpdate", "text", lambda text: text.startswith("Wird auf den Stick geschrieben"))
        program.terminate()
        self.assertEqual(program.exit_status(timeout=5 * BLOCKED), 0)
        self.assertTrue((program.folder / "Settings.ini").exists())

    def test_closed_by_somebody_who_is_impatient(self):
        program = self.start_job(sync=10 * BLOCKED)
        program.wait_for("prgUpdate", "text", lambda text: text.startswith("Wird auf den Stick geschrieben"))
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            program.terminate(number)
        self.assertEqual(program.exit_status(timeout=5 * BLOCKED), 0)
        self.assertTrue((program.folder / "Settings.ini").exists())

    def test_a_name_server_that_thinks(self):
        address = self.server.url().replace("127.0.0.1", "server.test")
        program = self.start_slow(lookup=BLOCKED, server=address)
        self.wait_loaded(program)
        self.expect_alive(program)
        self.close(program)


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
