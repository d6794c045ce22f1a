"""Opening the stick and keeping its standard path."""

import unittest

from case import contents
from side_by_side import each, side_by_side
from sticks import SticksCase


class ActionsCase(SticksCase):
    def wait_opened(self, program, *folders):
        program.wait_until(lambda: len(self.opened()) >= len(folders), what="the browser")
        self.assertEqual([path.rstrip("/") for path in self.opened()], [str(folder) for folder in folders])

    def start_with(self, profile=None, letters="E", **arguments):
        """Sticks of which the first one has that profile file."""
        if profile is not None:
            (self.folder(letters[0]) / "USB.ini").write_bytes(profile)
        return self.start_detecting(letters, **arguments)

    def save(self, program, path):
        program.enter_text("txtOpenPath", path)
        program.wait_for("cmdSaveOnStick", "enabled", True)
        program.click("cmdSaveOnStick")
        program.wait_for("cmdSaveOnStick", "enabled", False)

    def replug(self, program, letters="E"):
        self.plug(program, "")
        self.wait_no_stick(program)
        self.plug(program, letters)
        self.wait_stick(program, letters[0])


class Opening(ActionsCase):
    def test_the_root(self):
        program = self.start_with()
        program.click("cmdOpen")
        self.wait_opened(program, self.folder("E"))
        program.click("cmdOpen")
        self.wait_opened(program, self.folder("E"), self.folder("E"))

    @each({"plain": "Musik", "with a backslash": "\\Musik", "below": "Musik\\Neu",
           "letters of Germany": "Müll & \"Größe\"".replace('"', ""), "blanks and more": "a b'c $HOME;%41"})
    def test_the_standard_path(self, path):
        folder = self.folder("E").joinpath(*path.strip("\\").split("\\"))
        folder.mkdir(parents=True)
        program = self.start_with(b"[Open]\r\nDir=" + path.encode("cp1252") + b"\r\n")
        program.wait_for("txtOpenPath", "text", path.removeprefix("\\"))
        program.click("cmdOpen")
        self.wait_opened(program, folder)

    @each({"missing": "Musik", "outside": "..\\..\\system", "a device": "NUL", "a pattern": "*"})
    def test_a_path_that_does_not_exist(self, path):
        program = self.start_with(b"[Open]\r\nDir=" + path.encode("cp1252") + b"\r\n")
        program.wait_for("txtOpenPath", "text", path)
        program.click("cmdOpen")
        self.assertIsNone(program.message())
        (self.folder("E") / "USB.ini").write_bytes(b"[Open]\r\nDir=\r\n")
        program.click("cmdSearch")
        program.wait_for("txtOpenPath", "text", "")
        program.click("cmdOpen")
        self.wait_opened(program, self.folder("E"))  # and nothing before

    @each({"a document": "liste.txt", "a starter": "Fotos.desktop", "a program": "Fotos.exe", "a script": "sub\\run.sh",
           "a document, asked for as a folder": "liste.txt\\", "a program, asked for as a folder": "Fotos.exe\\."})
    def test_a_file_is_never_opened(self, path):
        file = self.folder("E").joinpath(*path.rstrip("\\.").split("\\"))
        file.parent.mkdir(exist_ok=True)
        file.write_bytes(b"#!/bin/sh\n[Desktop Entry]\nType=Application\nExec=true\n")
        file.chmod(0o755)
        program = self.start_with(b"[Open]\r\nDir=" + path.encode("cp1252") + b"\r\n")
        program.wait_for("txtOpenPath", "text", path)
        program.click("cmdOpen")
        self.assertIsNone(program.message())
        (self.folder("E") / "USB.ini").write_bytes(b"[Open]\r\nDir=\r\n")
        program.click("cmdSearch")
        program.wait_for("txtOpenPath", "text", "")
        program.click("cmdOpen")
        self.wait_opened(program, self.folder("E"))  # and nothing before

    @each({"a starter": "Fotos.desktop", "a program": "Fotos.exe", "a script": "run.sh"})
    def test_a_folder_that_is_called_like_a_program(self, name):
        (self.folder("E") / name).mkdir()
        program = self.start_with(b"[Open]\r\nDir=" + name.encode() + b"\r\n")
        program.wait_for("txtOpenPath", "text", name)
        program.click("cmdOpen")
        self.wait_opened(program, self.folder("E") / name)
        self.assertTrue(self.opened()[0].endswith("/"), "said in such a way that only a folder can be meant")

    def test_no_stick(self):
        program = self.start_detecting()
        self.wait_no_stick(program)
        program.click("cmdOpen")
        self.plug(program, "E")
        self.wait_stick(program, "E")
        program.click("cmdOpen")
        self.wait_opened(program, self.folder("E"))  # and nothing before

    def test_after_a_choice_between_two_only_a_new_search_helps(self):
        program = self.start(drives=self.table("EF"))
        program.wait_window("frmAuswahl")
        program.click_row("ListView1", 1, "frmAuswahl", clicks=2)
        program.wait_window("frmMain")
        self.wait_stick(program, "F")
        program.click("cmdOpen")
        self.plug(program, "E")
        program.click("cmdSearch")
        self.wait_stick(program, "E")
        program.click("cmdOpen")
        self.wait_opened(program, self.folder("E"))  # and not F before

    def test_without_anything_that_opens(self):
        program = self.start_with(environment={"PATH": str(self.home / "nowhere")})
        program.click("cmdOpen")
        self.wait_stick(program, "E")
        self.assertIsNone(program.message())
        self.close(program)


class Saving(ActionsCase):
    def test_saved_and_read_back(self):
        (self.folder("E") / "Musik").mkdir()
        program = self.start_with()
        self.assertFalse(program.get("cmdSaveOnStick")["enabled"])
        self.save(program, "Musik")
        self.assertEqual(contents(self.folder("E")), {"USB.ini": b"[Open]\r\nDir=Musik\r\n"})
        self.replug(program)
        program.wait_for("txtOpenPath", "text", "Musik")
        program.click("cmdOpen")
        self.wait_opened(program, self.folder("E") / "Musik")
        self.close(program)  # and no question

    def test_what_was_saved_counts_at_once(self):
        (self.folder("E") / "Musik").mkdir()
        program = self.start_with()
        self.save(program, "Musik")
        program.click("cmdOpen")
        self.wait_opened(program, self.folder("E") / "Musik")

    def test_the_rest_of_the_profile_stays(self):
        program = self.start_with(b"; mine\r\n[Other]\r\na=1\r\n\r\n[open]\r\nDir = Alt \r\nb=2\r\n")
        self.save(program, "Neu")
        self.assertEqual((self.folder("E") / "USB.ini").read_bytes(),
                         b"; mine\r\n[Other]\r\na=1\r\n\r\n[open]\r\nDir=Neu\r\nb=2\r\n")

    def test_emptied(self):
        program = self.start_with(b"[Open]\r\nDir=Musik\r\n")
        program.wait_for("txtOpenPath", "text", "Musik")
        program.focus("txtOpenPath")
        program.type("", "Ctrl+A", "Backspace")
        program.wait_for("cmdSaveOnStick", "enabled", True)
        program.click("cmdSaveOnStick")
        program.wait_for("cmdSaveOnStick", "enabled", False)
        self.assertEqual((self.folder("E") / "USB.ini").read_bytes(), b"[Open]\r\nDir=\r\n")
        self.replug(program)
        self.assertEqual(program.text("txtOpenPath"), "")

    def test_a_key_that_changes_nothing_enables_it_too(self):
        program = self.start_with(b"[Open]\r\nDir=Musik\r\n")
        program.wait_for("txtOpenPath", "text", "Musik")
        program.focus("txtOpenPath")
        program.type("", "End", "Right")  # no characters
        self.assertFalse(program.get("cmdSaveOnStick")["enabled"])
        program.type("", "Ctrl+C")
        program.wait_for("cmdSaveOnStick", "enabled", True)
        self.assertEqual(program.text("txtOpenPath"), "Musik")

    def test_pasted_by_keyboard(self):
        program = self.start_with()
        program.clipboard("Filme")
        program.focus("txtOpenPath")
        program.type("", "Ctrl+V")
        program.wait_for("cmdSaveOnStick", "enabled", True)
        self.assertEqual(program.text("txtOpenPath"), "Filme")

    def test_pasted_by_mouse(self):
        program = self.start_with()
        program.clipboard("Filme")
        program.focus("txtOpenPath")
        program.mouse("txtOpenPath", ("press", 20, 8), ("release", 20, 8), button="right")
        self.picture(program, "main-context-menu")
        program.type("", "Down", "Return")  # the only entry that can be chosen is to paste
        program.wait_for("txtOpenPath", "text", "Filme")
        program.wait_for("cmdSaveOnStick", "enabled", True)
        program.click("cmdSaveOnStick")
        program.wait_for("cmdSaveOnStick", "enabled", False)
        self.assertEqual(contents(self.folder("E")), {"USB.ini": b"[Open]\r\nDir=Filme\r\n"})

    def test_letters_that_a_profile_has_none_of(self):
        program = self.start_with()
        self.save(program, "Żółć")
        saved = (self.folder("E") / "USB.ini").read_bytes()
        self.assertTrue(saved.startswith(b"[Open]\r\nDir=") and saved.endswith(b"\r\n"), saved)
        self.assertNotIn(b"\xc5", saved)
        self.close(program)

    def test_a_profile_that_is_marked_read_only_is_none(self):
        profile = self.folder("E") / "USB.ini"
        profile.write_bytes(b"[Open]\r\nDir=Musik\r\n")
        profile.chmod(0o444)
        program = self.start_detecting("E")
        self.wait_stick(program, "E")
        self.assertEqual(program.text("txtOpenPath"), "")

    def test_another_stick_without_a_profile_keeps_the_path_in_view(self):
        program = self.start_with(b"[Open]\r\nDir=Musik\r\n")
        program.wait_for("txtOpenPath", "text", "Musik")
        program.click("chkAuto")
        program.wait_for("chkAuto", "checked", False)
        self.plug(program, "F")
        program.click("cmdSearch")
        self.wait_stick(program, "F")
        self.assertEqual(program.text("txtOpenPath"), "Musik")


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
