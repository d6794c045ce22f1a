"""What screen readers are told beyond what the native controls tell."""

import unittest

from windows_case import WindowsCase
from case import MIB, SUCCESS
from fault_server import pattern
from progress_test import Gate
from side_by_side import side_by_side

PROGRESS_BAR = 0x30  # ROLE_SYSTEM_PROGRESSBAR
SHARES = 10  # texts of the bar that differ in figures alone
MOST_SAID = 5  # of either part in a job, which shows more than a hundred dots
POLITE = 1  # LiveSetting
AUTOMATIC = {"Settings.ini": b"[USB Tool]\r\nchkAuto=1\r\ncmbSize=0\r\n"}


class Speech(WindowsCase):
    def test_what_is_said_of_the_stick(self):
        program = self.start_loaded()
        number, unit = program.text("lblHDUsed"), program.text("lblSize_1")
        self.assertRegex(f"{number} {unit}", r"^\d+[.,]\d\d MB$")
        self.expect(program, {"lblHDUsed.spokenName": f"Belegt: {number} MB",
                              "lblHDFree.spokenName": f"Frei: {program.text('lblHDFree')} MB",
                              "lblHDSize.spokenName": f"Speicherplatz: {program.text('lblHDSize')} MB",
                              "lblCapUsed.spokenName": "", "Picture1.spokenRole": PROGRESS_BAR,
                              "Picture1.spokenName": "Belegter Anteil des Speicherplatzes",
                              "Picture1.spokenValue": program.text("Picture1")})
        self.assertRegex(program.text("Picture1"), r"^\d+ ?%$")
        program.choose("cmbSize", 2)
        program.wait_for("lblSize_1", "text", "GB")
        program.wait_for("lblHDUsed", "spokenName", f"Belegt: {program.text('lblHDUsed')} GB")

    def test_the_button_says_why_it_is_disabled(self):
        program = self.start(drives=self.drives()[:1])
        part = program.wait_until(lambda: self.disabled(program), what="the reason")
        self.assertEqual(part["spokenDescription"], part["toolTip"])

    def said(self):
        """(part, text) of what was to be said since this was asked last."""
        return [tuple(one) for one in self.machine.request("said")["said"]]

    def hear(self, part, text):
        """Waits until a part is said, and returns what else was until then."""
        heard = []

        def found():
            heard.extend(self.said())
            return any(name == part and words.startswith(text) for name, words in heard)

        self.program.wait_until(found, what=f"{part} saying {text!r}")
        return heard

    def test_what_happens_is_said_once(self):
        """One more dot or percent is nothing new."""
        self.said()
        gate = Gate(pattern(8 * MIB), 2 * MIB)
        self.serve("sr200.abs.txt", gate)
        self.program = program = self.start(drives=self.drives(stick=None), files=AUTOMATIC)
        self.expect(program, {"StatusBar1.spokenLive": POLITE, "prgUpdateText.spokenLive": POLITE})
        self.hear("StatusBar1_2", "Updates geladen.")
        program.set_drives(self.drives())
        self.hear("StatusBar1_1", "USB Stick")
        program.set_drives(self.drives(stick=None))
        self.hear("StatusBar1_1", "No Stick")
        program.set_drives(self.drives())
        self.hear("StatusBar1_1", "USB Stick")
        self.confirm(program)
        words = self.hear("prgUpdateText", "Firmware ")
        shown = set()
        program.wait_until(lambda: shown.add(program.text("prgUpdate")) or len(shown) >= SHARES, what="some shares")
        gate.open()
        words += self.hear("prgUpdateText", "Geprüft: 4 Dateien")
        for part in ("prgUpdateText", "StatusBar1_2"):
            self.assertLessEqual([name for name, _ in words].count(part), MOST_SAID, words)
        program.wait_message(title=SUCCESS)
        program.answer("OK")

    @staticmethod
    def disabled(program):
        part = program.get("cmdChoose")
        return part if not part["enabled"] and part["toolTip"] else None


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
