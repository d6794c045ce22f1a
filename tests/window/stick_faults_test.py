"""A stick that cannot be written, is full, or goes at a bad moment. What was written before stays."""

import shutil
import subprocess
import unittest

from case import CONFIRMATION, COPIED, GIB, MIB, SHIPPED, TITLE, WindowCase
from server_files import FIRMWARE, SETTINGS
from side_by_side import side_by_side
from sticks import NONE, WAITING

# Bytes that are free by the table of drives. Without that number what is on the stick is measured, and where that takes
# too long, as on a busy machine, the file system's own number counts.
PROMISED = 4 * GIB


class Protected(WindowCase):
    def test_a_stick_that_is_mounted_for_reading(self):
        self.mount("size=1m")
        (self.stick / "bild.jpg").write_bytes(b"picture")
        self.remount("ro")
        program = self.start_loaded(drives=self.drives(free=PROMISED))
        self.confirm(program)
        self.expect_error(program, 70)
        self.expect_stick({"bild.jpg": b"picture"})

    def test_reading_it_all_the_same(self):
        self.mount("size=1m")
        (self.stick / "USB.ini").write_bytes(b"[Open]\r\nDir=Musik\r\n")
        self.remount("ro")
        program = self.start_loaded()
        self.assertEqual(program.text("txtOpenPath"), "Musik")
        program.enter_text("txtOpenPath", "Filme")
        program.click("cmdSaveOnStick")  # fails in silence, and can be tried again
        self.assertTrue(program.get("cmdSaveOnStick")["enabled"])
        program.close()
        self.drop_message(program, TITLE, "Sie haben Informationen abgeändert.\nWollen Sie speichern?", 64, ("Ja", "Nein"))
        self.assertEqual(program.exit_status(), 0)
        self.expect_stick({"USB.ini": b"[Open]\r\nDir=Musik\r\n"})

    def test_a_folder_that_cannot_be_changed(self):
        try:
            change = subprocess.run(["chattr", "+i", self.stick], capture_output=True, check=False)
        except FileNotFoundError:
            self.skipTest("there is no chattr")
        if change.returncode != 0:
            self.skipTest("this file system or user cannot protect a folder from root")
        self.addCleanup(subprocess.run, ["chattr", "-i", self.stick], check=True)
        program = self.start_loaded()
        self.confirm(program)
        self.expect_error(program, 70)
        self.expect_stick({})

    def test_firmware_that_is_read_only(self):
        (self.stick / "sr200.abs").write_bytes(b"old")
        (self.stick / "sr200.abs").chmod(0o444)
        program = self.start_loaded()
        self.confirm(program)
        self.expect_error(program, 70, f"\n{self.stick_path('sr200.abs')}\n")
        self.expect_stick({"sr200.abs": b"old"})

    def test_the_same_firmware_read_only(self):
        (self.stick / "sr200.abs").write_bytes(FIRMWARE)
        (self.stick / "sr200.abs").chmod(0o444)
        self.run_job(self.start_loaded())  # nothing to write
        self.expect_stick({"sr200.abs": FIRMWARE, "sr200_at.sdx": SETTINGS} | COPIED)

    def test_an_autorun_file_and_an_icon_that_are_read_only(self):
        for name in COPIED:
            (self.stick / name).write_bytes(b"old")
            (self.stick / name).chmod(0o444)
        self.run_job(self.start_loaded())
        self.expect_stick({"sr200.abs": FIRMWARE, "sr200_at.sdx": SETTINGS} | COPIED)

    def test_a_program_folder_that_is_read_only(self):
        """What is copied may be written over the next time."""
        program = self.start_loaded()
        for name in COPIED:
            (program.folder / name).chmod(0o444)
        for _ in range(2):
            self.run_job(program)
            for name in COPIED:
                self.assertNotEqual((self.stick / name).stat().st_mode & 0o200, 0, name)
        self.expect_stick({"sr200.abs": FIRMWARE, "sr200_at.sdx": SETTINGS} | COPIED)


class Full(WindowCase):
    """The table of drives promises more than there is."""

    LEFT = {"bild.jpg", "sr200.abs"}  # a file that was begun stays

    def test_during_the_firmware(self):
        self.mount("size=1m")
        (self.stick / "bild.jpg").write_bytes(b"picture")
        self.serve("sr200.abs.txt", FIRMWARE * 300)
        program = self.start_loaded(drives=self.drives(free=PROMISED))
        self.confirm(program)
        self.expect_error(program, 61)
        self.assertEqual((self.stick / "bild.jpg").read_bytes(), b"picture")
        self.assertEqual({path.name for path in self.stick.iterdir()}, self.LEFT)

    def test_during_the_channel_list(self):
        self.mount("size=1m")
        self.serve("sr200_at.sdx.txt", SETTINGS * 300)
        program = self.start_loaded(drives=self.drives(free=PROMISED))
        self.confirm(program)
        self.expect_error(program, 61)
        self.assertEqual((self.stick / "sr200.abs").read_bytes(), FIRMWARE)
        self.assertFalse((self.stick / "autorun.inf").exists())

    def test_during_the_icon(self):
        self.mount("size=64k")
        program = self.start_loaded(drives=self.drives(free=PROMISED))
        self.confirm(program)
        self.expect_error(program, 61)
        for name, contents in (("sr200.abs", FIRMWARE), ("sr200_at.sdx", SETTINGS),
                               ("autorun.inf", (SHIPPED / "autorun.inf").read_bytes())):
            self.assertEqual((self.stick / name).read_bytes(), contents, name)

    def test_no_names_left(self):
        self.mount("size=8m", "nr_inodes=2")  # one for the folder itself
        program = self.start_loaded(drives=self.drives(free=PROMISED))
        self.confirm(program)
        self.expect_error(program, 61)
        self.expect_stick({"sr200.abs": FIRMWARE})

    def test_the_size_of_the_file_system(self):
        self.mount("size=6m")
        program = self.start_loaded(drives=self.drives(total=None))
        self.assertEqual(program.text("lblHDSize"), "6.00")
        (self.stick / "film.avi").write_bytes(bytes(2 * MIB))
        program.click("cmdChoose")
        box = program.wait_message()
        self.assertEqual(box["title"], "Zuwenig Speicher verfügbar !")
        self.assertEqual(program.text("lblHDFree"), "4.00")


class Gone(WindowCase):
    def start_at_question(self, **arguments):
        program = self.start_loaded(**arguments)
        program.click("cmdChoose")
        program.wait_message(title=CONFIRMATION)
        return program

    def test_before_the_click(self):
        program = self.start_loaded()
        self.pull_stick()
        program.click("cmdChoose")
        self.expect_no_stick(program)

    def test_before_another_unit_is_chosen(self):
        program = self.start_loaded()
        self.pull_stick()
        program.choose("cmbSize", 1)
        self.expect_no_stick(program)

    def expect_no_stick(self, program):
        """Shown, and nothing ends."""
        program.wait_for("StatusBar1_1", "text", "No Stick")
        self.expect(program, NONE | WAITING)
        self.assertIsNone(program.message())
        self.stick.mkdir()
        program.click("cmdSearch")
        program.wait_for("cmdChoose", "text", "Starte Update")

    def test_between_the_question_and_the_firmware(self):
        program = self.start_at_question()
        self.pull_stick()
        program.answer("OK")
        self.expect_error(program, 71)
        self.assertFalse(self.stick.exists())

    def test_taken_from_the_table_before_the_firmware(self):
        program = self.start_at_question()
        program.set_drives(self.drives(stick=None))
        program.answer("OK")
        self.expect_error(program, 71)
        self.expect_stick({})

    def test_taken_from_the_table_and_noticed(self):
        program = self.start_at_question(files={"Settings.ini": b"[USB Tool]\r\nchkAuto=1\r\ncmbSize=0\r\n"})
        program.set_drives(self.drives(stick=None))
        program.wait_for("StatusBar1_1", "text", "No Stick")
        program.answer("OK")
        self.expect_error(program, 71)
        self.expect_stick({})

    def test_during_the_firmware(self):
        self.expect_gone_during("sr200.abs.txt")
        self.assertFalse(self.stick.exists())

    def test_during_the_channel_list(self):
        self.expect_gone_during("sr200_at.sdx.txt")
        self.assertFalse(self.stick.exists())

    def expect_gone_during(self, name):
        def answer(handler):
            shutil.rmtree(self.stick)
            handler.send_head(len(FIRMWARE))
            handler.wfile.write(FIRMWARE)

        self.serve(name, answer)
        program = self.start_loaded()
        self.confirm(program)
        self.expect_error(program, 71)

    def test_the_shipped_files_are_missing(self):
        for name, written in (("autorun.inf", {}), ("orvantastick.ico", {"autorun.inf": None})):
            with self.subTest(name):
                for path in self.stick.iterdir():
                    path.unlink()
                program = self.start_loaded(files={name: None})
                self.confirm(program)
                self.expect_error(program, 53)
                self.expect_stick({"sr200.abs": FIRMWARE, "sr200_at.sdx": SETTINGS} | written)

    def test_a_stick_that_comes_back(self):
        program = self.start_loaded()
        self.pull_stick()
        program.click("cmdSearch")
        program.wait_for("cmdChoose", "text", "USB Stick einstecken")
        self.stick.mkdir()
        program.click("cmdSearch")
        program.wait_for("cmdChoose", "text", "Starte Update")
        self.run_job(program)
        self.expect_stick({"sr200.abs": FIRMWARE, "sr200_at.sdx": SETTINGS} | COPIED)


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
