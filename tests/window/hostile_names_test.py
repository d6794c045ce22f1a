"""Names in the catalog and on the stick that want to lead away from the stick. Not a byte beside it may change."""

import os
import unittest

from case import COPIED, WindowCase, snapshot
from fault_server import body
from server_files import FIRMWARE, NO_NAMES, catalog, row
from side_by_side import each, side_by_side

FOLDERS = {"this": ".", "above": "..", "far above": "..\\..\\..", "below and a slash": "sub\\"}

# More of them, and what is no name of its own.
PLACES = {
    "above": "..\\x",
    "far above with slashes": "../../../x",
    "root": "\\x",
    "this folder": ".\\x",
    "below": "sub\\x",
    "below in capitals": "SUB/x",
    "dots": "...",
    "blanks": "   ",
}

# The program's own files, however they are written.
OWN = {"profile": "USB.ini", "small": "usb.ini", "with a dot": "USB.INI.", "with blanks": "autorun.inf . ",
       "autorun": "autorun.inf", "stream": "autorun.inf::$DATA", "icon": "OrvantaStick.ICO", "short": "ORVANT~1.ICO"}

# What the catalog says, and the name on the stick.
INSIDE = {
    "trailing dots": ("x...", "x"),
    "trailing dots and blanks": ("x . .", "x"),
    "escaped": ("%2e%2e%5cx", "%2e%2e%5cx"),
    "not ASCII": ("Größe € „1“.abs", "Größe € „1“.abs"),
    "hidden": (".hidden", ".hidden"),
    "option": ("-rf", "-rf"),
    "command": ("$(touch x)", "$(touch x)"),
}

WHO_MENDS_IT = "melden Sie den Namen dem Händler Ihres Receivers"


def names_a_place(name):
    """A folder, a drive, a stream or nothing at all."""
    return any(c in name for c in "\\/:") or not name.strip(". ")


class Hostile(WindowCase):
    def setUp(self):
        super().setUp()
        (self.stick / "sub").mkdir()
        for name in ("x", "canary.txt"):  # beside the stick, where ".." would lead
            (self.home / name).write_bytes(b"untouched")

    def serve_all(self):
        """Whatever a name has become on its way to the server, there is such a file."""
        super().serve_all()
        known = self.server.behaviour
        self.server.behaviour = lambda path: known(path) if "/usb-" in path else body(FIRMWARE)

    def serve_row(self, *fields):
        self.serve("usb-list.csv", catalog(changes={1: row(*fields)}))

    def beside(self, program):
        """Everything beside the stick, but what a program leaves by being started."""
        mine = {name: what for name, what in snapshot(self.home).items() if name.split("/")[0] not in ("stick", "bin")}
        own = {name: what for name, what in snapshot(program.home).items()
               if name.split("/")[0] not in ("cache", "runtime", "output.txt", "driver")}
        return mine | own

    def play(self):
        """Runs the job until its end or its error."""
        program = self.start_loaded()
        before = self.beside(program)
        self.confirm(program)
        program.wait_message()
        self.assertEqual(self.beside(program), before)
        return program, before

    def expect_refusal(self, number):
        program, before = self.play()
        self.expect_error(program, number, WHO_MENDS_IT)
        self.assertEqual(self.beside(program), before)
        return program


class Names(Hostile):
    def expect_untouched(self):
        self.assertEqual(snapshot(self.stick).keys(), {"sub"})

    def expect_name_refused(self, name, number=None):
        """Before anything has been fetched, when it is refused for what it names."""
        program, before = self.play()
        if number == 75:
            self.assertEqual(self.downloads().count("usb-list.csv"), 1)
            self.assertIn(name.split("\\")[0], program.message()["text"])
        self.expect_error(program, number or (75 if names_a_place(name) else 76), WHO_MENDS_IT)
        self.assertEqual(self.beside(program), before)

    @each(NO_NAMES)
    def test_firmware_without_a_name(self, name):
        self.serve_row("SR", "sr100.bmp", name)
        self.expect_name_refused(name)
        self.expect_untouched()

    @each({label: NO_NAMES[label] for label in list(NO_NAMES)[::3]})
    def test_list_without_a_name(self, name):
        self.serve_row("SR", "sr100.bmp", "good.abs", "", "", {0: (name, "")})
        self.expect_name_refused(name)
        self.assertEqual(snapshot(self.stick).keys(), {"sub"} | (set() if names_a_place(name) else {"good.abs"}))

    @each(FOLDERS | PLACES)
    def test_place(self, name):
        self.serve_row("SR", "sr100.bmp", name)
        self.expect_name_refused(name, 75)
        self.expect_untouched()

    @each(OWN)
    def test_file_of_the_programs_own(self, name):
        self.serve_row("SR", "sr100.bmp", name)
        self.expect_name_refused(name, 75)
        self.expect_untouched()

    @each(OWN)
    def test_list_called_like_a_file_of_the_programs_own(self, name):
        self.serve_row("SR", "sr100.bmp", "good.abs", "", "", {0: (name, "")})
        self.expect_name_refused(name, 75)
        self.expect_untouched()

    def test_folder_of_that_name(self):
        self.serve_row("SR", "sr100.bmp", "sub")
        self.expect_refusal(75)
        self.expect_untouched()

    @each(INSIDE)
    def test_inside(self, name, place):
        self.serve_row("SR", "sr100.bmp", name)
        program, before = self.play()
        program.answer("OK")
        self.close(program)
        after = self.beside(program)
        after.pop("program/Settings.ini")
        self.assertEqual(after, before)
        self.expect_stick({place: FIRMWARE} | COPIED)

    def test_no_name_is_no_firmware(self):
        self.serve_row("SR", "sr100.bmp", "")
        self.assertFalse(self.start_loaded().get("Firm_Option_1")["enabled"])


class Links(Hostile):
    """A stick may hold a file system with links that lead away from it."""

    def setUp(self):
        super().setUp()
        self.target = self.home / "canary.txt"

    def test_firmware_that_is_a_link(self):
        (self.stick / "sr200.abs").symlink_to(self.target)
        self.expect_refusal(76)

    def test_firmware_that_is_a_link_to_nothing(self):
        (self.stick / "sr200.abs").symlink_to(self.home / "new")
        self.expect_refusal(76)
        self.assertFalse((self.home / "new").exists())

    def test_autorun_that_is_a_link(self):
        (self.stick / "autorun.inf").symlink_to(self.target)
        self.expect_refusal(76)
        self.assertEqual((self.stick / "sr200.abs").read_bytes(), FIRMWARE)

    def test_a_folder_that_is_a_link(self):
        (self.stick / "away").symlink_to(self.home)
        self.serve_row("SR", "sr100.bmp", "away\\x")
        self.expect_refusal(75)

    def test_a_pipe(self):
        os.mkfifo(self.stick / "sr200.abs")
        self.expect_refusal(75)

    def test_autorun_that_is_a_folder(self):
        (self.stick / "autorun.inf").mkdir()
        self.expect_refusal(75)

    def test_a_profile_that_is_a_link(self):
        self.target.write_bytes(b"[Open]\r\nDir=secret\r\n")
        (self.stick / "USB.ini").symlink_to(self.target)
        program = self.start()
        program.wait_for("lblLW", "text", "E:\\")
        self.assertEqual(program.text("txtOpenPath"), "")
        program.enter_text("txtOpenPath", "other")
        program.click("cmdSaveOnStick")
        self.assertTrue(program.get("cmdSaveOnStick")["enabled"])  # not saved
        self.assertEqual(self.target.read_bytes(), b"[Open]\r\nDir=secret\r\n")


class StandardPath(Hostile):
    """The folder that a stick names is opened only when it is one of the stick's."""

    @each({"above": "..\\..\\..\\etc", "drive": "C:\\", "root": "\\\\etc", "program": "sub\\run.sh", "device": "NUL",
           "address": "http://example.example/", "link": "away"})
    def test_not_opened(self, path):
        (self.stick / "USB.ini").write_bytes(f"[Open]\r\nDir={path}\r\n".encode("cp1252"))
        (self.stick / "away").symlink_to(self.home)
        script = self.stick / "sub" / "run.sh"
        script.write_bytes(b"#!/bin/sh\n")
        script.chmod(0o755)
        program = self.start()
        program.wait_for("txtOpenPath", "text", lambda text: text != "")
        program.click("cmdOpen")
        (self.stick / "USB.ini").write_bytes(b"[Open]\r\nDir=\r\n")
        program.click("cmdSearch")
        program.wait_for("txtOpenPath", "text", "")
        program.click("cmdOpen")
        program.wait_until(self.opened)
        self.assertEqual([path.rstrip("/") for path in self.opened()], [str(self.stick)])  # and nothing before

    def test_above_is_the_stick_itself(self):
        (self.stick / "USB.ini").write_bytes(b"[Open]\r\nDir=..\\..\r\n")
        program = self.start()
        program.wait_for("txtOpenPath", "text", "..\\..")
        program.click("cmdOpen")
        program.wait_until(self.opened)
        self.assertEqual([path.rstrip("/") for path in self.opened()], [str(self.stick)])


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
