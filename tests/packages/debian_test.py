"""The Debian package: what lintian says, and its life in a minimal Debian 12 and 13.

These two need root, who may mount; without, they are skipped. tests/packages/run --packages makes what all this takes.
"""

import os
import re
import subprocess
import unittest
from pathlib import Path

from places import BUILD, MADE, NEXT, ROOT, run
from version import program_version

NAME = "orvanta-usbtool"


def can_mount():
    command = ["unshare", "--mount", "--pid", "--fork", "mount", "-t", "tmpfs", "tmpfs", "/tmp"]
    return os.geteuid() == 0 and subprocess.run(command, capture_output=True, check=False).returncode == 0


def contents(package):
    """{name: (rights, kind, link's target)}"""
    found = {}
    for line in run("dpkg-deb", "--contents", package).splitlines():
        rights, owner, _, _, _, name = line.split(None, 5)
        name, _, target = name.partition(" -> ")
        found[name.removeprefix(".")] = (rights, owner, target)
    return found


class Package(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.changes = next(MADE.glob(f"{NAME}_{program_version()}_*.changes"))
        cls.package = next(MADE.glob(f"{NAME}_{program_version()}_*.deb"))
        cls.symbols = next(MADE.glob(f"{NAME}-dbgsym_{program_version()}_*.deb"))

    def test_lintian_finds_nothing(self):
        said = subprocess.run(["lintian", "--no-cfg", "--fail-on", "error,warning", self.changes], capture_output=True,
                              text=True, check=False)
        self.assertEqual(said.returncode, 0, said.stdout + said.stderr)
        lines = [line for line in said.stdout.splitlines() if line[:2] in ("E:", "W:")]
        self.assertEqual(lines, [])

    def test_the_tests_ran_while_it_was_built(self):
        """Those of the version that comes next; the other one is compared with the release's, which has none."""
        log = (MADE / f"{NAME}_{NEXT}.build.log").read_text(encoding="utf-8")
        self.assertIn("100% tests passed, 0 tests failed", log)
        passed = re.findall(r"Test +#\d+: (\S+) \.+ +Passed ", log)
        self.assertEqual(sorted({"unit", "fat32format"} - set(passed)), [])

    def test_what_it_holds(self):
        files = contents(self.package)
        folder = next(name for name in files if name.endswith(f"/{NAME}/{NAME}")).rpartition("/")[0]
        self.assertEqual(files[f"{folder}/Server.ini"][2], f"/etc/{NAME}/Server.ini")
        self.assertEqual(files[f"/usr/bin/{NAME}"][2].lstrip("./"), f"{folder}/{NAME}".removeprefix("/usr/"))
        self.assertIn(f"/usr/share/man/man1/{NAME}.1.gz", files)
        self.assertIn(f"{folder}/Anleitung.html", files)
        for name in ("Anleitung.html", "Anleitung"):
            link = f"/usr/share/doc/{NAME}/{name}"
            self.assertEqual(os.path.normpath(Path(link).parent / files[link][2]), f"{folder}/{name}")
        self.assertTrue(all(owner == "root/root" for _, owner, _ in files.values()))
        self.assertEqual(run("dpkg-deb", "--info", self.package, "conffiles").split(), [f"/etc/{NAME}/Server.ini"])

    def test_debug_information_is_apart(self):
        self.assertTrue(any(name.endswith(".debug") for name in contents(self.symbols)))
        self.assertFalse(any(name.endswith(".debug") for name in contents(self.package)))

    def test_what_it_needs(self):
        needs = run("dpkg-deb", "--field", self.package, "Depends", "Recommends")
        for name in ("udisks2", "xdg-utils", "dosfstools", "fdisk", "polkitd", "pkexec", "libqt6widgets6", "libcurl4",
                     "ca-certificates", "qt6-wayland", "xdg-desktop-portal"):
            self.assertIn(name, needs)


@unittest.skipUnless(can_mount(), "it takes root, who may mount: run it with sudo")
class Life(unittest.TestCase):
    def live(self, release):
        print(run(ROOT / "tests" / "packages" / "run", "--inside", release, "python3", "-B",
                  "/source/tests/packages/inside_debian.py"))

    def test_debian_12(self):
        self.live("bookworm")

    def test_debian_13(self):
        self.live("trixie")

    def test_the_driver_is_there(self):
        self.assertTrue((BUILD / "tests" / "plugins" / "generic" / "libusbtooldriver.so").is_file())


if __name__ == "__main__":
    unittest.main()
