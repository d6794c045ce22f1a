"""What everybody has to be able to use: by keyboard, by ear, on a small screen."""

import unittest

from case import CONFIRMATION, WindowCase
from side_by_side import side_by_side

STICK = ["cmdSearch", "cmdOpen", "txtDT_Cap", "Command1", "txtFAT", "cmbSize", "txtOpenPath", "chkAuto", "cmdtest"]

PRESSED = STICK[:2] + ["Command1", "cmdSaveOnStick", "chkAuto", "cmdtest", "cmdChoose"]
PRESSED += [f"Firm_Option_{i}" for i in range(9)] + [f"Sett_Option_{i}" for i in range(5)]
USED = PRESSED + ["txtDT_Cap", "txtFAT", "cmbSize", "txtOpenPath", "Picture1", "Image1", "StatusBar1_1", "StatusBar1_2"]

# Their text moves when it is too long, or what stands in them is looked at by itself.
SCROLLING = ("QLineEdit", "QComboBox", "QGroupBox")

SMALL = (1366, 768)


class Presentation(WindowCase):
    def test_every_control_has_a_name_for_the_ear(self):
        program = self.start_loaded()
        names = {name: part["accessibleName"] for name, part in program.all("frmMain").items()}
        self.assertEqual([name for name in USED if not names[name].strip()], [])
        self.assertEqual(names["lblHDSize"], "Speicherplatz: 4096.00 MB")
        self.assertEqual(names["lblHDFree"], "Frei: 4096.00 MB")
        self.assertEqual(names["txtDT_Cap"], "Bezeichnung")

    def test_every_button_has_a_letter_of_its_own(self):
        program = self.start_loaded()
        window = program.all("frmMain")
        keys = {name: window[name]["shortcut"] for name in PRESSED}
        self.assertEqual([name for name, key in keys.items() if not key], [])
        self.assertEqual(len(set(keys.values())), len(keys), keys)
        for box, label in (("txtDT_Cap", "z"), ("cmbSize", "g"), ("txtOpenPath", "p"), ("txtFAT", "y")):
            self.assertNotIn(f"Alt+{label.upper()}", keys.values())
            program.type("", f"Alt+{label.upper()}")
            program.wait_for(box, "focus", True)
        program.type("", keys["Firm_Option_2"])
        program.wait_for("Firm_Option_2", "checked", True)
        program.type("", keys["chkAuto"])
        program.wait_for("chkAuto", "checked", True)
        program.type("", keys["cmdChoose"])
        program.wait_message(title=CONFIRMATION)

    def test_the_tab_key_leads_from_the_stick_to_the_start(self):
        program = self.start_loaded()
        program.focus("cmdSearch")
        order = []
        for _ in range(30):
            focus = next(name for name, part in program.all("frmMain").items() if part["focus"])
            if focus in order:
                break
            order.append(focus)
            program.type("", "Tab")
        areas = [name for name in order if name.endswith("Area")]  # they scroll by keyboard
        order = [name for name in order if name not in areas]
        self.assertEqual(order, STICK + ["Firm_Option_1", "Sett_Option_0", "cmdChoose"])

    def test_enter_presses_the_main_button(self):
        program = self.start_loaded()
        for place in ("cmdChoose", "Firm_Option_1"):
            program.focus(place)
            program.type("", "Return")
            program.wait_message(title=CONFIRMATION)
            program.type("", "Escape")
            program.wait_until(lambda: program.message() is None)
        program.focus("cmdSearch")  # a button that has the focus is meant itself
        program.type("", "Return")
        self.assertIsNone(program.message())

    def test_the_arrow_keys_choose(self):
        program = self.start_loaded()
        program.focus("Firm_Option_1")
        program.type("", "Down")
        program.wait_for("Firm_Option_2", "checked", True)
        program.wait_for("lbl_firmstand", "text", "Stand: 22.04.2026 (V2.07)")

    def expect_whole(self, program, screen):
        window = program.windows()["frmMain"]["geometry"]
        self.assertLessEqual(window[2], screen[0])
        self.assertLessEqual(window[3], screen[1])
        cut = {}
        for name, part in program.all("frmMain").items():
            x, y, width, height = part["geometry"]
            wanted = part["wantedSize"]
            if not part["text"] or part["class"] in SCROLLING:
                continue
            if width < wanted[0] or height < wanted[1]:
                cut[name] = (part["text"], [width, height], wanted)
            if x < 0 or y < 0 or x + width > window[2] or y + height > window[3]:
                cut[name] = (part["text"], part["geometry"], window)
        self.assertEqual(cut, {})

    def test_it_fits_a_small_screen_and_no_text_is_cut(self):
        program = self.start(screen=SMALL)
        program.wait_window("frmMain")
        self.expect_whole(program, SMALL)
        self.wait_loaded(program)
        for option in ("Firm_Option_2", "Firm_Option_5", "Firm_Option_1"):
            program.click(option)
            program.wait_for(option, "checked", True)
            self.expect_whole(program, SMALL)

    def test_large_letters(self):
        program = self.start_loaded(screen=(2732, 1536))
        program.appearance(font_size=18)
        before = program.windows()["frmMain"]["geometry"]
        program.wait_until(lambda: program.get("cmdChoose")["geometry"][3] > 40 or before is None)
        self.expect_whole(program, (2732, 1536))


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
