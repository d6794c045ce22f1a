"""The stick's figures, label and standard path; the two settings; the question at the end."""

import unittest

from case import GIB, TITLE, WindowCase
from side_by_side import side_by_side


class ToolTips(WindowCase):
    def test_what_the_settings_do(self):
        program = self.start_loaded()
        self.assertEqual(program.get("cmbSize")["toolTip"], "Einheit, in der die Größen angegeben werden. "
                         "In GB verlangt das Update 5 GB freien Platz statt 5 MB.")
        auto = program.get("chkAuto")
        self.assertEqual(auto["toolTip"], "Bemerkt von selbst, wenn ein USB-Stick angeschlossen oder abgezogen wird.")
        self.assertEqual(auto["accessibleDescription"], auto["toolTip"])


class Space(WindowCase):
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
        self.expect(program, {"lblHDFree.text": "1.000", "lblHDUsed.text": "1.000", "lblSize_0.text": "GB",
                             "lblSize_1.text": "GB", "lblSize_2.text": "GB"})
        program.choose("cmbSize", 0)
        program.wait_for("lblHDFree", "text", "1024.00")
        self.expect(program, {"lblSize_0.text": "MB", "lblSize_1.text": "MB", "lblSize_2.text": "MB"})


class Stick(WindowCase):
    def test_searching_for_it(self):
        program = self.start_loaded(drives=self.drives(stick=None))
        program.set_drives(self.drives())
        program.click("cmdSearch")
        program.wait_for("lblLW", "text", "E:\\")
        self.expect(program, {"cmdChoose.enabled": True, "cmdChoose.text": "Starte Update",
                             "StatusBar1_1.text": "USB Stick", "StatusBar1_1.enabled": True})
        program.set_drives(self.drives(stick=None))
        program.click("cmdSearch")
        program.wait_for("cmdChoose", "text", "USB Stick einstecken")
        self.expect(program, {"cmdChoose.enabled": False, "StatusBar1_1.text": "No Stick",
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
            program.enter_text("txtDT_Cap", "")
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
            self.expect(program, {"txtDT_Cap.text": label, "txtDT_Cap.selectionStart": 11,
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
        self.assertEqual(self.opened()[0].rstrip("/"), str(self.stick / "Musik"))
        program.enter_text("txtOpenPath", "Größe")
        program.wait_for("cmdSaveOnStick", "enabled", True)
        program.click("cmdSaveOnStick")
        program.wait_for("cmdSaveOnStick", "enabled", False)
        self.assertEqual((self.stick / "USB.ini").read_bytes(), "[Open]\r\nDir=Größe\r\n".encode("cp1252"))
        program.click("cmdOpen")  # without a search before it
        program.wait_until(lambda: len(self.opened()) == 2)
        self.assertEqual(self.opened()[1].rstrip("/"), str(self.stick / "Größe"))
        program.enter_text("txtOpenPath", "\\Musik")
        program.click("cmdSaveOnStick")
        program.click("cmdOpen")
        program.wait_until(lambda: len(self.opened()) == 3)
        self.assertEqual(self.opened()[2].rstrip("/"), str(self.stick / "Musik"))
        self.close(program)  # and asks nothing: all is saved


class End(WindowCase):
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

    def test_settings_of_a_program_folder_that_cannot_be_written(self):
        """They are in the user's folder for settings, and are found there again."""
        program = self.start(start=False)
        self.write_protect(program.folder)
        program.start()
        program.choose("cmbSize", 1)
        program.wait_for("lblSize_0", "text", "GB")
        self.close(program)
        own = program.home / "config" / "orvanta-usbtool" / "Settings.ini"
        self.assertEqual(own.read_bytes(), b"[USB Tool]\r\nchkAuto=0\r\ncmbSize=1\r\n")
        self.assertFalse((program.folder / "Settings.ini").exists())
        program.restart()
        program.wait_for("lblSize_0", "text", "GB")
        self.close(program)

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
        self.expect(program, {"chkAuto.checked": True, "lblSize_0.text": "GB", "lblSize_1.text": "GB",
                             "lblSize_2.text": "GB"})
        # The automatic detection is on again, too.
        program.set_drives(self.drives(stick=None))
        program.wait_for("StatusBar1_1", "text", "No Stick")
        self.close(program)


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
