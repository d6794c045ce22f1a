"""Another stick in the place of the one that is shown: what was shown is what is written, or nothing is."""

import unittest

from case import CONFIRMATION, COPIED, SUCCESS, TITLE, WindowCase, contents, snapshot_of
from fault_server import body
from server_files import FIRMWARE, SETTINGS
from side_by_side import side_by_side
from sticks import AUTOMATIC

OTHERS_FILES = {"sr200.abs": b"the other one's", "USB.ini": b"[Open]\r\nDir=Anderes\r\n", "brief.txt": b"letter"}


class ExchangeCase(WindowCase):
    def setUp(self):
        super().setUp()
        self.first = self.home / "first"  # where the first stick is when it is not plugged in

    def exchange_stick(self):
        """Another stick under the same letter, with files of its own."""
        self.stick.rename(self.first)
        self.stick.mkdir()
        self.fill_other(self.stick)

    def fill_other(self, folder):
        for name, data in OTHERS_FILES.items():
            (folder / name).write_bytes(data)

    def files_of(self, folder):
        return contents(folder)

    def expect_files(self, folder, expected):
        self.assertEqual(snapshot_of(self.files_of(folder)), snapshot_of(expected))

    def exchange_during(self, name, contents_):
        def answer(handler):
            self.exchange_stick()
            body(contents_)(handler)

        self.serve(name, answer)


class Job(ExchangeCase):
    def test_while_the_question_is_open(self):
        program = self.start_loaded()
        program.click("cmdChoose")
        program.wait_message(title=CONFIRMATION)
        self.exchange_stick()
        before = self.downloads()
        program.answer("OK")
        self.expect_error(program, 71)
        self.expect_files(self.stick, OTHERS_FILES)
        self.expect_files(self.first, {})
        self.assertEqual(self.downloads(), before)

    def test_before_the_click(self):
        """The figures are read anew, so it looks as if it were the one that is shown; it is not."""
        program = self.start_loaded()
        self.exchange_stick()
        self.confirm(program)
        self.expect_error(program, 71)
        self.expect_files(self.stick, OTHERS_FILES)
        self.expect_files(self.first, {})

    def test_during_the_firmware(self):
        self.exchange_during("sr200.abs.txt", FIRMWARE)
        program = self.start_loaded()
        self.confirm(program)
        self.expect_error(program, 71)
        self.expect_files(self.stick, OTHERS_FILES)
        self.expect_files(self.first, {})

    def test_during_the_channel_list(self):
        self.exchange_during("sr200_at.sdx.txt", SETTINGS)
        program = self.start_loaded()
        self.confirm(program)
        self.expect_error(program, 71)
        self.expect_files(self.stick, OTHERS_FILES)
        self.expect_files(self.first, {"sr200.abs": FIRMWARE})

    def test_one_that_has_the_firmware_already(self):
        """Nothing would have to be written, and still it is another one."""
        def answer(handler):
            self.exchange_stick()
            (self.stick / "sr200.abs").write_bytes(FIRMWARE)
            body(FIRMWARE)(handler)

        self.serve("sr200.abs.txt", answer)
        program = self.start_loaded()
        self.confirm(program)
        self.expect_error(program, 71)
        self.expect_files(self.stick, OTHERS_FILES | {"sr200.abs": FIRMWARE})

    def start_and_show_another(self):
        """Plugged in while the question was open, and noticed."""
        program = self.start_loaded(files=AUTOMATIC)
        program.wait_for("chkAuto", "checked", True)
        program.click("cmdChoose")
        program.wait_message(title=CONFIRMATION)
        program.set_drives(self.drives(stick=None))
        program.wait_for("StatusBar1_1", "text", "No Stick")
        self.exchange_stick()
        program.set_drives(self.drives(label="OTHER"))
        program.wait_for("txtDT_Cap", "text", "OTHER")
        return program

    def test_one_that_is_shown_by_the_time_of_the_answer(self):
        program = self.start_and_show_another()
        program.answer("OK")
        program.wait_message(title=SUCCESS)
        program.answer("OK")
        shipped = {name: (program.folder / name).read_bytes() for name in COPIED}
        self.expect_files(self.stick, OTHERS_FILES | {"sr200.abs": FIRMWARE, "sr200_at.sdx": SETTINGS} | shipped)
        self.expect_files(self.first, {})

    def test_and_the_first_one_comes_back_after_it(self):
        second = self.home / "second"

        def answer(handler):
            self.stick.rename(second)
            self.first.rename(self.stick)
            self.plug_again()
            body(SETTINGS)(handler)

        self.serve("sr200_at.sdx.txt", answer)
        program = self.start_and_show_another()
        program.answer("OK")
        self.expect_error(program, 71)
        self.expect_files(second, OTHERS_FILES | {"sr200.abs": FIRMWARE})
        self.expect_files(self.stick, {})

    def plug_again(self):
        """What is in the stick's folder now is what the system knows of it."""


class Saving(ExchangeCase):
    QUESTION = "Sie haben Informationen abgeändert.\nWollen Sie speichern?"

    def edit(self, program):
        program.enter_text("txtOpenPath", "Musik")
        program.wait_for("cmdSaveOnStick", "enabled", True)

    def expect_unsaved(self, program):
        """No message, the change is still marked, and closing asks for it."""
        program.click("cmdSaveOnStick")
        self.mark_of_input(program)
        self.assertIsNone(program.message())
        self.expect(program, {"cmdSaveOnStick.enabled": True, "txtOpenPath.text": "Musik"})
        program.close()
        self.drop_message(program, TITLE, self.QUESTION, 64, ("Ja", "Nein"))
        self.assertEqual(program.exit_status(), 0)

    def mark_of_input(self, program):
        """Clicks have had their effect by the time they are answered."""

    def test_the_standard_path(self):
        program = self.start()
        self.edit(program)
        self.exchange_stick()
        self.expect_unsaved(program)
        self.expect_files(self.stick, OTHERS_FILES)
        self.expect_files(self.first, {})

    def test_the_standard_path_onto_a_stick_that_is_gone(self):
        program = self.start()
        self.edit(program)
        self.pull_stick()
        self.expect_unsaved(program)
        self.assertFalse(self.stick.exists())

    def test_and_again_on_the_one_that_is_shown(self):
        program = self.start()
        self.edit(program)
        self.exchange_stick()
        program.click("cmdSaveOnStick")
        program.click("cmdSearch")
        program.wait_for("txtOpenPath", "text", "Anderes")
        self.edit(program)
        program.click("cmdSaveOnStick")
        program.wait_for("cmdSaveOnStick", "enabled", False)
        self.expect_files(self.stick, OTHERS_FILES | {"USB.ini": b"[Open]\r\nDir=Musik\r\n"})

    def test_the_label(self):
        program = self.start()
        program.wait_for("txtDT_Cap", "text", "ORVANTA")
        self.exchange_stick()
        before = self.label_of(program)
        program.enter_text("txtDT_Cap", "MEINER")
        program.click("Command1")
        self.mark_of_input(program)
        self.assertIsNone(program.message())
        self.assertEqual(self.label_of(program), before)

    def label_of(self, program):
        return (program.folder / "Drives.ini").read_bytes()


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
