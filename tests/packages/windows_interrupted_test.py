"""The installer for Windows, killed at any moment, under Wine: what is there then can be completed or removed."""

import shutil
import time
import unittest

from windows_setup import (DONE, FOLDER, KEY, NEW, OLD, PATIENCE, PROGRAM, UNINSTALLER, InstallerCase, packed, setup,
                           time_of, wait_for)


class Killed(InstallerCase):
    def setUp(self):
        super().setUp()
        self.fresh = self.machine.folder / "~neu"

    def kill_when(self, moment):
        """Whether it was in the middle of its work then."""
        process = self.start(setup(NEW))
        self.machine.press("Installieren")
        end = time.monotonic() + PATIENCE
        while not moment():
            if time.monotonic() > end:
                self.fail("the moment does not come")
        process.kill()
        process.wait()
        wait_for(lambda: setup(NEW).name not in self.machine.processes(), "its end", self.machine.processes)
        self.temporary = self.machine.temporary()  # nobody tidies up after it
        return self.fresh.exists()

    def kill_while_refused(self):
        """One file that cannot be replaced keeps its place between the first and the last of them."""
        self.assertTrue(self.kill_when(lambda: self.machine.dialog_with("konnte nicht ersetzt werden")))


class Interrupted(Killed):
    """Killed at any moment: each file is that of one version, and installing once more mends all."""

    def setUp(self):
        super().setUp()
        self.install()
        self.machine.hold("sr100.bmp")  # it cannot come to its end

    def is_replaced(self, name):
        return int((self.machine.folder / name).stat().st_mtime) == time_of(NEW)

    def expect_mended(self):
        self.machine.release()
        found, old, new = self.machine.installed(), packed(OLD), packed(NEW)
        self.assertEqual([name for name in old if found[name] not in (old[name], new[name])], [])
        for number in (NEW, OLD):
            self.assertEqual(self.install(number), DONE)
            self.expect_installed(number)

    def test_when_files_are_about_to_be_written(self):
        self.assertTrue(self.kill_when(self.fresh.exists))
        self.expect_mended()

    def test_while_files_are_written(self):
        self.assertTrue(self.kill_when((self.fresh / PROGRAM).exists))
        self.expect_mended()

    def test_while_files_take_their_places(self):
        self.kill_while_refused()
        self.assertTrue(self.is_replaced("Server.ini"))
        self.assertFalse(self.is_replaced(PROGRAM))
        self.expect_mended()

    def test_while_the_servers_do(self):
        self.assertTrue(self.kill_when(lambda: self.is_replaced("Server.ini")))
        self.expect_mended()

    def test_removed_instead(self):
        """What only the version before had goes, too, and nothing that a list could name besides."""
        (self.machine.folder / "Bilder").mkdir()
        for name in ("Bilder/old.bmp", "mine.txt", "../mine.txt"):
            (self.machine.folder / name).write_bytes(b"")
        for name in (r"Bilder\old.bmp", r"..\mine.txt", "*.txt", "?ine.txt", r"Bilder\..\mine.txt"):
            self.machine.wine("reg", "add", rf"HKCU\{KEY}\Files", "/v", name, "/d", "", "/f")
        self.kill_while_refused()
        self.machine.release()
        self.assertEqual(self.uninstall(), DONE)
        self.assertEqual(self.machine.installed(), {"mine.txt": b""})
        self.assertFalse((self.machine.folder / "Bilder").exists())
        self.assertTrue((self.machine.folder / "../mine.txt").exists())
        self.assertEqual(self.machine.entry(), {})


class FirstInterrupted(Killed):
    """What is there already can be removed and completed."""

    def setUp(self):
        super().setUp()
        self.blocked = self.block("sr100.bmp")
        self.kill_while_refused()
        self.assertFalse((self.machine.folder / PROGRAM).exists())
        shutil.rmtree(self.blocked)

    def test_removed(self):
        self.assertEqual(self.machine.entry()["UninstallString"], rf'"{FOLDER}\{UNINSTALLER}"')
        self.assertEqual(self.uninstall(), DONE)
        self.expect_gone()

    def test_completed(self):
        self.assertEqual(self.install(NEW), DONE)
        self.expect_installed(NEW)


if __name__ == "__main__":
    unittest.main(verbosity=2)
