"""scripts/setup.sh where nothing else happens: in the Debian of the ring, as root, with a package source of its own."""

import fcntl
import hashlib
import os
import stat
import subprocess
import tempfile
import threading
import time
import unittest
from pathlib import Path

SETUP = Path(__file__).resolve().parents[2] / "scripts" / "setup.sh"
HELD = 3  # seconds
USER = 1000


def offer_package(folder, name):
    """An empty package, in a source that is the only one."""
    control = f"Package: {name}\nVersion: 999\nArchitecture: all\nMaintainer: nobody <n@example.org>\nDescription: none\n"
    (folder / "tree" / "DEBIAN").mkdir(parents=True)
    (folder / "tree" / "DEBIAN" / "control").write_text(control)
    deb = folder / "package.deb"
    subprocess.run(["dpkg-deb", "--build", folder / "tree", deb], check=True, capture_output=True)
    data = deb.read_bytes()
    (folder / "Packages").write_text(f"{control}Filename: ./package.deb\nSize: {len(data)}\n"
                                     f"SHA256: {hashlib.sha256(data).hexdigest()}\n")
    for file in Path("/etc/apt/sources.list.d").iterdir():
        file.unlink()
    Path("/etc/apt/sources.list").write_text(f"deb [trusted=yes] file:{folder} ./\n")


class Setup(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.folder.chmod(0o755)
        subprocess.run(["dpkg", "--remove", "--force-depends", "make"], check=True, capture_output=True)
        offer_package(self.folder, "make")

    def set_up(self, **arguments):
        return subprocess.run([SETUP, "makefiles"], text=True, stdin=subprocess.DEVNULL, capture_output=True,
                              check=False, timeout=120, **arguments)

    def installed(self):
        query = subprocess.run(["dpkg-query", "-W", "-f=${db:Status-Status}", "make"], text=True, capture_output=True,
                               check=False)
        return query.stdout == "installed"

    def test_what_is_missing_is_installed(self):
        run = self.set_up()
        self.assertEqual((run.returncode, run.stdout, run.stderr), (0, "Installing: make\n", ""))
        self.assertTrue(self.installed())
        self.assertEqual(self.set_up().stdout, "", "nothing is missing any more")

    def expect_patience(self, *locks):
        """Another package manager holds the locks for a while."""
        held = [open(lock, "w", encoding="ascii") for lock in locks]
        for lock in held:
            fcntl.lockf(lock, fcntl.LOCK_EX)
        released = []

        def release():
            time.sleep(HELD)
            released.append(time.monotonic())
            for lock in held:
                lock.close()

        thread = threading.Thread(target=release)
        thread.start()
        run = self.set_up()
        ended = time.monotonic()
        thread.join()
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        self.assertGreater(ended, released[0])
        self.assertTrue(self.installed())

    def test_another_one_installs(self):
        self.expect_patience("/var/lib/dpkg/lock-frontend", "/var/lib/dpkg/lock")

    def test_another_one_fetches_its_lists(self):
        self.expect_patience("/var/lib/apt/lists/lock")

    def test_another_one_fetches_its_packages(self):
        self.expect_patience("/var/cache/apt/archives/lock")

    def test_a_source_that_is_gone_is_told(self):
        Path("/etc/apt/sources.list").write_text("deb [trusted=yes] file:/nowhere ./\n")
        run = self.set_up()
        self.assertEqual(run.returncode, 1)
        self.assertIn("file:/nowhere", run.stderr)
        self.assertTrue(run.stderr.endswith("The packages could not be installed: make\n"), run.stderr)

    def test_a_user_without_sudo_is_told(self):
        run = self.set_up(user=USER, group=USER, extra_groups=[])
        self.assertEqual(run.returncode, 1)
        self.assertEqual(run.stderr, "These packages are missing, and neither root nor sudo is at hand to install them.\n")
        self.assertFalse(self.installed())

    def test_a_user_installs_through_sudo(self):
        sudo = self.folder / "sudo"
        sudo.write_text(f'#!/bin/sh\necho "$@" >>{self.folder}/calls\n')
        sudo.chmod(0o755)
        calls = self.folder / "calls"
        calls.touch()
        calls.chmod(calls.stat().st_mode | stat.S_IWOTH)
        run = self.set_up(user=USER, group=USER, extra_groups=[],
                          env={"PATH": f"{self.folder}:{os.environ['PATH']}"})
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        update, install = calls.read_text().splitlines()
        self.assertTrue(update.endswith(" update"), update)
        self.assertTrue(install.endswith(" install -y --no-install-recommends make"), install)


if __name__ == "__main__":
    unittest.main()
