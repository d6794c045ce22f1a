"""Libraries that lie beside the program, where a folder of downloads may have them: none of them is loaded."""

import re
import shutil
import subprocess
import unittest

from windows_case import TOOLS, WindowsCase

import format_assistant_test as shared
from side_by_side import side_by_side
from window import DriverError
from windows_program import PROGRAM

# Windows takes these from its own folder whatever lies beside a program. Registry key "KnownDLLs" of Windows 10
# and 11; COMCTL32 is bound by the program's manifest to the system's folder of side-by-side libraries.
KNOWN = {"advapi32", "clbcatq", "combase", "comdlg32", "coml2", "difxapi", "gdi32", "gdiplus", "imagehlp", "imm32",
         "kernel32", "msctf", "msvcrt", "normaliz", "nsi", "ntdll", "ole32", "oleaut32", "psapi", "rpcrt4", "sechost",
         "setupapi", "shcore", "shell32", "shlwapi", "user32", "wldap32", "ws2_32", "comctl32"}

# What the program's own functions and those of the system load while it runs. Not "bcrypt", "crypt32",
# "msimg32" and "uxtheme": Wine's COMCTL32 loads them before the program begins.
LOADED_LATER = ("activeds", "actxprxy", "adsldpc", "cryptbase", "dnsapi", "dwmapi", "explorerframe",
                "iertutil", "iphlpapi", "mpr", "mswsock", "netapi32", "netutils", "oleacc", "oleaut32", "profapi",
                "propsys", "riched20", "rsaenh", "secur32", "shell32", "sspicli", "textshaping", "urlmon", "userenv",
                "windowscodecs", "winhttp", "wininet", "winmm")


def imports(program):
    """The libraries that are loaded before the program begins."""
    found = subprocess.run(["x86_64-w64-mingw32-objdump", "-p", program], capture_output=True, text=True, check=True)
    return {name.lower().removesuffix(".dll") for name in re.findall(r"DLL Name: (\S+)", found.stdout)}


class PlantedLibraries(WindowsCase):
    def test_what_windows_loads_first_is_only_its_own(self):
        for program in (PROGRAM, PROGRAM.with_name("fat32format.exe")):
            self.assertEqual(imports(program) - KNOWN, set(), program)

    def test_none_is_loaded(self):
        planted = sorted(set(LOADED_LATER) | imports(PROGRAM) - KNOWN)
        overrides = self.machine.environment["WINEDLLOVERRIDES"] + ";" + ",".join(planted) + "=n,b"
        program = self.start_planted(planted, overrides)
        self.wait_loaded(program)
        program.click("cmdtest")
        program.wait_window("Form1")
        program.click("Command1", "Form1")  # asks the directory service who may format
        self.drop_message(program, shared.REFUSAL_TITLE, shared.REFUSAL, 16)
        self.assertEqual(self.loaded(program), [])
        self.close(program)

    def start_planted(self, names, overrides):
        program = self.start(start=False, environment={"USBTOOL_ADMINISTRATORS": "", "WINEDLLOVERRIDES": overrides})
        for name in names:
            shutil.copyfile(TOOLS / "planted.dll", program.folder / f"{name}.dll")
        try:
            program.start()
        except DriverError as error:
            self.fail(f"{error}; loaded: {self.loaded(program)}")
        return program

    def loaded(self, program):
        return sorted(file.name for file in program.folder.glob("*.loaded"))


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
