"""The run that everybody makes: plug in, choose, start, done. Every text is exact."""

import time
import unittest

from case import (CONFIRMATION, FIRMWARE, GIB, NEWS, SETTINGS, SUCCESS, TITLE, VERSION, WindowCase, body,
                  side_by_side)

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

SHIPPED = {"autorun.inf": None, "orvantastick.ico": None}


class Typical(WindowCase):
    def check(self, program, expected):
        """{"control.property": value}."""
        found = {}
        for key in expected:
            name, prop = key.split(".")
            found[key] = program.get(name)[prop]
        self.assertEqual(found, expected)


class Start(Typical):
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


class Job(Typical):
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
        self.check(program, {"StatusBar1_2.text": "Update abgeschlossen",
                             "StatusBar1_2.toolTip": "Update abgeschlossen.", "StatusBar1_2.enabled": True,
                             "cmdChoose.text": "Starte Update", "cmdChoose.enabled": True})
        self.expect_stick({"sr200.abs": FIRMWARE, "sr200_es.sdx": SETTINGS,
                           "USB.ini": b"[Open]\r\nDir=\\Musik\r\n"} | SHIPPED)
        self.close(program)
        self.assertEqual((program.folder / "Settings.ini").read_bytes(),
                         b"[USB Tool]\r\nchkAuto=0\r\ncmbSize=0\r\n")

    def expect_preselection(self, program):
        news = NEWS.decode("cp1252").split(";")
        self.check(program, {
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
        self.check(program, {"Sett_Option_0.enabled": False, "Sett_Option_0.checked": False,
                             "Sett_Option_1.enabled": True, "Sett_Option_1.checked": False,
                             "lbl_settstand.text": "Stand: Nicht verfügbar", "lbl_Aenderung.text": "Neue Timer",
                             "lbl_reihenfolge.text": CHANNELS_AUSTRIA})
        program.click("Sett_Option_1")
        program.wait_for("lbl_settstand", "text", "Stand: 19.07.2026")
        self.check(program, {"lbl_reihenfolge.text": CHANNELS_GERMANY, "Sett_Option_1.checked": True})
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
        self.expect_stick({"sr200.abs": FIRMWARE, "sr200_at.sdx": SETTINGS, "Urlaub/bild.jpg": b"picture"} | SHIPPED)
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
        self.expect_stick({"sr400.abs": FIRMWARE} | SHIPPED)

    def test_nothing_but_empty_rows(self):
        self.serve("usb-list.csv", "\r\n".join([";" * 14] * 9).encode())
        program = self.start_loaded()
        self.check(program, {f"Firm_Option_{i}.enabled": False for i in range(9)})
        self.check(program, {"lbl_firmstand.text": "Stand: –", "lbl_settstand.text": "Stand: –"})
        program.click("cmdChoose")
        self.expect_error(program, 9)
        self.expect_stick({})


class Space(Typical):
    REFUSAL = ("Sie benötigen mindestens 5 MB freien Speicherplatz am USB-Stick!\n"
               "Löschen Sie unbenötigte Daten und versuchen Sie es nochmal.")
    REFUSAL_TITLE = "Zuwenig Speicher verfügbar !"

    def expect_refusal(self, program):
        program.click("cmdChoose")
        self.drop_message(program, self.REFUSAL_TITLE, self.REFUSAL, 16)
        self.expect_stick({})

    def test_five_megabytes_are_enough(self):
        self.run_job(self.start_loaded(drives=self.drives(free=5 * 1024**2)))

    def test_less_than_five_megabytes_are_not(self):
        program = self.start_loaded(drives=self.drives(free=int(4.99 * 1024**2)))
        self.assertEqual(program.text("lblHDFree"), "4.99")
        self.expect_refusal(program)

    def test_in_gigabytes_it_takes_five_gigabytes(self):
        program = self.start_loaded(drives=self.drives(total=8 * GIB, free=3 * GIB))
        program.choose("cmbSize", 1)
        program.wait_for("lblHDFree", "text", "3.000")
        self.expect_refusal(program)
        program.set_drives(self.drives(total=8 * GIB, free=5 * GIB))
        self.run_job(program)

    def test_the_unit(self):
        program = self.start(drives=self.drives(total=2147483648, free=1073741824))
        program.wait_for("lblHDSize", "text", "2048.00")
        program.choose("cmbSize", 1)
        program.wait_for("lblHDSize", "text", "2.000")
        self.check(program, {"lblHDFree.text": "1.000", "lblHDUsed.text": "1.000", "lblSize_0.text": "GB",
                             "lblSize_1.text": "GB", "lblSize_2.text": "GB"})
        program.choose("cmbSize", 0)
        program.wait_for("lblHDFree", "text", "1024.00")
        self.check(program, {"lblSize_0.text": "MB", "lblSize_1.text": "MB", "lblSize_2.text": "MB"})


class Stick(Typical):
    def test_searching_for_it(self):
        program = self.start_loaded(drives=self.drives(stick=None))
        program.set_drives(self.drives())
        program.click("cmdSearch")
        program.wait_for("lblLW", "text", "E:\\")
        self.check(program, {"cmdChoose.enabled": True, "cmdChoose.text": "Starte Update",
                             "StatusBar1_1.text": "USB Stick", "StatusBar1_1.enabled": True})
        program.set_drives(self.drives(stick=None))
        program.click("cmdSearch")
        program.wait_for("cmdChoose", "text", "USB Stick einstecken")
        self.check(program, {"cmdChoose.enabled": False, "StatusBar1_1.text": "No Stick",
                             "StatusBar1_1.enabled": False, "lblHDSize.text": "", "lblHDFree.text": "",
                             "lblHDUsed.text": "", "txtDT_Cap.text": "", "txtFAT.text": "", "lblLW.text": "E:\\"})

    def test_a_label_of_eleven_characters(self):
        program = self.start()
        program.wait_for("txtDT_Cap", "text", "ORVANTA")
        for label in ("ABCDEFGHIJK", "ÄÖÜäöüßÄÖÜä"):
            program.enter_text("txtDT_Cap", label)
            program.click("Command1")
            drives = program.folder / "Drives.ini"
            program.wait_until(lambda: f"Label={label}\r\n".encode("cp1252") in drives.read_bytes())
            program.click("cmdSearch")
            program.wait_for("txtDT_Cap", "text", label)
            self.assertIsNone(program.message())

    def test_a_label_of_twelve_characters(self):
        program = self.start()
        program.wait_for("txtDT_Cap", "text", "ORVANTA")
        before = (program.folder / "Drives.ini").read_bytes()
        for label in ("ABCDEFGHIJKL", "äöüÄÖÜßäöü€ß"):
            program.enter_text("txtDT_Cap", label)
            program.click("Command1")
            self.drop_message(program, TITLE, "maximale Länge der Datenträgerbezeichnung ist 11 Zeichen", 64)
            self.check(program, {"txtDT_Cap.text": label, "txtDT_Cap.selectionStart": 11,
                                 "txtDT_Cap.selectedText": label[11:], "txtDT_Cap.focus": True})
        self.assertEqual((program.folder / "Drives.ini").read_bytes(), before)

    def test_the_standard_path(self):
        (self.stick / "USB.ini").write_bytes(b"[Open]\r\nDir=\\Musik\r\n")
        for folder in ("Musik", "Größe"):
            (self.stick / folder).mkdir()
        program = self.start()
        program.wait_for("txtOpenPath", "text", "Musik")
        program.click("cmdOpen")
        program.wait_until(lambda: len(self.opened()) == 1)
        self.assertEqual(self.opened(), [str(self.stick / "Musik")])
        program.enter_text("txtOpenPath", "Größe")
        program.wait_for("cmdSaveOnStick", "enabled", True)
        program.click("cmdSaveOnStick")
        program.wait_for("cmdSaveOnStick", "enabled", False)
        self.assertEqual((self.stick / "USB.ini").read_bytes(), "[Open]\r\nDir=Größe\r\n".encode("cp1252"))
        program.click("cmdSearch")
        program.click("cmdOpen")
        program.wait_until(lambda: len(self.opened()) == 2)
        self.assertEqual(self.opened()[1], str(self.stick / "Größe"))
        self.close(program)  # and asks nothing: all is saved


class End(Typical):
    QUESTION = "Sie haben Informationen abgeändert.\nWollen Sie speichern?"

    def edit_and_close(self):
        program = self.start()
        program.enter_text("txtOpenPath", "Musik")
        program.wait_for("cmdSaveOnStick", "enabled", True)
        program.close()
        return program

    def test_the_question_answered_yes(self):
        program = self.edit_and_close()
        self.drop_message(program, TITLE, self.QUESTION, 64, ("Ja", "Nein"))
        self.assertEqual(program.exit_status(), 0)
        self.expect_stick({"USB.ini": b"[Open]\r\nDir=Musik\r\n"})

    def test_the_question_answered_no(self):
        program = self.edit_and_close()
        program.wait_message(title=TITLE)
        program.answer("Nein")
        self.assertEqual(program.exit_status(), 0)
        self.expect_stick({})
        self.assertTrue((program.folder / "Settings.ini").exists())

    def test_settings_survive(self):
        program = self.start(files={"Settings.ini": b"[Other]\r\nkey=1\r\n[USB Tool]\r\nnoise=2\r\n"})
        program.choose("cmbSize", 1)
        program.wait_for("lblSize_0", "text", "GB")
        program.click("chkAuto")
        program.wait_for("chkAuto", "checked", True)
        self.close(program)
        self.assertEqual((program.folder / "Settings.ini").read_bytes(),
                         b"[USB Tool]\r\nchkAuto=1\r\ncmbSize=1\r\n")
        program.restart()
        program.wait_for("cmbSize", "text", "GB")
        program.wait_for("lblHDSize", "text", "4.000")
        self.check(program, {"chkAuto.checked": True, "lblSize_0.text": "GB", "lblSize_1.text": "GB",
                             "lblSize_2.text": "GB"})
        # The automatic detection is on again, too.
        program.set_drives(self.drives(stick=None))
        program.wait_for("StatusBar1_1", "text", "No Stick")
        self.close(program)


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
