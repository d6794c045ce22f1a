"""Sticks that come and go while the program runs."""

import threading
import time
import unittest

from case import CONFIRMATION, COPIED, SUCCESS, contents
from server_files import FIRMWARE, SETTINGS
from side_by_side import each, side_by_side
from sticks import AUTOMATIC, READY, WAITING, SticksCase

LARGE = FIRMWARE * 2000  # takes minutes by the trickle below
LONG_ENOUGH = 1.5  # seconds; a stick is noticed within a tenth of it


class DevicesCase(SticksCase):
    def expect_unchanged(self, program, name, key):
        """For longer than the program takes to notice something."""
        value = program.get(name)[key]
        end = time.monotonic() + LONG_ENOUGH
        while time.monotonic() < end:
            self.assertEqual(program.get(name)[key], value)
            time.sleep(0.05)


class OneStick(DevicesCase):
    def test_plugged_and_pulled(self):
        program = self.start_detecting()
        self.wait_loaded(program)
        self.wait_no_stick(program)
        for _ in range(3):
            self.plug(program, "E")
            self.wait_stick(program, "E")
            program.wait_for("cmdChoose", "enabled", True)
            self.expect(program, READY | {"lblHDSize.text": "4096.00"})
            self.plug(program, "")
            self.wait_no_stick(program)
            self.expect(program, WAITING | {"lblLW.text": "E:\\"})  # the letter stays in view
        self.picture(program, "main-no-stick")
        self.close(program)

    def test_replaced_by_another_one(self):
        program = self.start_detecting("E")
        self.wait_stick(program, "E")
        self.plug(program, "")
        self.wait_no_stick(program)
        self.plug(program, "F")
        self.wait_stick(program, "F")

    def test_before_the_check_for_updates(self):
        program = self.start_detecting()
        self.plug(program, "E")
        self.wait_stick(program, "E")
        self.wait_loaded(program)
        self.expect(program, READY)

    def test_its_profile_is_read(self):
        (self.folder("E") / "USB.ini").write_bytes(b"[Open]\r\nDir=\\Musik\r\n")
        program = self.start_detecting()
        self.plug(program, "E")
        program.wait_for("txtOpenPath", "text", "Musik")
        self.plug(program, "")
        program.wait_for("txtOpenPath", "text", "")

    def test_nothing_opens(self):
        program = self.start_detecting()
        self.plug(program, "E")
        self.wait_stick(program, "E")
        self.close(program)
        self.assertEqual(self.opened(), [])


class SwitchedOff(DevicesCase):
    def test_nothing_happens_until_it_is_searched(self):
        program = self.start(drives=self.table())
        self.wait_no_stick(program)
        self.plug(program, "E")
        self.expect_unchanged(program, "StatusBar1_1", "text")
        program.click("cmdSearch")
        self.wait_stick(program, "E")
        self.plug(program, "")
        self.expect_unchanged(program, "StatusBar1_1", "text")
        program.click("cmdSearch")
        self.wait_no_stick(program)

    def test_switched_on_and_off_by_the_user(self):
        program = self.start(drives=self.table())
        program.click("chkAuto")
        program.wait_for("chkAuto", "checked", True)
        self.plug(program, "E")
        self.wait_stick(program, "E")
        program.click("chkAuto")
        program.wait_for("chkAuto", "checked", False)
        self.plug(program, "")
        self.expect_unchanged(program, "StatusBar1_1", "text")
        self.close(program)
        self.assertIn(b"chkAuto=0", (program.folder / "Settings.ini").read_bytes())

    def test_the_setting_is_kept(self):
        program = self.start(drives=self.table())
        program.click("chkAuto")
        program.wait_for("chkAuto", "checked", True)
        self.close(program)
        program.restart()
        self.plug(program, "E")
        self.wait_stick(program, "E")


class SeveralSticks(DevicesCase):
    def test_one_of_two_goes(self):
        program = self.start_detecting("E")
        self.plug(program, "EF")
        program.wait_window("frmAuswahl")
        program.type("", "Return")
        program.wait_until(lambda: "frmAuswahl" not in program.windows())
        self.wait_stick(program, "E")
        self.plug(program, "E")
        self.wait_no_stick(program)  # though the one that was shown is still there
        program.click("cmdSearch")
        self.wait_stick(program, "E")

    def test_anything_that_arrives_is_a_reason_to_search(self):
        program = self.start_detecting("E")
        self.plug(program, "EF")
        program.wait_window("frmAuswahl")
        program.type("", "Return")
        program.wait_until(lambda: "frmAuswahl" not in program.windows())
        self.plug(program, "E")
        self.wait_no_stick(program)
        self.plug(program, "Eh")  # a hard disk
        self.wait_stick(program, "E")

    def test_a_hard_disk_that_goes(self):
        program = self.start_detecting("Eh")
        self.wait_stick(program, "E")
        self.plug(program, "E")
        self.wait_no_stick(program)

    def test_the_last_drive_is_never_looked_at(self):
        program = self.start_detecting()
        self.wait_no_stick(program)
        program.set_drives(self.table("EF")[:-1])
        self.wait_stick(program, "E")


class InTheMiddle(DevicesCase):
    """Of whatever the program does."""

    def replug(self, program, letter="E"):
        self.plug(program, "")
        self.wait_no_stick(program)
        self.plug(program, letter)
        self.wait_stick(program, letter)

    def test_of_the_confirmation(self):
        program = self.start_detecting("E")
        self.wait_loaded(program)
        program.click("cmdChoose")
        program.wait_message(title=CONFIRMATION)
        self.replug(program)
        self.assertEqual(program.message()["title"], CONFIRMATION)
        program.answer("OK")
        program.wait_message(title=SUCCESS)
        program.answer("OK")
        self.assertEqual(set(contents(self.folder("E"))), {"sr200.abs", "sr200_at.sdx", *COPIED})
        self.close(program)

    def test_of_the_confirmation_and_two_sticks_then(self):
        program = self.start_detecting("E")
        self.wait_loaded(program)
        program.click("cmdChoose")
        program.wait_message(title=CONFIRMATION)
        self.plug(program, "EF")
        program.wait_window("frmAuswahl")
        program.click_row("ListView1", 1, "frmAuswahl", clicks=2)
        program.wait_until(lambda: "frmAuswahl" not in program.windows())
        self.wait_stick(program, "F")
        program.answer("Abbrechen")
        self.close(program)

    def start_download(self):
        """The job is in the middle of the firmware, which comes a read's worth at a time until `go_on` is set."""
        go_on = threading.Event()

        def trickle(handler):
            handler.send_head(len(LARGE))
            sent = 0
            while not go_on.wait(0.02) and not handler.server.stopping.is_set():
                handler.wfile.write(LARGE[sent : sent + 2048])
                sent += 2048
            handler.wfile.write(LARGE[sent:])

        self.addCleanup(go_on.set)
        self.serve("sr200.abs.txt", trickle)
        program = self.start_detecting("E")
        self.wait_loaded(program)
        self.confirm(program)
        program.wait_for("StatusBar1_2", "text", lambda text: text.startswith("Firmware-Update ."))
        return program, go_on

    def expect_written(self, letter):
        files = contents(self.folder(letter))
        self.assertEqual(files["sr200.abs"], LARGE)
        self.assertEqual(files["sr200_at.sdx"], SETTINGS)
        self.assertEqual(set(files), {"sr200.abs", "sr200_at.sdx", *COPIED})

    def test_of_a_download(self):
        program, go_on = self.start_download()
        self.replug(program)
        go_on.set()
        program.wait_message(title=SUCCESS)
        program.answer("OK")
        self.expect_written("E")
        self.close(program)

    def test_of_a_download_and_the_dialog_opens(self):
        program, go_on = self.start_download()
        self.plug(program, "EF")
        program.wait_window("frmAuswahl")
        self.picture(program, "drive-dialog-in-download")
        go_on.set()
        program.type("", "Return")
        program.wait_message(title=SUCCESS)
        program.answer("OK")
        self.expect_written("E")
        self.assertEqual(contents(self.folder("F")), {})
        self.close(program)

    def test_of_a_download_and_the_program_is_told_to_end_with_the_dialog_open(self):
        program, _ = self.start_download()
        self.plug(program, "EF")
        program.wait_window("frmAuswahl")
        program.terminate()
        self.assertEqual(program.exit_status(), 0, program.output())
        self.assertEqual(contents(self.folder("E")), {})

    def test_of_the_success_message(self):
        program = self.start_detecting("E")
        self.wait_loaded(program)
        self.confirm(program)
        program.wait_message(title=SUCCESS)
        self.plug(program, "")
        self.wait_no_stick(program)
        program.answer("OK")
        self.close(program)

    def test_of_the_closing_question(self):
        program = self.start_detecting("E")
        program.enter_text("txtOpenPath", "Musik")
        program.close()
        program.wait_message()
        self.plug(program, "EF")
        program.wait_window("frmAuswahl")
        program.click_row("ListView1", 1, "frmAuswahl", clicks=2)
        program.wait_until(lambda: "frmAuswahl" not in program.windows())
        program.answer("Nein")
        self.assertEqual(program.exit_status(), 0, program.output())

    def test_of_the_assistant(self):
        program = self.start_detecting("E", environment={"USERNAME": "root"})
        program.click("cmdtest")
        program.wait_window("Form1")
        self.replug(program, "F")
        program.click("Command1", "Form1")
        program.wait_for("Label3", "text", "Schritt 2:")
        self.plug(program, "")
        self.wait_no_stick(program)
        self.assertIn("Form1", program.windows())
        self.close(program)

    def test_of_typing(self):
        program = self.start_detecting("E")
        program.enter_text("txtDT_Cap", "NEU")
        self.replug(program)
        self.assertEqual(program.text("txtDT_Cap"), "STICK E")

    def test_of_an_error_report(self):
        program = self.start_detecting("E")
        program.write("nofile.bmp", None)
        self.plug(program, "")
        self.expect_error(program, 53)

    def test_of_an_error_report_nothing_is_shown_any_more(self):
        program = self.start_detecting("E")
        program.write("nofile.bmp", None)
        self.plug(program, "")
        program.wait_message()
        self.plug(program, "EF")
        self.expect_unchanged(program, "lblLW", "text")
        self.assertNotIn("frmAuswahl", program.windows())
        self.expect_error(program, 53)


class Quickly(DevicesCase):
    @each({"plugged at last": "E", "pulled at last": ""})
    def test_two_hundred_times(self, last):
        program = self.start_detecting()
        for i in range(100):
            self.plug(program, "E" if last == "" or i % 2 else "F")
            self.plug(program, "")
        self.plug(program, last)
        if last:
            self.wait_stick(program, last)
        else:
            self.wait_no_stick(program)
        program.click("cmdSearch")
        if last:
            self.wait_stick(program, last)
        else:
            self.wait_no_stick(program)
        self.close(program)

    def test_two_hundred_times_and_waited_for(self):
        program = self.start_detecting()
        for _ in range(100):
            self.plug(program, "E")
            self.wait_stick(program, "E")
            self.plug(program, "")
            self.wait_no_stick(program)
        self.close(program)

    def test_during_the_start(self):
        program = self.start(drives=self.table(), files=AUTOMATIC)
        for letters in ("E", "", "F", "", "E"):
            self.plug(program, letters)
        program.wait_for("chkAuto", "checked", True)
        self.wait_loaded(program)
        self.wait_stick(program, "E")
        self.close(program)


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
