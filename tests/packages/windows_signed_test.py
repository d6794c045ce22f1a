"""Signed packages for Windows, with a certificate of this test's own; and that unsigned ones are the same each time."""

import os
import struct
import subprocess
import tempfile
import unittest
import zipfile
from pathlib import Path
from unittest import mock

from windows_setup import (BUILD, NEW, OLD, PROGRAM, SECONDS, UNINSTALLER, InstallerCase, make_setup, needs, setup,
                           windows_path)

import make_zip

SIGNER = """#!/bin/sh
# $1: folder of the certificate, $2: file
set -e
osslsigncode sign -certs "$1/certificate.pem" -key "$1/key.pem" -h sha256 -in "$2" -out "$2.signed"
mv "$2.signed" "$2"
"""


def make_certificate(folder):
    subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj",
                    "/CN=Signs for a test", "-addext", "extendedKeyUsage=codeSigning", "-keyout", folder / "key.pem",
                    "-out", folder / "certificate.pem"], check=True, capture_output=True)
    signer = folder / "signer"
    signer.write_text(SIGNER, encoding="ascii")
    signer.chmod(0o755)


class Signed(InstallerCase):
    def setUp(self):
        super().setUp()
        temporary = tempfile.TemporaryDirectory(prefix="usbtool-signed-")
        self.addCleanup(temporary.cleanup)
        self.folder = Path(temporary.name)
        make_certificate(self.folder)

    def make(self, command, packer, *arguments):
        with mock.patch.dict(os.environ, SIGN_COMMAND=command):
            return packer.make(BUILD, self.folder / "out", SECONDS, *arguments)

    def verify(self, data):
        """Whether the bytes are signed with the test's certificate."""
        file = self.folder / "signed.exe"
        file.write_bytes(data)
        found = subprocess.run(["osslsigncode", "verify", "-CAfile", self.folder / "certificate.pem", "-in", file],
                               capture_output=True, text=True, check=False)
        return found.returncode == 0

    def test_all_of_the_installer(self):
        target = self.make(f'"{self.folder}/signer" "{self.folder}"', make_setup, OLD)
        self.assertTrue(self.verify(target.read_bytes()), "the installer")
        self.assertEqual(self.machine.run(f'"{windows_path(target)}" /S'), 0)
        found = self.machine.installed()
        for name in (PROGRAM, "fat32format.exe", UNINSTALLER):
            self.assertTrue(self.verify(found[name]), name)
            spoilt = bytearray(found[name])
            spoilt[len(spoilt) // 3] ^= 1
            self.assertFalse(self.verify(bytes(spoilt)), f"{name} with another bit")
        self.assertEqual(self.uninstall(), 0)
        self.assertFalse(self.machine.folder.exists())

    def test_the_programs_of_the_archive_and_a_place_for_the_file(self):
        target, _ = self.make(f'sh -c \'"$0" "$1" "$2"\' "{self.folder}/signer" "{self.folder}" {{}}', make_zip)
        with zipfile.ZipFile(target) as archive:
            for name in (PROGRAM, "fat32format.exe"):
                self.assertTrue(self.verify(archive.read(f"orvanta-usbtool/{name}")), name)

    def test_a_command_that_fails_makes_nothing(self):
        with self.assertRaises(subprocess.CalledProcessError):
            self.make("false", make_setup, OLD)
        self.assertEqual(list((self.folder / "out").glob("*.exe")), [])


class Installer(unittest.TestCase):
    """The file itself."""

    def setUp(self):
        if missing := needs():
            self.fail(missing)
        self.data = setup(NEW).read_bytes()

    def test_it_is_for_64_bits(self):
        header = int.from_bytes(self.data[0x3C:0x40], "little")
        self.assertEqual(self.data[header:header + 6], b"PE\0\0\x64\x86")

    def test_its_manifest(self):
        manifest = self.data[self.data.index(b"<assembly"):self.data.index(b"</assembly>")].decode()
        for part in ('requestedExecutionLevel level="asInvoker"', "{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}",
                     ">true</dpiAware>", ">System</dpiAwareness>", ">true</longPathAware>",
                     "Microsoft.Windows.Common-Controls"):
            self.assertIn(part.lower(), manifest.lower())

    def test_its_version(self):
        for text in ("Installiert das Orvanta USB-Stick Internetupdate Tool", f"{NEW}.0.0", "Orvanta"):
            self.assertIn(text.encode("utf-16-le"), self.data)
        fixed = self.data.index(bytes.fromhex("bd04effe"))  # VS_FIXEDFILEINFO
        major, minor = map(int, NEW.split("."))
        self.assertEqual(self.data[fixed + 8:fixed + 16], struct.pack("<HHHH", minor, major, 0, 0))


class Same(unittest.TestCase):
    """Of one build; two builds are compared by make_setup.py --check, and by tests/packages/run."""

    def test_two_installers_are_the_same_and_unsigned(self):
        if missing := needs():
            self.fail(missing)
        with tempfile.TemporaryDirectory() as one, tempfile.TemporaryDirectory() as other:
            first = make_setup.make(BUILD, Path(one), SECONDS, OLD)
            second = make_setup.make(BUILD, Path(other) / "deeper", SECONDS, OLD)
            self.assertEqual(first.read_bytes(), second.read_bytes())
            unsigned = subprocess.run(["osslsigncode", "verify", "-in", first], capture_output=True, text=True,
                                      check=False)
            self.assertIn("No signature found", unsigned.stdout + unsigned.stderr)
            third = make_setup.make(BUILD, Path(other), SECONDS + 2, OLD)
            self.assertNotEqual(first.read_bytes(), third.read_bytes())


if __name__ == "__main__":
    unittest.main(verbosity=2)
