"""Names in the catalog and on the stick that want to lead away from the stick. Not a byte beside it may change."""

import os
import unittest

from case import COPIED, WindowCase, snapshot
from fault_server import body
from server_files import FIRMWARE, NO_NAMES, catalog, row
from side_by_side import each, side_by_side

FOLDERS = {"this": ".", "above": "..", "far above": "..\\..\\..", "below": "sub", "below and a slash": "sub\\"}

# What the catalog says, and the name on the stick.
INSIDE = {
    "above": ("..\\x", "x"),
    "far above": ("..\\..\\..\\..\\..\\..\\x", "x"),
    "above with slashes": ("../../../x", "x"),
    "above with both": ("..\\/..\\x", "x"),
    "root": ("\\x", "x"),
    "root with a slash": ("/x", "x"),
    "this folder": (".\\x", "x"),
    "down and up": ("sub\\..\\..\\x", "x"),
    "below": ("sub\\x", "sub/x"),
    "below in capitals": ("SUB/x", "sub/x"),
    "trailing dots": ("x...", "x"),
    "trailing dots and blanks": ("x . .", "x"),
    "escaped": ("%2e%2e%5cx", "%2e%2e%5cx"),
    "not ASCII": ("Größe € „1“.abs", "Größe € „1“.abs"),
    "hidden": (".hidden", ".hidden"),
    "option": ("-rf", "-rf"),
    "command": ("$(touch x)", "$(touch x)"),
}


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
        self.expect_error(program, number)
        self.assertEqual(self.beside(program), before)
        return program


class Names(Hostile):
    @each(NO_NAMES)
    def test_firmware_without_a_name(self, name):
        self.serve_row("SR", "sr100.bmp", name)
        self.expect_refusal(76)
        self.assertEqual(snapshot(self.stick).keys(), {"sub"})

    @each({label: NO_NAMES[label] for label in list(NO_NAMES)[::3]})
    def test_list_without_a_name(self, name):
        self.serve_row("SR", "sr100.bmp", "good.abs", "", "", {0: (name, "")})
        self.expect_refusal(76)
        self.assertEqual(snapshot(self.stick).keys(), {"sub", "good.abs"})

    @each(FOLDERS)
    def test_folder(self, name):
        self.serve_row("SR", "sr100.bmp", name)
        self.expect_refusal(75)
        self.assertEqual(snapshot(self.stick).keys(), {"sub"})

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

    def test_the_name_of_a_copied_file(self):
        self.serve_row("SR", "sr100.bmp", "autorun.inf")
        program, _ = self.play()
        program.answer("OK")
        self.expect_stick(COPIED)


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
        self.expect_refusal(76)

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
        program.wait_for("cmdSaveOnStick", "enabled", False)
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
