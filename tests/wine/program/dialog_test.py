"""The dialog that asks which one of several sticks is meant, with real mouse and keyboard."""

import unittest

from windows_case import WindowsSticksCase, without

import drive_dialog_test as shared
from side_by_side import side_by_side


class Appearance(WindowsSticksCase, without(shared.Appearance, "test_every_look", "test_twice_the_resolution",
                                            "test_many_sticks", "test_sticks_without")):
    def test_what_it_shows(self):
        program = self.start_asking()
        window = program.windows()[shared.DIALOG]
        self.assertEqual((window["title"], window["hasIcon"]), ("USB Stick Tool", True))
        self.expect(program, {"Label1.text": shared.QUESTION, "cmdOK.text": "Verwenden", "cmdCancel.text": "Abbruch",
                              "ListView1.headers": ["Laufwerksbuchstabe", "Laufwerksbezeichnung"],
                              "ListView1.rows": [["E:\\", "STICK E"], ["F:\\", "STICK F"], ["G:\\", "STICK G"]],
                              "ListView1.columnWidths": shared.COLUMNS, "ListView1.row": 0, "ListView1.focus": True,
                              "cmdOK.shortcut": "Alt+V", "cmdCancel.shortcut": "Alt+A"})
        self.picture(program, "drive-dialog")

    def test_the_rows_tell_size_and_file_system(self):
        program = self.start_asking()
        for tip in program.get("ListView1", shared.DIALOG)["rowToolTips"]:
            self.assertRegex(tip, r"^Größe: [0-9]+[.,]?[0-9]* [GM]B, Dateisystem: NTFS$")

    def test_it_belongs_to_the_main_window(self):
        program = self.start_asking()
        program.click("cmdCancel", shared.DIALOG)
        self.gone(program)
        program.click("cmdSearch")
        self.assertTrue(program.wait_window(shared.DIALOG)["modal"])
        self.assertFalse(program.windows()["frmMain"]["enabled"])

    def test_many_sticks_can_be_scrolled(self):
        program = self.start_asking("DEFGHIJKLMN")
        program.click_row("ListView1", 10, shared.DIALOG)
        program.click("cmdOK", shared.DIALOG)
        self.expect_choice(program, "N")


class Hesitation(WindowsSticksCase, shared.Hesitation):
    pass


class Ways(WindowsSticksCase, shared.Ways):
    def test_the_main_button_works_on_the_chosen_one(self):
        program = self.start_asking()
        program.click_row("ListView1", 1, shared.DIALOG, clicks=2)
        self.gone(program)
        self.wait_loaded(program)
        self.run_job(program)
        self.assertIn("sr200.abs", self.stick_files(self.folder("F")))
        self.assertEqual(self.stick_files(self.folder("E")) | self.stick_files(self.folder("G")), {})


class Columns(WindowsSticksCase, without(shared.Columns, "test_a_wider_window")):  # its border is fixed
    pass


class Nested(WindowsSticksCase, shared.Nested):
    pass


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
