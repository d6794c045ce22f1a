"""The run that everybody makes, and what the window shows before it."""

import os
import time
import unittest

from windows_case import LABEL, WindowsCase

import typical_run_test as shared
from case import CONFIRMATION, COPIED, SUCCESS, TITLE
from fault_server import body
from server_files import FIRMWARE, SETTINGS, VERSION
from side_by_side import side_by_side

MEGABYTE = 1024 * 1024


class Start(WindowsCase, shared.Start):
    def test_before_the_check_with_a_stick(self):
        program = self.start()
        self.assertEqual(self.server.requests, [])
        window = self.first_look(program)
        self.assertEqual({name: window[name]["text"] for name in shared.FIXED_TEXTS}, shared.FIXED_TEXTS)
        self.assertEqual(program.windows()["frmMain"]["title"], TITLE)
        self.assertTrue(program.windows()["frmMain"]["hasIcon"])
        states = {
            "cmdChoose": ("Suche Updates...", False),
            "StatusBar1_1": ("USB Stick", True),
            "StatusBar1_2": ("Suche nach Updates...", True),
            "lblLW": ("E:\\", True),
            "txtDT_Cap": ("ORVANTA", True),
            "txtFAT": ("NTFS", True),
            "lblSize_0": ("MB", True),
            "lblSize_2": ("MB", True),
            "cmbSize": ("MB", True),
            "cmdSaveOnStick": ("speichern", False),
            "txtOpenPath": ("", True),
            "lbl_news_0": ("", True),
        }
        self.assertEqual({name: (window[name]["text"], window[name]["enabled"]) for name in states}, states)
        self.assertEqual(window["cmbSize"]["items"], ["MB", "GB"])
        self.assertFalse(window["chkAuto"]["checked"])
        self.assertEqual(window["StatusBar1_1"]["toolTip"], "USB-Stick gefunden.")
        self.assertEqual(window["StatusBar1_2"]["toolTip"], "Updates werden gesucht.")
        self.assertTrue(window["StatusBar1_1"]["hasPicture"])
        self.assertTrue(window["StatusBar1_2"]["hasPicture"])
        options = [f"Firm_Option_{i}" for i in range(9)] + [f"Sett_Option_{i}" for i in range(5)]
        self.assertEqual({name: (window[name]["enabled"], window[name]["checked"]) for name in options},
                         {name: (False, False) for name in options})
        self.expect_capacity(window)
        self.expect_colors(program)
        self.picture(program, "main-at-first")

    def test_the_check_comes_once_and_not_before_four_seconds(self):
        begin = []

        def answer(handler):
            begin.append(time.monotonic())
            body(VERSION)(handler)

        self.serve("usb-version.txt", answer)
        program = self.start()
        self.assertEqual(program.text("StatusBar1_2"), "Suche nach Updates...")
        self.wait_loaded(program)
        self.run_job(program)
        # The list twice: nothing comes out of a cache.
        self.assertEqual(self.downloads(), ["usb-version.txt", "usb-news.csv", "usb-list.csv", "usb-list.csv",
                                            "sr200.abs.txt", "sr200_at.sdx.txt"])
        self.assertGreaterEqual(begin[0] - program.started, 4.0)
        self.assertEqual({request.headers["User-Agent"] for request in self.server.requests}, {"Qentra:INET"})

    def expect_capacity(self, window):
        """Of the disk that the stick's folder is on."""
        disk = os.statvfs(self.stick)
        size, free, used = (float(window[name]["text"]) for name in ("lblHDSize", "lblHDFree", "lblHDUsed"))
        self.assertEqual(window["lblHDSize"]["text"], f"{disk.f_blocks * disk.f_frsize / MEGABYTE:.2f}")
        self.assertAlmostEqual(free, disk.f_bavail * disk.f_frsize / MEGABYTE, delta=4096)  # others use it, too
        self.assertTrue(0 < used < size)

    def expect_colors(self, program):
        """The two swatches and the bar are really there."""
        for name, color in (("lblHDUsedColor", (0xDE, 0, 0)), ("lblHDFreeColor", (0, 0xDE, 0))):
            colors = program.colors(name)
            self.assertGreater(colors.get(color, 0), sum(colors.values()) / 2, (name, colors))
        bar = program.colors("Picture1")
        self.assertTrue(any(blue > 100 > green for _, green, blue in bar), bar)  # used
        self.assertTrue(any(green > 150 > blue for _, green, blue in bar), bar)  # free

    def test_the_tool_tips_of_the_design(self):
        program = self.start()
        self.expect(program, {"txtDT_Cap.toolTip": "Datenträgerbezeichnung, höchstens 11 Zeichen",
                              "Picture1.toolTip": "Belegter Anteil des Speicherplatzes",
                              "cmbSize.toolTip": "Einheit, in der die Größen angegeben werden. "
                              "In GB verlangt das Update 5 GB freien Platz statt 5 MB.",
                              "chkAuto.toolTip": "Bemerkt von selbst, wenn ein USB-Stick angeschlossen oder "
                              "abgezogen wird.",
                              "txtOpenPath.toolTip": 'Ordner am Stick, der mit "Inhalt anzeigen" geöffnet wird'})


    def test_the_tool_tip_under_the_mouse(self):
        program = self.start()
        for name in ("txtOpenPath", "Picture1", "StatusBar1_1"):
            program.mouse(name, ("move", 5, 5), ("move", 8, 6))
            text = program.get(name)["toolTip"]
            self.assertNotEqual(text, "")
            program.wait_until(lambda: program.shown_tool_tip() == text, what=f"the tool tip of {name}")
        self.picture(program, "main-tool-tip")
        program.mouse("frm_News", ("move", 30, 60))
        program.wait_until(lambda: program.shown_tool_tip() == "", what="the end of the tool tip")


class Job(WindowsCase, shared.Job):
    def test_the_whole_job(self):
        (self.stick / "USB.ini").write_bytes(b"[Open]\r\nDir=\\Musik\r\n")
        program = self.start_loaded()
        self.expect_preselection(program)
        self.assertGreater(len(program.colors("Image1")), 2)
        self.picture(program, "main-loaded")
        self.choose_other_receivers(program)
        program.click("cmdChoose")
        program.wait_message()
        self.picture(program, "confirmation")
        self.drop_message(program, CONFIRMATION,
                          "Sie haben folgende Update Optionen gewählt:\nReceiver: Orvanta SR 200 CI\n"
                          "Settings: Spain - List\n\nUpdaten mit OK ?", 0, ("OK", "Abbrechen"))
        host = self.server.url().removeprefix("http://")
        self.drop_message(program, SUCCESS,
                          "Update abgeschlossen\n\nDieser Service wird KOSTENLOS zur Verfügung gestellt von\n"
                          f"BRELLIX AUSTRIA - {host}\n\n", 0)
        program.wait_until(self.opened)
        self.assertEqual(self.opened(), [f"http://{host}/index_link.php?ref=usbtool"])
        self.expect(program, {"StatusBar1_2.text": "Update abgeschlossen",
                              "StatusBar1_2.toolTip": "Update abgeschlossen.", "StatusBar1_2.enabled": True,
                              "cmdChoose.text": "Starte Update", "cmdChoose.enabled": True})
        self.picture(program, "main-done")
        self.expect_stick({"sr200.abs": FIRMWARE, "sr200_es.sdx": SETTINGS,
                           "USB.ini": b"[Open]\r\nDir=\\Musik\r\n"} | COPIED)
        self.close(program)
        self.assertEqual((program.folder / "Settings.ini").read_bytes(), b"[USB Tool]\r\nchkAuto=0\r\ncmbSize=0\r\n")

    def test_with_the_decimal_comma(self):
        """As on every machine that speaks German; the figures are read back in the same way."""
        self.machine.set_decimal_separator(",")
        self.addCleanup(self.machine.set_decimal_separator, ".")
        program = self.start_loaded()
        self.assertRegex(program.text("lblHDFree"), r"^\d+,\d\d$")
        self.run_job(program)
        self.expect_stick({"sr200.abs": FIRMWARE, "sr200_at.sdx": SETTINGS} | COPIED)

    def test_the_label_is_left_alone(self):
        program = self.start_loaded()
        self.run_job(program)
        self.assertEqual((self.stick / LABEL).read_bytes(), b"ORVANTA")


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
