"""The version stands in CMakeLists.txt alone: sources of the next one, configured, say so everywhere."""

import os
import re
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as xml
from pathlib import Path
from unittest import mock

from places import ROOT, run
from sources import copy_of_sources, source_names
from version import program_version

OWN = program_version()
NEXT = "7.25"

# Files that name a version as what it was then, or in numbers of something else.
PICTURES = {".svg", ".png", ".ico"}
HISTORY = {"CMakeLists.txt", "debian/changelog"}


def spelled(text, version=OWN):
    """Lines that name it as a version: behind such a word, in quotes, alone, or as four numbers."""
    exactly = rf"(?<![\d.]){re.escape(version)}(?![\d.]*\d)"
    numbers = ", ".join((version.split(".") + ["0", "0"])[:4])
    return [line for line in text.splitlines()
            if re.search(rf"(?i)(version|tool|release)\W[^|]{{0,12}}{exactly}", line)
            or re.search(rf"""^\s*{exactly}\s*$|b"{exactly}["\\]""", line)
            or re.search(rf"usbtool[-_]{exactly}", line)
            or version + ".0.0" in line or numbers in line]


class NamedOnce(unittest.TestCase):
    def test_what_spells_it_is_found(self):
        for line in (f'constexpr std::string_view programVersion = "{OWN}";', f"Internetupdate Tool {OWN}", OWN,
                     f'VERSION = b"{OWN}"', f"orvanta-usbtool-{OWN}-windows-x64.zip", f'version="{OWN}.0.0"'):
            self.assertEqual(spelled(line), [line])
        for line in ("EXPECT_EQ(formatNumber(-1.5, 2))", f"{OWN}.3", f"a goal of ≤ {OWN} | reached"):
            self.assertEqual(spelled(line), [])

    def test_no_other_source_spells_it(self):
        found = {}
        for name in source_names():
            if name in HISTORY or Path(name).suffix in PICTURES or name == "tests/packages/version_test.py":
                continue
            lines = spelled((ROOT / name).read_text(encoding="utf-8", errors="replace"))
            if lines:
                found[name] = lines
        self.assertEqual(found, {})

    def test_the_changelog_is_of_this_version(self):
        first = (ROOT / "debian" / "changelog").read_text(encoding="utf-8").splitlines()[0]
        self.assertTrue(first.startswith(f"orvanta-usbtool ({OWN}) "), first)


class NextVersion(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.root = Path(folder.name) / "sources"
        copy_of_sources(cls.root)
        text = (cls.root / "CMakeLists.txt").read_text()
        (cls.root / "CMakeLists.txt").write_text(text.replace(f"VERSION {OWN} ", f"VERSION {NEXT} ", 1))

    def configured(self, name, *options):
        build = self.root / name
        run("cmake", "-S", self.root, "-B", build, "-G", "Ninja", "-DBUILD_TESTING=OFF", *options)
        return build / "configured"

    def test_linux(self):
        made = self.configured("linux", "-DORVANTA_UPDATE_SERVER=https://update.test",
                               "-DORVANTA_UPDATE_PAGE=page.test?a&b", "-DORVANTA_WEB_HOST=web.test",
                               "-DORVANTA_PORTABLE=OFF",
                               r'-DORVANTA_HANDBOOK_FOLDER=/a "b"\c')
        header = (made / "build_choices.h").read_text()
        self.assertIn(f'programVersion = "{NEXT}"', header)
        for line in ('updateServer = "https://update.test"', 'updatePage = "page.test?a&b"', 'webHost = "web.test"',
                     r'handbookFolder = "/a \"b\"\\c"', "portable = false"):
            self.assertIn(line, header)
        self.assertEqual((made / "Server.ini").read_bytes(), b"[Server]\r\nUpdate=https://update.test\r\n"
                                                             b"UpdatePage=page.test?a&b\r\nWebHost=web.test\r\n")
        metainfo = (made / "orvanta-usbtool.metainfo.xml").read_text(encoding="utf-8")
        self.assertIn(f'<release version="{NEXT}"', metainfo)
        self.assertEqual(xml.fromstring(metainfo.encode()).find("url").text, "https://page.test?a&b")
        # Everything that shows it takes it from there; tests/packages/debian_test.py sees a program that was built so.
        for file in made.iterdir():
            if file.is_file():
                self.assertEqual(spelled(file.read_text(encoding="utf-8")), [], file)

    def test_windows(self):
        chosen = {"ORVANTA_UPDATE_SERVER": "http://update.chosen.test", "ORVANTA_WEB_HOST": "web.chosen.test"}
        with mock.patch.dict(os.environ, chosen):
            made = self.configured("windows", "--toolchain", self.root / "cmake" / "mingw-w64-x86_64.cmake")
        servers = (made / "Server.ini").read_text()
        self.assertIn("Update=http://update.chosen.test\n", servers)
        self.assertIn("WebHost=web.chosen.test\n", servers)
        for name in ("program.manifest", "fat32format.manifest"):
            self.assertIn(f'version="{NEXT}.0.0" processorArchitecture="amd64"', (made / name).read_text())
        run("cmake", "--build", self.root / "windows", "--target", "toolkit_resources")
        resource = next((self.root / "windows").rglob("program.rc.res")).read_bytes()
        self.assertEqual(resource.count(f"{NEXT}.0.0".encode("utf-16-le")), 2)
        self.assertEqual(resource.count(f'version="{NEXT}.0.0"'.encode()), 1)
        self.assertNotIn(f"{OWN}.0.0".encode("utf-16-le"), resource)

    def test_the_archive(self):
        script = ("import sys; sys.path.insert(0, 'packaging/windows'); import make_zip; "
                  "print(make_zip.program_files.read_me(make_zip.program_version()).decode()[:60]); "
                  "print(make_zip.archive_name())")
        text = subprocess.run([sys.executable, "-B", "-c", script], cwd=self.root, text=True, capture_output=True,
                              check=True).stdout
        self.assertIn(f"Orvanta USB-Stick Internetupdate Tool {NEXT}\r", text.replace("\n", "\r"))
        self.assertIn(f"orvanta-usbtool-{NEXT}-windows-x64.zip", text)


if __name__ == "__main__":
    unittest.main()
