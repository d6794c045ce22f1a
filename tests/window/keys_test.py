"""The keyboard: what an input method writes, and what Enter presses: in a text box its own button, elsewhere the main
one, and nothing while a job runs."""

import unittest

from case import CONFIRMATION, SUCCESS, WindowCase
from fault_server import slow
from server_files import FIRMWARE
from side_by_side import each, side_by_side


class InputMethod(WindowCase):
    """Letters that come from an input method and from no key."""

    @each({"one": "語", "several": "日本語", "beyond 16 bits": "😀", "a letter": "é"})
    def test_a_path(self, text):
        program = self.start_loaded()
        self.assertFalse(program.get("cmdSaveOnStick")["enabled"])
        program.focus("txtOpenPath")
        program.compose(text, shown="ni")
        program.wait_for("txtOpenPath", "text", text)
        program.wait_for("cmdSaveOnStick", "enabled", True)
        program.close()
        self.assertIn("Wollen Sie speichern?", program.wait_message()["text"])

    def test_nothing_chosen(self):
        program = self.start_loaded()
        program.focus("txtOpenPath")
        program.compose("", shown="ni")
        self.assertEqual(program.text("txtOpenPath"), "")
        self.assertFalse(program.get("cmdSaveOnStick")["enabled"])


class Enter(WindowCase):
    def press_at(self, program, name):
        program.focus(name)
        program.wait_for(name, "focus", True)
        program.type("", "Return")

    def test_a_new_name(self):
        program = self.start_loaded()
        program.enter_text("txtDT_Cap", "NEU")
        program.type("", "Return")
        self.wait_label(program, "NEU")
        self.assertIsNone(program.message())

    def test_a_new_path(self):
        program = self.start_loaded()
        program.enter_text("txtOpenPath", "bilder")
        program.wait_for("cmdSaveOnStick", "enabled", True)
        program.type("", "Return")
        program.wait_for("cmdSaveOnStick", "enabled", False)
        self.assertIn(b"bilder", (self.stick / "USB.ini").read_bytes())
        self.assertIsNone(program.message())

    def test_nothing_to_save(self):
        program = self.start_loaded()
        self.press_at(program, "txtOpenPath")
        self.input_done(program)
        self.assertIsNone(program.message())
        self.assertFalse((self.stick / "USB.ini").exists())

    @each({"unit": "cmbSize", "receiver": "Firm_Option_1", "list": "Sett_Option_0", "box": "chkAuto",
           "file system": "txtFAT"})
    def test_elsewhere(self, name):
        program = self.start_loaded()
        self.press_at(program, name)
        program.wait_message(title=CONFIRMATION)
        program.answer("Abbrechen")

    def test_a_button_is_its_own(self):
        program = self.start_loaded()
        self.press_at(program, "cmdtest")
        program.wait_window("Form1")

    def start_job(self):
        """It takes some seconds, and lets events run all the time."""
        self.serve("sr200.abs.txt", slow(FIRMWARE * 16, 2048, 0.08))
        program = self.start_loaded()
        self.confirm(program)
        program.wait_until(lambda: "sr200.abs.txt" in self.downloads(), what="the download")
        return program

    @each({"main button": "cmdChoose", "name": "txtDT_Cap", "path": "txtOpenPath", "unit": "cmbSize",
           "other button": "cmdtest"})
    def test_while_a_job_runs(self, name):
        program = self.start_job()
        self.press_at(program, name)
        self.press_at(program, name)
        self.input_done(program)
        self.assertIsNone(program.message())
        self.assertNotIn("Form1", program.windows())
        self.assertEqual(program.text("txtDT_Cap", "frmMain"), "ORVANTA")
        program.wait_message(title=SUCCESS)
        program.answer("OK")

    def test_a_click_while_a_job_runs(self):
        program = self.start_job()
        program.click("cmdChoose")
        program.wait_message(title=CONFIRMATION)
        program.answer("Abbrechen")
        program.wait_message(title=SUCCESS)

    def test_after_a_job(self):
        program = self.start_loaded()
        self.run_job(program)
        self.press_at(program, "cmdChoose")
        program.wait_message(title=CONFIRMATION)

    def wait_label(self, program, label):
        program.wait_until(lambda: f"Label={label}".encode() in (program.folder / "Drives.ini").read_bytes(),
                           what="the new name")

    def input_done(self, program):
        """Requests are answered after the input before them."""
        program.get("cmdChoose")


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
