"""A release of a clone in another folder, compiled anew, has the bytes of what is made here.

tests/packages/run has made it.
"""

import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path
from unittest import mock

from places import MADE, ROOT
from windows_setup import BUILD as WINDOWS_BUILD

sys.path.insert(0, str(ROOT / "packaging"))
import artefacts  # noqa: E402
import make_setup  # noqa: E402
import make_zip  # noqa: E402
import program_files  # noqa: E402

RELEASE = MADE / "release"
# Root may read what is another user's.
SAFE = {"GIT_CONFIG_COUNT": "1", "GIT_CONFIG_KEY_0": "safe.directory", "GIT_CONFIG_VALUE_0": str(ROOT)}


def git(*words):
    return subprocess.run(["git", "-C", ROOT, *words], check=True, text=True, stdout=subprocess.PIPE).stdout


class Same(unittest.TestCase):
    """Each artefact, byte by byte."""

    @classmethod
    def setUpClass(cls):
        cls.enterClassContext(mock.patch.dict(os.environ, SAFE))
        if git("status", "--porcelain"):
            raise unittest.SkipTest("not everything is committed: a release is made of what is")
        cls.version, cls.seconds = program_files.program_version(), int(git("log", "-1", "--format=%ct"))

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def expect_released(self, file):
        self.assertTrue(file.read_bytes() == (RELEASE / file.name).read_bytes(), f"{file.name} has other bytes")

    def test_sources(self):
        self.expect_released(*artefacts.make_source(ROOT, self.folder, None))

    def test_archive(self):
        self.expect_released(make_zip.make(WINDOWS_BUILD, self.folder, self.seconds)[0])

    def test_installer(self):
        self.expect_released(make_setup.make(WINDOWS_BUILD, self.folder, self.seconds, self.version))

    def test_packages(self):
        packages = sorted(MADE.glob(f"*_{self.version}_*.deb"))
        self.assertTrue(packages)
        for package in packages:
            self.expect_released(package)

    def test_sums(self):
        subprocess.run(["sha256sum", "--check", "--strict", "--quiet", "SHA256SUMS"], cwd=RELEASE, check=True)


if __name__ == "__main__":
    unittest.main()
