"""The user guide: what opens it, and what is said when nothing does."""

import unittest

from assistant import AssistantCase
from side_by_side import each, side_by_side

PAGE = "Anleitung.html"
MISSING = ("Die Anleitung fehlt. Installieren Sie das Programm neu, oder entpacken Sie sein Archiv noch einmal "
           "vollständig.")
NOT_OPENED = "Die Anleitung lässt sich nicht öffnen. Öffnen Sie diese Datei selbst, zum Beispiel mit Ihrem Browser:"
EXCLAMATION = 48


class Handbook(AssistantCase):
    LEAST = 16  # points that the mouse has to find, each way

    def page(self, program):
        return self.program_path(program, PAGE)

    def expect_opened(self, program, times=1):
        program.wait_until(lambda: len(self.opened()) >= times, what="the browser")
        self.assertEqual(self.opened(), [self.page(program)] * times)
        self.assertIsNone(program.message())

    def help(self, program):
        program.type("", "F1")

    def test_the_key_wherever_the_keyboard_is(self):
        program = self.start_loaded()
        for times, part in enumerate(("cmdSearch", "txtOpenPath", "cmbSize", "Firm_Option_1"), 1):
            program.focus(part)
            self.help(program)
            self.expect_opened(program, times)
        self.expect(program, {"txtOpenPath.text": "", "cmdSaveOnStick.enabled": False})

    def test_the_key_with_others_is_another(self):
        """Without the page each would open a box, which keeps the letter from the text."""
        program = self.start(files={PAGE: None})
        self.wait_loaded(program)
        program.focus("txtOpenPath")
        program.type("", "Ctrl+F1", "Shift+F1", "Ctrl+Shift+F1")
        program.type("a")
        program.wait_for("txtOpenPath", "text", "a")
        self.assertIsNone(program.message())
        self.help(program)
        self.drop_message(program, program.windows()["frmMain"]["title"], MISSING, EXCLAMATION)

    def test_the_sign_in_the_status_bar(self):
        program = self.start_loaded()
        sign = program.get("cmdHelp", "frmMain")
        self.assertEqual((sign["text"], sign["enabled"], sign["toolTip"]),
                         ("?", True, "Öffnet die Anleitung (F1)"))
        self.expect_name(program)
        program.click("cmdHelp", "frmMain")
        self.expect_opened(program)
        self.picture(program, "handbook-sign", "frmMain")

    def expect_name(self, program):
        self.expect(program, {"cmdHelp.accessibleName": "Hilfe"})

    def test_it_is_the_last_part_of_the_status_bar(self):
        parts = self.start_loaded().all("frmMain")
        names = ("StatusBar1_1", "StatusBar1_2", "prgUpdate", "cmdHelp")
        left = [parts[name]["geometry"][0] for name in names]
        self.assertEqual(left, sorted(left))
        x, _, width, height = parts["cmdHelp"]["geometry"]
        bar_x, _, bar_width, bar_height = parts["StatusBar1"]["geometry"]
        edge = 8  # of the bar, in which nothing stands
        self.assertLess(x + width, bar_x + bar_width - edge)
        self.assertGreater(width, self.LEAST)
        self.assertGreater(height, self.LEAST)
        self.assertLess(height, bar_height)

    def test_the_assistant(self):
        program = self.start_assistant()
        self.help(program)
        self.expect_opened(program)
        self.expect_step(program, 1, program.text("Label2", "Form1"))

    def test_the_choice_among_sticks(self):
        program = self.start(drives=self.table("EF"))
        program.wait_window("frmAuswahl")
        self.help(program)
        self.expect_opened(program)
        program.wait_window("frmAuswahl")

    @each({"by key": True, "by the sign": False})
    def test_a_page_that_is_missing(self, key):
        program = self.start(files={PAGE: None})
        self.wait_loaded(program)
        self.help(program) if key else program.click("cmdHelp", "frmMain")
        self.drop_message(program, program.windows()["frmMain"]["title"], MISSING, EXCLAMATION)
        self.assertEqual(self.opened(), [])

    def test_a_desktop_without_a_browser(self):
        self.no_browser()
        program = self.start_loaded()
        self.help(program)
        self.drop_message(program, program.windows()["frmMain"]["title"], f"{NOT_OPENED}\n{self.page(program)}",
                          EXCLAMATION)

    def no_browser(self):
        self._make_command("xdg-mime", 'case "$2" in filetype) echo text/html ;; esac')


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
