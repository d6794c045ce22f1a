"""Sticks that come and go while the program runs, as Windows tells it."""

import unittest

from windows_case import WindowsSticksCase, only, without
from windows_program import REMOVAL

import device_events_test as shared
from case import COPIED
from side_by_side import side_by_side
from sticks import READY

DEVICES_CHANGED = 0x0007  # DBT_DEVNODES_CHANGED
QUERY_REMOVE = 0x8001


class OneStick(WindowsSticksCase, without(shared.OneStick, "test_plugged_and_pulled")):
    def test_plugged_and_pulled(self):
        program = self.start_detecting()
        self.wait_loaded(program)
        self.wait_no_stick(program)
        for _ in range(3):
            self.plug(program, "E")
            self.wait_stick(program, "E")
            program.wait_for("cmdChoose", "enabled", True)
            self.expect(program, READY)
            self.plug(program, "")
            self.wait_no_stick(program)
            self.assertEqual(program.text("lblLW"), "E:\\")  # the letter stays in view
        self.picture(program, "main-no-stick")
        self.close(program)

    def test_other_events_are_none(self):
        program = self.start_detecting("E")
        self.wait_stick(program, "E")
        self.machine.undefine("E")
        program.device_message(DEVICES_CHANGED)
        program.device_message(QUERY_REMOVE, "E")
        self.mark_of_input(program)
        self.wait_stick(program, "E")
        self.mark_of_input(program)  # the detection is on again
        program.device_message(REMOVAL, "E")
        self.wait_no_stick(program)


class SwitchedOff(WindowsSticksCase, only(shared.SwitchedOff, "test_switched_on", "test_the_setting")):
    def test_nothing_happens_until_it_is_searched(self):
        program = self.start(drives=self.table())
        self.wait_no_stick(program)
        self.plug(program, "E")  # the message has been dealt with when this returns
        self.wait_no_stick(program)
        program.click("cmdSearch")
        self.wait_stick(program, "E")
        self.plug(program, "")
        self.wait_stick(program, "E")
        program.click("cmdSearch")
        self.wait_no_stick(program)


class SeveralSticks(WindowsSticksCase, without(shared.SeveralSticks, "test_the_last_drive")):
    pass


class InTheMiddle(WindowsSticksCase, without(shared.InTheMiddle, "test_of_the_assistant")):
    def files(self, letter):
        return self.stick_files(self.folder(letter))

    def test_of_the_confirmation(self):
        program = self.start_detecting("E")
        self.wait_loaded(program)
        program.click("cmdChoose")
        program.wait_message(title=shared.CONFIRMATION)
        self.replug(program)
        self.assertEqual(program.message()["title"], shared.CONFIRMATION)
        program.answer("OK")
        program.wait_message(title=shared.SUCCESS)
        program.answer("OK")
        self.assertEqual(set(self.files("E")), {"sr200.abs", "sr200_at.sdx", *COPIED})
        self.close(program)

    def expect_written(self, letter):
        files = self.files(letter)
        self.assertEqual((files["sr200.abs"], files["sr200_at.sdx"]), (shared.LARGE, shared.SETTINGS))
        self.assertEqual(set(files), {"sr200.abs", "sr200_at.sdx", *COPIED})

    def test_of_a_download_and_the_dialog_opens(self):
        program, go_on = self.start_download()
        self.plug(program, "EF")
        program.wait_window("frmAuswahl")
        go_on.set()
        program.type("", "Return")
        program.wait_message(title=shared.SUCCESS)
        program.answer("OK")
        self.expect_written("E")
        self.assertEqual(self.files("F"), {})
        self.close(program)

    def test_of_a_download_and_the_program_is_told_to_end_with_the_dialog_open(self):
        program, _ = self.start_download()
        self.plug(program, "EF")
        program.wait_window("frmAuswahl")
        program.terminate()
        self.assertEqual(program.exit_status(), 0, program.output())
        self.assertEqual(self.files("E"), {})


class Quickly(WindowsSticksCase, only(shared.Quickly)):
    def test_fifty_times(self):
        program = self.start_detecting()
        for _ in range(50):
            self.plug(program, "E")
            self.plug(program, "")
        self.wait_no_stick(program)
        self.plug(program, "E")
        self.wait_stick(program, "E")
        self.close(program)


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
