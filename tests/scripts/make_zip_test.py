"""The packages for Windows: what is wrong with a program is found in each of them; what goes along; who signs."""

import os
import sys
import tempfile
import unittest
from pathlib import Path
from unittest import mock

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "packaging" / "windows"))

import program_files  # noqa: E402
import sign  # noqa: E402

FINE = "\tDLL Name: KERNEL32.dll\n\tDLL Name: msvcrt.dll\n"


def complaints(name, program, imports=FINE):
    with mock.patch.object(program_files, "run", lambda *command: imports):
        return list(program_files.complaints(name, program, Path("/builder/build")))


class Complaints(unittest.TestCase):
    def test_both_programs_are_looked_at(self):
        self.assertEqual(sorted(program_files.LARGEST), ["fat32format.exe", "orvanta-usbtool.exe"])

    def test_there_are_none(self):
        for name, largest in program_files.LARGEST.items():
            self.assertEqual(complaints(name, bytes(largest)), [])

    def test_a_large_program(self):
        for name, largest in program_files.LARGEST.items():
            self.assertEqual(len(complaints(name, bytes(largest + 1))), 1)

    def test_a_library_that_windows_does_not_have(self):
        for name in program_files.LARGEST:
            self.assertEqual(complaints(name, b"", FINE + "\tDLL Name: libstdc++-6.dll\n"),
                             [f"{name} needs libstdc++-6.dll"])

    def test_a_folder_of_the_builder(self):
        for name in program_files.LARGEST:
            self.assertEqual(complaints(name, b"..../builder/build/x"), [f"{name} names the folder /builder/build"])
            self.assertEqual(len(complaints(name, "/builder/build".encode("utf-16-le"))), 1)


class Handbook(unittest.TestCase):
    def test_it_goes_along_where_it_was_made(self):
        with tempfile.TemporaryDirectory() as temporary:
            folder = Path(temporary)
            self.assertEqual(program_files.handbook(folder), {})
            (folder / "Anleitung").mkdir()
            (folder / "Anleitung.html").write_bytes(b"page")
            (folder / "Anleitung" / "start.png").write_bytes(b"picture")
            (folder / "other.html").write_bytes(b"other")
            self.assertEqual(program_files.handbook(folder),
                             {"Anleitung.html": b"page", "Anleitung/start.png": b"picture"})


    def test_without_it_nothing_is_packed(self):
        files = {name: b"" for name in program_files.LARGEST}
        with mock.patch.object(program_files, "run", lambda *command: FINE):
            program_files.expect_fine(files | {"Anleitung.html": b"page"}, Path("/builder/build"))
            with self.assertRaises(SystemExit) as ended:
                program_files.expect_fine(files, Path("/builder/build"))
        self.assertIn("Anleitung.html", str(ended.exception))


class Signing(unittest.TestCase):
    """The command gets the file at its end, or where it wants it."""

    def signed_by(self, command):
        with mock.patch.dict(os.environ, SIGN_COMMAND=command), mock.patch.object(sign.subprocess, "run") as run:
            sign.sign("a file.exe")
        return [call.args[0] for call in run.call_args_list]

    def test_where_the_file_goes(self):
        self.assertEqual(self.signed_by("signer -k 'my key'"), [["signer", "-k", "my key", "a file.exe"]])
        self.assertEqual(self.signed_by("signer --in={} -q"), [["signer", "--in=a file.exe", "-q"]])

    def test_nothing_is_signed_without_a_command(self):
        self.assertEqual(self.signed_by(" "), [])


if __name__ == "__main__":
    unittest.main()
