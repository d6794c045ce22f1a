"""Every way to end, at bad moments. What is on the stick stays, the process says 0 or 1 and is gone."""

import os
import signal
import threading
import unittest

from case import CONFIRMATION, COPIED, SUCCESS, TITLE, WindowCase
from server_files import FIRMWARE, SETTINGS
from side_by_side import each, side_by_side

LARGE = FIRMWARE * 2000  # takes minutes by the trickle below
SAVED = b"[USB Tool]\r\nchkAuto=0\r\ncmbSize=0\r\n"


class Endings(WindowCase):
    def expect_saved_end(self, program):
        self.assertEqual(program.exit_status(), 0, program.output())
        self.assertEqual((program.folder / "Settings.ini").read_bytes(), SAVED)

    def setUp(self):
        super().setUp()
        self.hurry = threading.Event()

    def trickle(self, handler):
        """LARGE, a read's worth at a time, until the test is in a hurry."""
        handler.send_head(len(LARGE))
        sent = 0
        while not self.hurry.is_set():
            handler.wfile.write(LARGE[sent : sent + 2048])
            sent += 2048
            if handler.server.stopping.wait(0.02):
                return
        handler.wfile.write(LARGE[sent:])

    def start_download(self, slow_file, panel):
        """A job in the middle of a file."""
        self.serve(slow_file, self.trickle)
        program = self.start_loaded()
        self.confirm(program)
        program.wait_for("StatusBar1_2", "text", lambda text: text.startswith(panel))
        return program


class MidDownload(Endings):
    def test_closed_during_the_firmware(self):
        program = self.start_download("sr200.abs.txt", "Firmware-Update .")
        self.assertEqual(program.get("StatusBar1_2")["toolTip"], "Firmwareupdate läuft...")
        program.close()
        self.expect_saved_end(program)
        self.expect_stick({})

    def test_closed_during_the_channel_list(self):
        program = self.start_download("sr200_at.sdx.txt", "Settings-Update .")
        self.assertEqual(program.get("StatusBar1_2")["toolTip"], "Settingsupdate läuft...")
        program.close()
        self.expect_saved_end(program)
        self.expect_stick({"sr200.abs": FIRMWARE})

    def test_told_to_end_during_the_firmware(self):
        program = self.start_download("sr200.abs.txt", "Firmware-Update .")
        program.terminate()
        self.expect_saved_end(program)
        self.expect_stick({})

    def test_closed_with_a_question(self):
        program = self.start_download("sr200.abs.txt", "Firmware-Update .")
        program.enter_text("txtOpenPath", "Musik")
        program.close()
        program.wait_message(title=TITLE)
        program.answer("Ja")
        self.expect_saved_end(program)
        self.expect_stick({"USB.ini": b"[Open]\r\nDir=Musik\r\n"})

    def test_an_error_in_a_handler_inside_of_the_download(self):
        program = self.start_download("sr200.abs.txt", "Firmware-Update .")
        program.write("sr300pvr.jpg", None)
        program.click("Firm_Option_2")
        self.expect_error(program, 53)
        self.expect_stick({})


class SecondClick(Endings):
    WRITTEN = {"sr200.abs": LARGE, "sr200_at.sdx": SETTINGS} | COPIED

    def start_second(self):
        program = self.start_download("sr200.abs.txt", "Firmware-Update .")
        self.assertTrue(program.get("cmdChoose")["enabled"])
        program.click("cmdChoose")
        program.wait_message(title=CONFIRMATION)
        return program

    def expect_success(self, program):
        program.wait_message(title=SUCCESS)
        program.answer("OK")

    def test_cancelled(self):
        program = self.start_second()
        program.answer("Abbrechen")
        self.hurry.set()
        self.expect_success(program)
        self.expect_stick(self.WRITTEN)
        self.close(program)

    def test_a_second_job_inside_of_the_first(self):
        program = self.start_second()
        self.hurry.set()
        program.answer("OK")
        self.expect_success(program)
        self.expect_success(program)
        self.expect_stick(self.WRITTEN)
        self.close(program)

    def test_what_was_confirmed_is_what_is_written(self):
        self.serve("sr300.abs.txt", b"of another receiver")
        program = self.start_download("sr200.abs.txt", "Firmware-Update .")
        program.click("Firm_Option_2")
        program.wait_for("Firm_Option_2", "checked", True)
        self.hurry.set()
        self.expect_success(program)
        self.expect_stick(self.WRITTEN)


class BehindABox(Endings):
    def test_closed_during_the_confirmation(self):
        program = self.start_loaded()
        program.click("cmdChoose")
        program.wait_message(title=CONFIRMATION)
        program.close("frmMain")
        self.expect_saved_end(program)
        self.expect_stick({})

    def test_told_to_end_during_the_confirmation(self):
        program = self.start_loaded()
        program.click("cmdChoose")
        program.wait_message(title=CONFIRMATION)
        program.terminate()
        self.expect_saved_end(program)
        self.expect_stick({})

    def test_told_to_end_during_the_success_message(self):
        program = self.start_loaded()
        self.confirm(program)
        program.wait_message(title=SUCCESS)
        program.terminate()
        self.expect_saved_end(program)
        self.assertEqual(self.opened(), [])

    def test_told_to_end_during_the_version_message(self):
        self.serve("usb-version.txt", b"2.0")
        program = self.start()
        program.wait_message(title="Version abgelaufen.")
        program.terminate()
        self.expect_saved_end(program)

    def test_told_to_end_during_the_closing_question(self):
        program = self.start()
        program.enter_text("txtOpenPath", "Musik")
        program.close()
        program.wait_message(title=TITLE)
        program.terminate()
        program.close()
        self.assertEqual(program.wait_message()["title"], TITLE)  # it is asked once, and asked still
        program.answer("Nein")
        self.expect_saved_end(program)
        self.expect_stick({})


class Idle(Endings):
    @each({"hung up": signal.SIGHUP, "interrupted": signal.SIGINT, "terminated": signal.SIGTERM})
    def test_signals(self, number):
        """Of a terminal that goes away, of its user, of the session."""
        if signal.getsignal(number) == signal.SIG_IGN:
            self.skipTest("these tests run without a terminal, and so does the program")
        program = self.start_loaded()
        program.terminate(number)
        self.expect_saved_end(program)

    def test_told_to_end(self):
        program = self.start_loaded()
        program.terminate()
        self.expect_saved_end(program)

    def test_told_to_end_before_the_check(self):
        program = self.start()
        program.wait_window("frmMain")
        program.terminate()
        self.expect_saved_end(program)
        self.assertEqual(self.downloads(), [])

    def test_told_to_end_with_a_question(self):
        program = self.start()
        program.enter_text("txtOpenPath", "Musik")
        program.terminate()
        program.wait_message(title=TITLE)
        program.answer("Ja")
        self.expect_saved_end(program)
        self.expect_stick({"USB.ini": b"[Open]\r\nDir=Musik\r\n"})

    def test_the_escape_key_does_not_end_it(self):
        program = self.start()
        program.wait_window("frmMain")
        program.type("", "Escape")
        self.wait_loaded(program)


class Unheard(Endings):
    """What the standard error output leads to has ended: "orvanta-usbtool 2>&1 | head -1"."""

    def start_unheard(self, files, folder=None):
        program = self.start(start=False, files=files)
        if folder is not None:
            (program.folder / folder).mkdir()
        reader, program.error_output = os.pipe()
        os.close(reader)
        program.start()
        os.close(program.error_output)
        return program

    def test_a_missing_service(self):
        program = self.start_unheard({"Drives.ini": None})
        program.wait_for("StatusBar1_1", "text", "No Stick")
        program.close()
        self.expect_saved_end(program)

    def test_settings_that_cannot_be_saved(self):
        program = self.start_unheard({}, folder="Settings.ini")
        self.wait_loaded(program)
        program.close()
        self.assertEqual(program.exit_status(), 0)


class Report(Endings):
    """After an error nothing of the program happens any more but its end."""

    def start_report(self):
        program = self.start_loaded()
        program.write("sr300pvr.jpg", b"no picture")
        program.click("Firm_Option_2")
        program.wait_message()
        return program

    def test_nothing_happens_behind_it(self):
        program = self.start_report()
        box = program.message()
        for name in ("cmdChoose", "Firm_Option_5", "cmdSearch"):
            program.click(name)
        program.close("frmMain")
        self.assertEqual(program.message(), box)
        self.assertEqual(program.text("lbl_firmstand"), "Stand: 14.03.2026 (V1.32)")
        self.expect_error(program, 481)
        self.expect_stick({})

    def test_told_to_end_during_it(self):
        program = self.start_report()
        program.terminate()
        program.wait_until(program.message)
        self.expect_error(program, 481)

    def test_closed_with_the_escape_key(self):
        program = self.start_report()
        program.type("", "Escape")
        self.assertEqual(program.exit_status(), 1)
        self.assertFalse((program.folder / "Settings.ini").exists())

    def test_settings_keep_what_they_were(self):
        settings = b"[USB Tool]\r\nchkAuto=0\r\ncmbSize=1\r\nsomething=else\r\n"
        program = self.start_loaded(files={"Settings.ini": settings})
        program.choose("cmbSize", 0)
        program.write("sr300pvr.jpg", None)
        program.click("Firm_Option_2")
        self.expect_error(program, 53)
        self.assertEqual((program.folder / "Settings.ini").read_bytes(), settings)


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
