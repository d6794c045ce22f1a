"""The stick's figures, label and standard path; the settings; the question at the end."""

import shutil
import unittest

from windows_case import LABEL, TOOLS, Drive, WindowsCase, only

import stick_and_settings_test as shared
import stick_exchange_test
import stick_faults_test
from case import TITLE
from fault_server import body as answer
from server_files import catalog, row
from side_by_side import side_by_side

TEXT = "ä ß €"
SERIAL = ".windows-serial"


class Space(WindowsCase, only(shared.Space)):
    """The stick is a file system of its own: figures are those of the disk that a folder is on."""

    def test_five_megabytes_are_enough(self):
        self.mount("size=5m")
        (self.stick / LABEL).touch()
        program = self.start_loaded(drives=self.drives(label=None))
        self.assertEqual(program.text("lblHDSize"), "5.00")
        self.run_job(program)

    def test_less_than_five_megabytes_are_not(self):
        self.mount("size=4992k")
        program = self.start_loaded(drives=self.drives(label=None))
        self.assertEqual(program.text("lblHDFree"), "4.88")
        self.expect_refusal(program)

    def test_in_gigabytes_it_takes_five_gigabytes(self):
        self.mount("size=3g")
        program = self.start_loaded(drives=self.drives(label=None))
        program.choose("cmbSize", 1)
        program.wait_for("lblHDFree", "text", "3.000")
        self.expect_refusal(program)

    def test_the_unit(self):
        self.mount("size=2g")
        program = self.start(drives=self.drives(label=None))
        program.wait_for("lblHDSize", "text", "2048.00")
        program.choose("cmbSize", 1)
        program.wait_for("lblHDSize", "text", "2.000")
        self.expect(program, {"lblHDFree.text": "2.000", "lblHDUsed.text": "0.000", "lblSize_0.text": "GB",
                              "lblSize_1.text": "GB", "lblSize_2.text": "GB"})
        program.choose("cmbSize", 0)
        program.wait_for("lblHDFree", "text", "2048.00")
        self.expect(program, {"lblSize_0.text": "MB", "lblSize_1.text": "MB", "lblSize_2.text": "MB"})


class Full(WindowsCase, only(stick_faults_test.Full, "test_during_the_firmware", "test_during_the_channel_list")):
    LEFT = {"bild.jpg"}  # the room is measured, so the file is not begun

    def drives(self, **stick):
        return super().drives(**{"label": None} | stick)

    def start_loaded(self, **arguments):
        self.remount("size=8m")  # there seems to be room enough
        program = super().start_loaded(**arguments)
        return program

    def confirm(self, program):
        program.click("cmdChoose")
        program.wait_message()
        self.remount("size=1m")
        program.answer("OK")


class Gone(WindowsCase, only(stick_faults_test.Gone, "test_before_the_click", "test_between", "test_during",
                             "test_taken_from_the_table_before", "test_the_shipped")):
    pass


class Protected(WindowsCase, only(stick_faults_test.Protected, "test_firmware_that", "test_the_same_firmware",
                                  "test_an_autorun")):
    pass


class Exchange(WindowsCase):
    """A folder that is a drive has the serial number that a file in it tells, which Wine reads when it is plugged in."""

    def setUp(self):
        super().setUp()
        self.serials = iter(range(0x10000001, 0x10000009))
        self.number(self.stick)

    def number(self, folder):
        (folder / SERIAL).write_text(f"{next(self.serials):08X}\n", encoding="ascii")

    def files_of(self, folder):
        return {name: data for name, data in super().files_of(folder).items() if name not in (LABEL, SERIAL)}

    def fill_other(self, folder):
        super().fill_other(folder)
        self.number(folder)
        self.plug_again()

    def plug_again(self):
        self.machine.define("E", 2, self.stick)


class ExchangeInJob(Exchange, only(stick_exchange_test.Job, "test_while", "test_before", "test_during", "test_one_that_has")):
    pass


class ExchangeWhileSaving(Exchange, stick_exchange_test.Saving):
    def label_of(self, program):
        return self.label()

    def mark_of_input(self, program):
        return WindowsCase.mark_of_input(self, program)


class Stick(WindowsCase, only(shared.Stick, "test_searching")):
    def test_a_label_of_eleven_characters(self):
        program = self.start()
        program.wait_for("txtDT_Cap", "text", "ORVANTA")
        for label in ("ABCDEFGHIJK", "ÄÖÜäöüßÄÖÜä", TEXT):
            program.enter_text("txtDT_Cap", label)
            program.click("Command1")
            program.wait_until(lambda: self.label() == label, what=label)
            self.assertIsNone(program.message())
        self.close(program)
        self.machine.define("E", 2, self.stick)  # plugged in again: until then Wine remembers the old label
        program.restart()
        self.assertEqual(program.text("txtDT_Cap"), TEXT)

    def test_a_label_of_twelve_characters(self):
        program = self.start()
        for label in ("ABCDEFGHIJKL", "äöüÄÖÜßäöü€ß"):
            program.enter_text("txtDT_Cap", label)
            program.click("Command1")
            program.wait_message()
            self.drop_message(program, TITLE, "maximale Länge der Datenträgerbezeichnung ist 11 Zeichen", 64)
            self.expect(program, {"txtDT_Cap.text": label, "txtDT_Cap.selectionStart": 11,
                                  "txtDT_Cap.selectedText": label[11:], "txtDT_Cap.focus": True})
        self.assertEqual(self.label(), "ORVANTA")

    def test_the_standard_path(self):
        (self.stick / "USB.ini").write_bytes(b"[Open]\r\nDir=\\Musik\r\n")
        for folder in ("Musik", TEXT):
            (self.stick / folder).mkdir()
        program = self.start()
        program.wait_for("txtOpenPath", "text", "Musik")
        program.enter_text("txtOpenPath", TEXT)
        program.wait_for("cmdSaveOnStick", "enabled", True)
        program.click("cmdSaveOnStick")
        program.wait_for("cmdSaveOnStick", "enabled", False)
        self.assertEqual((self.stick / "USB.ini").read_bytes(), f"[Open]\r\nDir={TEXT}\r\n".encode("cp1252"))
        self.close(program)  # and asks nothing: all is saved
        program.restart()
        program.wait_for("txtOpenPath", "text", TEXT)
        program.click("cmdOpen")
        shown = program.wait_until(lambda: self.file_managers(program), what="the file manager")
        self.assertIn(TEXT, shown[0])

    def test_the_stick_is_opened(self):
        program = self.start()
        program.click("cmdOpen")
        shown = program.wait_until(lambda: self.file_managers(program), what="the file manager")
        self.assertIn("E:", shown[0])

    def test_a_program_is_not_started(self):
        """Neither the one that the stick names, nor the one beside a folder of that name."""
        for name in ("Fotos.exe", "Filme.exe"):
            shutil.copyfile(TOOLS / "formatter.exe", self.stick / name)  # it would leave a note that it was called
        (self.stick / "Filme").mkdir()
        (self.stick / "USB.ini").write_bytes(b"[Open]\r\nDir=Fotos.exe\r\n")
        program = self.start()
        program.wait_for("txtOpenPath", "text", "Fotos.exe")
        program.click("cmdOpen")
        self.show(program, "Filme")
        self.show(program, "")
        self.assertFalse((self.stick / "called").exists())
        self.assertIsNone(program.message())

    def test_a_folder_that_is_called_like_a_program(self):
        (self.stick / "Fotos.exe").mkdir()
        program = self.start()
        self.show(program, "Fotos.exe")

    def show(self, program, path):
        """The stick names that folder, and the file manager shows it."""
        (self.stick / "USB.ini").write_bytes(f"[Open]\r\nDir={path}\r\n".encode("cp1252"))
        program.click("cmdSearch")
        program.wait_for("txtOpenPath", "text", path)
        program.click("cmdOpen")
        program.wait_until(lambda: any((path or "E:") in title for title in self.file_managers(program)), what=path)

    def file_managers(self, program):
        return [title for kind, title in program.other_windows() if kind == "ExplorerWClass" and title]

    def test_pasted_by_keyboard(self):
        program = self.start()
        program.clipboard(TEXT)
        program.focus("txtOpenPath")
        program.type("", "Ctrl+V")
        program.wait_for("cmdSaveOnStick", "enabled", True)
        self.assertEqual(program.text("txtOpenPath"), TEXT)


class Texts(WindowsCase):
    def test_they_are_the_same_everywhere(self):
        """In the program's folder, on the stick, in the news and in a message."""
        news = ";".join([TEXT, f"&{TEXT}&&", "", ""])
        self.serve("usb-news.csv", news.encode("cp1252"))
        self.serve("usb-list.csv", self.catalog_with(TEXT))
        known = self.server.behaviour
        self.server.behaviour = lambda path: answer(b"firmware") if ".abs" in path else known(path)
        program = self.start_loaded(drives=self.drives(label=TEXT))
        self.expect(program, {"lbl_news_0.text": TEXT, "lbl_news_1.text": f"&{TEXT}&&", "txtDT_Cap.text": TEXT,
                              "Firm_Option_1.text": "SR 200 CI", "lbl_Aenderung.text": TEXT})
        program.click("cmdChoose")
        self.assertIn(f"Receiver: Orvanta {TEXT}\n", program.wait_message()["text"])
        program.answer("OK")
        program.wait_message(title="Update erfolgreich")
        program.answer("OK")
        self.assertEqual(self.stick_files()[f"{TEXT}.abs"], b"firmware")

    def catalog_with(self, text):
        return catalog(changes={1: row(text, "sr200ci.gif", f"{text}.abs", "1", text)})


class Types(WindowsCase):
    """Of drives of all kinds only the removable ones are sticks."""

    def test_only_removable_drives_are_sticks(self):
        folders = {letter: self.home / letter for letter in "DEFG"}
        for folder in folders.values():
            folder.mkdir()
        kinds = {"D": 3, "E": 2, "F": 4, "G": 5}
        program = self.start(drives=[Drive(letter, kind, folders[letter], label=f"KIND {kind}")
                                     for letter, kind in kinds.items()])
        self.expect(program, {"lblLW.text": "E:\\", "txtDT_Cap.text": "KIND 2"})
        self.assertNotIn("frmAuswahl", program.windows())
        program.set_drives([Drive(letter, kind, folders[letter], label=f"KIND {kind}")
                            for letter, kind in kinds.items() if kind != 2])
        program.click("cmdSearch")
        program.wait_for("StatusBar1_1", "text", "No Stick")


class End(WindowsCase, shared.End):
    def test_settings_of_a_program_folder_that_cannot_be_written(self):
        """They are in the user's folder for the data of programs, and are found there again."""
        program = self.start(start=False)
        own = self.machine.prefix / "drive_c/users/root/AppData/Roaming/orvanta-usbtool"
        shutil.rmtree(own, ignore_errors=True)
        self.addCleanup(shutil.rmtree, own, ignore_errors=True)
        self.write_protect(program.folder)
        program.start()
        program.choose("cmbSize", 1)
        program.wait_for("lblSize_0", "text", "GB")
        self.close(program)
        self.assertEqual((own / "Settings.ini").read_bytes(), b"[USB Tool]\r\nchkAuto=0\r\ncmbSize=1\r\n")
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
        self.assertEqual((program.folder / "Settings.ini").read_bytes(), b"[USB Tool]\r\nchkAuto=1\r\ncmbSize=1\r\n")
        program.restart()
        self.expect(program, {"cmbSize.text": "GB", "chkAuto.checked": True, "lblSize_0.text": "GB"})
        self.assertRegex(program.text("lblHDSize"), r"^\d+\.\d\d\d$")
        # The automatic detection is on again, too.
        program.set_drives(self.drives(stick=None))
        program.wait_for("StatusBar1_1", "text", "No Stick")
        self.close(program)


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
