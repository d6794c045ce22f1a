"""The run that everybody makes: plug in, choose, start, done. Every text is exact."""

import time
import unittest

from case import CONFIRMATION, COPIED, GIB, SUCCESS, TITLE, WindowCase
from fault_server import body
from server_files import FIRMWARE, NEWS, SETTINGS, VERSION
from side_by_side import side_by_side

CHANNELS_AUSTRIA = ("1. ORF 1    6. ZDF\n2. ORF 2    7. BR 3\n3. ATV+     8. SAT 1\n"
                    "4. TW 1     9. PRO 7\n5. ARD     10. ...")
CHANNELS_GERMANY = ("1. ARD      6. SAT 1\n2. ZDF      7. PRO 7\n3. 3 Sat    8. Kabel 1\n"
                    "4. RTL      9. VOX\n5. RTL 2   10. ...")
CHANNELS_ITALY = ("1. RAI 1    6. Italia1\n2. RAI 2    7. LA 7\n3. RAI 3    8. TSI 1\n"
                  "4. Rete 4   9. TSI 2\n5. Canale5 10. ...")
CHANNELS_FRANCE = "1. FR1      6. ...\n2. FR2      7. ...\n3. FR3      8. ...\n4. ...      9. ...\n5. ...     10. ..."
CHANNELS_SPAIN = "1. TVE1     6. ...\n2. TVE2     7. ...\n3. TVE3     8. ...\n4. ...      9. ...\n5. ...     10. ..."

FIXED_TEXTS = {
    "Label15": "Anleitung:",
    "Label16": "1. USB Stick an PC anschließen.",
    "Label17": "2. Orvanta Receivertype wählen.",
    "Label18": "3. Senderlisten Type wählen.",
    "Label19": "4. Starte Update klicken.",
    "Label21": "Zum Updaten USB Stick in Receiver stecken und im Menü den Punkt USB - Data Transfer auswählen.",
    "Sett_Option_0": "Österreich",
    "Sett_Option_1": "Deutschland",
    "Sett_Option_2": "Italia",
    "Sett_Option_3": "France",
    "Sett_Option_4": "Spain",
    "Frame2": "USB Stick Informationen",
    "frm_News": "News",
    "cmdtest": "USB-HDD Format Assistent",
    "cmdSearch": "USB-Stick finden / aktualisieren",
    "Command1": "Benennen",
    "chkAuto": "autom. erkennen von neuen Laufwerken",
    "lblCapSize": "Speicherplatz:",
    "lblCapUsed": "Belegt:",
    "lblCapFree": "Frei:",
    "lblCapUnit": "Angabe in",
    "lblCapLabel": "Bezeichnung",
}



class Start(WindowCase):
    def first_look(self, program):
        """The window as it is at first, in one piece: the check begins four seconds later."""
        program.wait_window("frmMain")
        return program.all("frmMain")

    def test_before_the_check_with_a_stick(self):
        program = self.start(drives=self.drives(free=3 * GIB))
        window = self.first_look(program)
        self.assertEqual(self.server.requests, [])
        self.assertEqual({name: window[name]["text"] for name in FIXED_TEXTS}, FIXED_TEXTS)
        self.assertEqual(program.windows()["frmMain"]["title"], TITLE)
        self.assertTrue(program.windows()["frmMain"]["hasIcon"])
        states = {
            "cmdChoose": ("Suche Updates...", False),
            "StatusBar1_1": ("USB Stick", True),
            "StatusBar1_2": ("Suche nach Updates...", True),
            "lblLW": ("E:\\", True),
            "txtDT_Cap": ("ORVANTA", True),
            "txtFAT": ("FAT32", True),
            "lblHDSize": ("4096.00", True),
            "lblHDFree": ("3072.00", True),
            "lblHDUsed": ("1024.00", True),
            "lblSize_0": ("MB", True),
            "lblSize_1": ("MB", True),
            "lblSize_2": ("MB", True),
            "cmbSize": ("MB", True),
            "cmdSaveOnStick": ("speichern", False),
            "txtOpenPath": ("", True),
            "lbl_Aenderung": ("", True),
            "lbl_news_0": ("", True),
        }
        self.assertEqual({name: (window[name]["text"], window[name]["enabled"]) for name in states}, states)
        self.assertEqual(window["cmbSize"]["items"], ["MB", "GB"])
        self.assertFalse(window["chkAuto"]["checked"])
        self.assertEqual(window["StatusBar1_1"]["toolTip"], "USB-Stick gefunden.")
        self.assertEqual(window["StatusBar1_2"]["toolTip"], "Updates werden gesucht.")
        self.assertTrue(window["StatusBar1_1"]["hasPicture"])
        self.assertTrue(window["StatusBar1_2"]["hasPicture"])
        self.assertEqual(window["lblHDUsedColor"]["background"], "#de0000")
        self.assertEqual(window["lblHDFreeColor"]["background"], "#00de00")
        options = [f"Firm_Option_{i}" for i in range(9)] + [f"Sett_Option_{i}" for i in range(5)]
        self.assertEqual({name: (window[name]["enabled"], window[name]["checked"]) for name in options},
                         {name: (False, False) for name in options})

    def test_before_and_after_the_check_without_a_stick(self):
        program = self.start(drives=self.drives(stick=None))
        window = self.first_look(program)
        self.assertEqual(window["StatusBar1_1"]["text"], "No Stick")
        self.assertFalse(window["StatusBar1_1"]["enabled"])
        self.assertEqual(window["StatusBar1_1"]["toolTip"],
                         "Kein USB-Stick gefunden. Schließen Sie den USB-Stick am PC an.")
        self.assertEqual(window["cmdChoose"]["text"], "Suche Updates...")
        for name in ("lblHDSize", "lblHDFree", "lblHDUsed", "txtDT_Cap", "txtFAT"):
            self.assertEqual(window[name]["text"], "", name)
        self.wait_loaded(program)
        program.wait_for("cmdChoose", "text", "Starte Update")
        self.assertFalse(program.get("cmdChoose")["enabled"])

    def test_the_check_comes_once_and_not_before_four_seconds(self):
        begin = []

        def answer(handler):
            begin.append(time.monotonic())
            body(VERSION)(handler)

        self.serve("usb-version.txt", answer)
        program = self.start()
        window = self.first_look(program)
        self.assertEqual(window["StatusBar1_2"]["text"], "Suche nach Updates...")
        self.wait_loaded(program)
        self.run_job(program)
        self.assertEqual(self.downloads(), ["usb-version.txt", "usb-news.csv", "usb-list.csv", "usb-list.csv",
                                            "sr200.abs.txt", "sr200_at.sdx.txt"])
        self.assertGreaterEqual(begin[0] - program.started, 4.0)
        for request in self.server.requests:
            self.assertEqual(request.headers["User-Agent"], "Qentra:INET")
            self.assertEqual(request.headers["Cache-Control"], "no-cache")


class Job(WindowCase):
    def test_the_whole_job(self):
        (self.stick / "USB.ini").write_bytes(b"[Open]\r\nDir=\\Musik\r\n")
        program = self.start_loaded()
        self.expect_preselection(program)
        self.assertNotEqual(program.get("Image1")["pictureSize"], [0, 0])
        self.choose_other_receivers(program)
        program.click("cmdChoose")
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
        self.expect_stick({"sr200.abs": FIRMWARE, "sr200_es.sdx": SETTINGS,
                           "USB.ini": b"[Open]\r\nDir=\\Musik\r\n"} | COPIED)
        self.close(program)
        self.assertEqual((program.folder / "Settings.ini").read_bytes(),
                         b"[USB Tool]\r\nchkAuto=0\r\ncmbSize=0\r\n")

    def expect_preselection(self, program):
        news = NEWS.decode("cp1252").split(";")
        self.expect(program, {
            "StatusBar1_2.text": "Updates geladen.", "StatusBar1_2.toolTip": "Updates wurden geladen.",
            "cmdChoose.text": "Starte Update", "cmdChoose.enabled": True,
            "lbl_news_0.text": news[0], "lbl_news_1.text": news[1], "lbl_news_2.text": news[2],
            "lbl_news_3.text": news[3],
            "Firm_Option_0.enabled": False, "Firm_Option_1.enabled": True, "Firm_Option_2.enabled": True,
            "Firm_Option_3.enabled": True, "Firm_Option_4.enabled": False, "Firm_Option_5.enabled": True,
            "Firm_Option_1.checked": True, "Firm_Option_2.checked": False,
            "Sett_Option_0.checked": True, "Sett_Option_0.enabled": True, "Sett_Option_1.enabled": True,
            "Sett_Option_2.enabled": False, "Sett_Option_3.enabled": False, "Sett_Option_4.enabled": True,
            "lbl_firmstand.text": "Stand: 14.03.2026 (V1.32)", "lbl_settstand.text": "Stand: 02.09.2026",
            "lbl_Aenderung.text": "Größere Schrift", "lbl_reihenfolge.text": CHANNELS_AUSTRIA,
            "txtOpenPath.text": "Musik",
        })

    def choose_other_receivers(self, program):
        program.click("Firm_Option_2")  # lacks the Austrian list
        program.wait_for("lbl_firmstand", "text", "Stand: 22.04.2026 (V2.07)")
        self.expect(program, {"Sett_Option_0.enabled": False, "Sett_Option_0.checked": False,
                             "Sett_Option_1.enabled": True, "Sett_Option_1.checked": False,
                             "lbl_settstand.text": "Stand: Nicht verfügbar", "lbl_Aenderung.text": "Neue Timer",
                             "lbl_reihenfolge.text": CHANNELS_AUSTRIA})
        program.click("Sett_Option_1")
        program.wait_for("lbl_settstand", "text", "Stand: 19.07.2026")
        self.expect(program, {"lbl_reihenfolge.text": CHANNELS_GERMANY, "Sett_Option_1.checked": True})
        program.click("Firm_Option_5")
        program.wait_for("lbl_settstand", "text", "Stand: Nicht verfügbar")
        for number, channels in ((2, CHANNELS_ITALY), (3, CHANNELS_FRANCE)):
            program.click(f"Sett_Option_{number}")
            program.wait_for("lbl_reihenfolge", "text", channels)
        program.click("Firm_Option_1")
        program.wait_for("lbl_firmstand", "text", "Stand: 14.03.2026 (V1.32)")
        program.click("Sett_Option_4")
        program.wait_for("lbl_reihenfolge", "text", CHANNELS_SPAIN)

    def test_files_that_are_there_already(self):
        (self.stick / "autorun.inf").write_bytes(b"[autorun]\r\nopen=something-else.exe\r\n" * 100)
        (self.stick / "sr200.abs").write_bytes(b"longer than the new one" * 10000)
        (self.stick / "sr200_at.sdx").write_bytes(SETTINGS)
        (self.stick / "Urlaub").mkdir()
        (self.stick / "Urlaub" / "bild.jpg").write_bytes(b"picture")
        before = {name: (self.stick / name).stat() for name in ("sr200_at.sdx", "Urlaub/bild.jpg")}
        self.run_job(self.start_loaded())
        self.expect_stick({"sr200.abs": FIRMWARE, "sr200_at.sdx": SETTINGS, "Urlaub/bild.jpg": b"picture"} | COPIED)
        for name, old in before.items():
            new = (self.stick / name).stat()
            self.assertEqual((new.st_ino, new.st_mtime_ns), (old.st_ino, old.st_mtime_ns), name)

    def test_cancel_fetches_and_writes_nothing(self):
        program = self.start_loaded()
        asked = len(self.server.requests)
        program.click("cmdChoose")
        program.wait_message(title=CONFIRMATION)
        program.answer("Abbrechen")
        program.click("cmdChoose")
        program.wait_message(title=CONFIRMATION)
        program.type("", "Escape")
        program.wait_until(lambda: program.message() is None)
        self.assertEqual(len(self.server.requests), asked)
        self.expect_stick({})
        self.assertEqual(program.text("StatusBar1_2"), "Updates geladen.")

    def test_no_channel_list_chosen(self):
        program = self.start_loaded()
        program.click("Firm_Option_3")
        program.wait_for("lbl_settstand", "text", "Stand: Nicht verfügbar")
        program.click("cmdChoose")
        box = program.wait_message(title=CONFIRMATION)
        self.assertIn("\nSettings: Auswahl nicht verfügbar\n", box["text"])
        program.answer("OK")
        program.wait_message(title=SUCCESS)
        program.answer("OK")
        self.expect_stick({"sr400.abs": FIRMWARE} | COPIED)

    def test_nothing_but_empty_rows(self):
        self.serve("usb-list.csv", "\r\n".join([";" * 14] * 9).encode())
        program = self.start_loaded()
        self.expect(program, {f"Firm_Option_{i}.enabled": False for i in range(9)})
        self.expect(program, {"lbl_firmstand.text": "Stand: –", "lbl_settstand.text": "Stand: –"})
        program.click("cmdChoose")
        self.expect_error(program, 9)
        self.expect_stick({})


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
