"""Reads from the finished programs what they were hardened with. USBTOOL_BUILD names the build; `.exe`s of a cross
build are read with the tools of its compiler."""

import os
import re
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BUILD = Path(os.environ.get("USBTOOL_BUILD", ROOT / "build")).resolve()
BUILD_TYPE = os.environ.get("USBTOOL_BUILD_TYPE", "RelWithDebInfo")
DEBUG_INFORMATION = BUILD_TYPE == "RelWithDebInfo"
COMPILER = os.environ.get("USBTOOL_COMPILER", "GNU")
WINDOWS = os.environ.get("USBTOOL_SYSTEM") == "Windows"
MINGW = "x86_64-w64-mingw32-"
PROGRAM = BUILD / "program" / ("orvanta-usbtool.exe" if WINDOWS else "orvanta-usbtool")
FORMATTER = BUILD / "program" / "fat32format.exe"
ELF_PROGRAMS = [PROGRAM, FORMATTER]
PE_PROGRAMS = [PROGRAM, FORMATTER]
LARGEST_FORMATTER = 500_000  # bytes, stripped
# Windows keeps these on its list of known ones, so that none is looked for beside the program.
LIBRARIES_OF_FORMATTER = {"advapi32.dll", "kernel32.dll", "msvcrt.dll", "ole32.dll"}


def output_of(*command):
    return subprocess.run([str(word) for word in command], capture_output=True, text=True, errors="replace",
                          check=True).stdout


def paths_of_the_build(program):
    """Folders of this machine that are named in the program."""
    data = program.read_bytes()
    return [str(folder) for folder in (ROOT, BUILD, Path.home() / "") if str(folder) != "/"
            and str(folder).encode() + b"/" in data]


@unittest.skipIf(WINDOWS, "reads programs for Linux")
class Linux(unittest.TestCase):
    def test_it_lies_anywhere_and_its_tables_are_read_only(self):
        for program in ELF_PROGRAMS:
            headers = output_of("readelf", "-hlW", program)
            dynamic = output_of("readelf", "-dW", program)
            self.assertRegex(headers, r"Type:\s+DYN")
            self.assertIn("GNU_RELRO", headers)
            self.assertRegex(headers, r"GNU_STACK.* RW ")
            self.assertRegex(dynamic, r"FLAGS_1.*NOW")
            self.assertRegex(dynamic, r"FLAGS_1.*PIE")
            self.assertNotIn("TEXTREL", dynamic)

    def test_libraries_come_from_the_system(self):
        for program in ELF_PROGRAMS:
            self.assertNotRegex(output_of("readelf", "-dW", program), "RPATH|RUNPATH")

    def test_the_stack_is_watched(self):
        for program in ELF_PROGRAMS:
            self.assertIn("__stack_chk_fail", output_of("nm", "-D", "--undefined-only", program))

    def test_the_library_checks_what_it_is_told(self):
        for program in ELF_PROGRAMS:
            self.assertIn("__glibcxx_assert_fail", output_of("nm", "-D", "--undefined-only", program))

    @unittest.skipUnless(COMPILER == "GNU", "no other compiler calls the C library's own checks")
    def test_functions_of_c_know_the_size_of_what_they_fill(self):
        """A program calls those of them for which the compiler had something to check."""
        self.assertRegex(output_of("nm", "-D", "--undefined-only", PROGRAM), r"__\w+_(chk|2)@GLIBC")

    def test_functions_are_marked_where_they_may_be_jumped_to(self):
        """The note that the whole program is cannot be there: Debian's start-up objects are not."""
        for program in ELF_PROGRAMS:
            code = output_of("objdump", "-d", "--section=.text", "--no-show-raw-insn", program)
            self.assertGreater(code.count("endbr64"), 50, program)

    @unittest.skipIf(BUILD_TYPE == "None", "the distribution takes it apart")
    def test_debug_information_lies_apart_and_fits(self):
        """As far as it was asked for."""
        for program in ELF_PROGRAMS:
            self.assertNotIn(".debug_", output_of("readelf", "-SW", program))
            apart = BUILD / "debug-information" / f"{program.name}.debug"
            if DEBUG_INFORMATION:
                self.assertIn(".debug_info", output_of("readelf", "-SW", apart))
            self.assertIn(apart.name, output_of("readelf", "--string-dump=.gnu_debuglink", program))
            ids = [re.search("Build ID: (.*)", output_of("readelf", "-nW", file))[1] for file in (program, apart)]
            self.assertEqual(ids[0], ids[1])

    def test_no_folder_of_the_builder_is_named(self):
        for program in ELF_PROGRAMS:
            self.assertEqual(paths_of_the_build(program), [])


@unittest.skipUnless(WINDOWS, "reads programs for Windows")
class Windows(unittest.TestCase):
    def test_it_lies_anywhere_and_its_data_are_not_run(self):
        high_entropy, dynamic_base, no_execution = 0x20, 0x40, 0x100
        wanted = high_entropy | dynamic_base | no_execution
        for program in PE_PROGRAMS:
            found = re.search(r"DllCharacteristics\s+([0-9a-f]+)", output_of(MINGW + "objdump", "-p", program))
            self.assertEqual(int(found[1], 16) & wanted, wanted, program)

    def test_the_stack_is_watched(self):
        for program in PE_PROGRAMS:
            self.assertIn("__stack_chk_fail", output_of(MINGW + "nm", program))

    def test_the_library_checks_what_it_is_told(self):
        for program in PE_PROGRAMS:
            self.assertIn("__glibcxx_assert_fail", output_of(MINGW + "nm", program))

    def test_no_folder_of_the_builder_is_named(self):
        for program in PE_PROGRAMS:
            self.assertEqual(paths_of_the_build(program), [])

    def test_the_formatter_needs_no_library_but_windows_own(self):
        imports = re.findall(r"DLL Name: (\S+)", output_of(MINGW + "objdump", "-p", FORMATTER))
        self.assertEqual({name.lower() for name in imports}, LIBRARIES_OF_FORMATTER)

    def test_the_formatter_is_small(self):
        with tempfile.TemporaryDirectory() as folder:
            small = Path(folder) / FORMATTER.name
            output_of(MINGW + "strip", "--strip-all", "-o", small, FORMATTER)
            self.assertLess(small.stat().st_size, LARGEST_FORMATTER)

    def test_the_formatter_asks_for_rights_itself(self):
        """Windows would else ask before anybody has read what is meant, or the assistant could not start it."""
        self.assertIn(b'<requestedExecutionLevel level="asInvoker"', FORMATTER.read_bytes())


if __name__ == "__main__":
    unittest.main()
