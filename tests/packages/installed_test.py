"""What `cmake --install` leaves, and what the desktop's own tools say of it."""

import os
import re
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree as xml
from pathlib import Path

from places import BUILD, ROOT, names_below, run

APPLICATION = "orvanta-usbtool"
DTD = Path("/usr/share/polkit-1/policyconfig-1.dtd")


def png_size(file):
    return int.from_bytes(file.read_bytes()[16:20], "big"), int.from_bytes(file.read_bytes()[20:24], "big")


class Installed(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.root = Path(folder.name)
        run("cmake", "--install", BUILD, env=os.environ | {"DESTDIR": folder.name})
        cls.prefix = cls.root / "usr" / "local"
        cls.share = cls.prefix / "share"
        cls.program = cls.prefix / "lib" / APPLICATION

    def test_the_tree_is_the_listed_one(self):
        listed = (Path(__file__).parent / "installed_tree.txt").read_text().split("\n")
        self.assertEqual(names_below(self.root), [line for line in listed if line and not line.startswith("#")])

    def test_everybody_may_read_it(self):
        for path in self.prefix.rglob("*"):
            self.assertEqual(path.stat().st_mode & 0o022, 0, path)
            self.assertEqual(path.stat().st_mode & 0o444, 0o444, path)

    def test_the_command_is_the_program(self):
        command = self.prefix / "bin" / APPLICATION
        self.assertEqual(command.resolve(), (self.program / APPLICATION).resolve())
        self.assertTrue(run(command, "--version").startswith("Orvanta USB-Stick Internetupdate Tool "))
        self.assertTrue(os.access(self.program / "fat32format.exe", os.X_OK))

    def test_debug_information_stays_in_the_build(self):
        for name in (APPLICATION, "fat32format.exe"):
            self.assertNotIn(".debug_info", run("readelf", "--sections", "--wide", self.program / name))

    def test_the_desktop_file(self):
        file = self.share / "applications" / f"{APPLICATION}.desktop"
        self.assertEqual(run("desktop-file-validate", file), "")
        lines = file.read_text(encoding="utf-8").splitlines()
        source = "".join((ROOT / "toolkit" / "qt" / "application.cpp").read_text(encoding="utf-8").split())
        name = re.search(r'setApplicationName\(QStringLiteral\("([^"]+)"\)\)', source)[1]
        self.assertIn('setDesktopFileName(qEnvironmentVariable("FLATPAK_ID",QCoreApplication::applicationName()))',
                      source)
        self.assertEqual(file.stem, name)
        self.assertIn(f"Exec={APPLICATION}", lines)
        for icon in (line[5:] for line in lines if line.startswith("Icon=")):
            self.assertEqual(icon, APPLICATION)

    def test_icons_have_their_size(self):
        icons = self.share / "icons" / "hicolor"
        for file in icons.glob("*/apps/*.png"):
            width, height = map(int, file.parent.parent.name.split("x"))
            self.assertEqual(png_size(file), (width, height), file)
        self.assertEqual(xml.parse(icons / "scalable" / "apps" / f"{APPLICATION}.svg").getroot().tag.rpartition("}")[2],
                         "svg")

    def test_the_metainfo(self):
        file = self.share / "metainfo" / "example.orvanta.UsbTool.metainfo.xml"
        run("appstreamcli", "validate", "--pedantic", "--no-net", "--no-color", file)
        root = xml.parse(file).getroot()
        self.assertEqual(root.find("launchable").text, f"{APPLICATION}.desktop")
        self.assertEqual(root.find("id").text + ".metainfo.xml", file.name)

    def test_manual_pages_have_no_warning(self):
        pages = sorted((self.share / "man").rglob("*.1"))
        self.assertEqual(len(pages), 3)
        for page in pages:
            command = ["man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z", page]
            shown = subprocess.run(command, capture_output=True, text=True, check=True,
                                   env=os.environ | {"LC_ALL": "C.UTF-8", "MANWIDTH": "80"})
            self.assertEqual(shown.stderr, "", page)
            self.assertGreater(len(shown.stdout), 1000, page)

    def test_the_question_of_pkexec_names_the_folder_it_was_installed_in(self):
        with tempfile.TemporaryDirectory() as root:
            run("cmake", "--install", BUILD, "--prefix", "/opt/tool", env=os.environ | {"DESTDIR": root})
            self.assertFalse(Path(root, "usr").exists())
            action = xml.parse(Path(root, "opt/tool/share/polkit-1/actions", f"{APPLICATION}.policy")).find("action")
            formatter = action.find("annotate").text
            self.assertEqual(formatter, f"/opt/tool/lib/{APPLICATION}/fat32format.exe")
            self.assertTrue(Path(root + formatter).is_file())

    def test_an_installation_elsewhere_changes_nothing_of_what_was_configured(self):
        """Else it would be root's after `sudo cmake --install`, and nobody else could install from that build."""
        def state():
            return {path: path.lstat().st_mtime_ns for path in (BUILD / "configured").rglob("*")}
        before = state()
        with tempfile.TemporaryDirectory() as root:
            run("cmake", "--install", BUILD, "--prefix", "/opt/elsewhere", env=os.environ | {"DESTDIR": root})
        self.assertEqual(state(), before)

    def test_the_question_of_pkexec(self):
        file = self.share / "polkit-1" / "actions" / f"{APPLICATION}.policy"
        run("xmllint", "--nonet", "--noout", "--dtdvalid", DTD, file)
        action = xml.parse(file).getroot().find("action")
        self.assertEqual(action.find("annotate").text, f"/usr/local/lib/{APPLICATION}/fat32format.exe")
        self.assertEqual({choice.text for choice in action.find("defaults")}, {"auth_admin"})
        messages = action.findall("message")
        self.assertEqual([message.get("{http://www.w3.org/XML/1998/namespace}lang") for message in messages],
                         [None, "de"])
        for message in messages:
            self.assertIn("$(command_line)", message.text, "it names the drive letter")


if __name__ == "__main__":
    unittest.main()
