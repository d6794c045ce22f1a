"""What the tests of the installer for Windows share: installers of two versions, and a Windows for each test.

    USBTOOL_WINDOWS_BUILD   folder of the cross build, with the program and the probe (build/windows)
    USBTOOL_PICTURES        where pictures of the pages go
    USBTOOL_PATIENCE        seconds until something that is waited for counts as missing
"""

import atexit
import functools
import os
import pwd
import shutil
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path
from unittest import mock

from places import NEXT, ROOT

BUILD = Path(os.environ.get("USBTOOL_WINDOWS_BUILD", ROOT / "build" / "windows")).resolve()
sys.path[:0] = [str(ROOT / "tests" / "driver"), str(ROOT / "packaging" / "windows")]

import make_setup  # noqa: E402
import program_files  # noqa: E402

with mock.patch.dict(os.environ, USBTOOL_BUILD=str(BUILD)):  # for others it names the build for Linux
    import wine_machine
from window import POLL, DriverError  # noqa: E402

TITLE = "Orvanta USB-Stick Internetupdate Tool"
SECONDS, DAY = 1_700_000_000, 86_400
OLD, NEW = program_files.program_version(), NEXT
PATIENCE = float(os.environ.get("USBTOOL_PATIENCE", "120"))  # seconds: longer than what a busy machine takes
PROGRAM = "orvanta-usbtool.exe"
DONE, CANCELLED, NOT_POSSIBLE, IS_OPEN = 0, 1, 2, 3  # exit codes
UNINSTALLER = "Deinstallieren.exe"
REMOVE = {"cmd.exe", "conhost.exe"}  # delete the uninstaller after its end; Wine notes its console in the registry
USER = pwd.getpwuid(os.getuid()).pw_name
FOLDER = rf"C:\users\{USER}\AppData\Local\Programs\Orvanta USB-Tool"
TEMPORARY = (rf"C:\users\{USER}\Temp", rf"C:\users\{USER}\AppData\Local\Temp", r"C:\windows\temp")
MENU = rf"C:\users\{USER}\AppData\Roaming\Microsoft\Windows\Start Menu\Programs"
KEY = r"Software\Microsoft\Windows\CurrentVersion\Uninstall\orvanta-usbtool"


# What a prefix is told before it starts, behind what it has.
SETTINGS = r"""
[Software\\Wine]
"Version"="{version}"

[Software\\Wine\\Explorer\\Desktops]
"Default"="{width}x{height}"

[Control Panel\\Desktop]
"LogPixels"=dword:{letters:08x}
"""


def needs():
    """What is missing on this machine, in words."""
    missing = [tool for tool in ("makensis", "wine", "Xvfb", "osslsigncode", "openssl") if shutil.which(tool) is None]
    missing += [str(file) for file in (BUILD / "program" / PROGRAM, wine_machine.TOOLS / "usbtool_probe.exe")
                if not file.exists()]
    return "missing: " + ", ".join(missing) if missing else ""


@functools.cache
def work_folder():
    folder = tempfile.mkdtemp(prefix="usbtool-installer-")
    atexit.register(shutil.rmtree, folder)
    return Path(folder)


def time_of(number):
    """The time of all files of that version."""
    return SECONDS + DAY * (number == NEW)


@functools.cache
def build_of(number):
    """The build, whatever the version; of the next one the addresses and the handbook are others."""
    if number != NEW:
        return BUILD
    folder = work_folder() / "next"
    shutil.copytree(BUILD / "program", folder / "program")
    for name, more in (("Server.ini", b"; the next one\r\n"), ("Anleitung.html", b"<!-- the next one -->\n")):
        with open(folder / "program" / name, "ab") as file:
            file.write(more)
    return folder


@functools.cache
def setup(number):
    """The installer of that version."""
    return make_setup.make(build_of(number), work_folder(), time_of(number), number)


@functools.cache
def packed(number):
    """{name: bytes} of what is installed."""
    with tempfile.TemporaryDirectory() as folder:
        return program_files.contents(build_of(number), folder, number)


def windows_path(path):
    return "Z:" + str(path).replace("/", "\\")


class WindowsMachine(wine_machine.Machine):
    """A Windows with nothing installed; letters as large as told, 96 being the ordinary ones."""

    def __init__(self, letters, version, screen):
        self.screen = screen
        base = wine_machine.make_base()
        prefix = Path(tempfile.mkdtemp(prefix="installer-", dir=wine_machine.PREFIXES))
        wine_machine.copy_prefix(base, prefix)
        with open(prefix / "user.reg", "a", encoding="ascii") as registry:
            registry.write(SETTINGS.format(letters=letters, version=version, width=screen[0], height=screen[1]))
        super().__init__(prefix)
        self.folder = self.path(FOLDER)

    def path(self, windows):
        """Where a path of drive C: is on this machine."""
        return self.prefix / "drive_c" / windows.removeprefix("C:\\").replace("\\", "/")

    def run(self, command, plain=None):
        """Exit code of a whole command line."""
        reply = self.request("run", command=command, **({"plain": 1} if plain else {}))
        if plain and reply["administrator"]:
            raise AssertionError("it ran with an administrator's rights")
        return reply["status"]

    def launch_plain(self, program):
        """Starts a program, which is not waited for, without an administrator's rights."""
        if self.request("start", command=f'"{windows_path(program)}"', plain=1)["administrator"]:
            raise AssertionError("it runs with an administrator's rights")

    def hold(self, file):
        """Has a file of the program open, which cannot be deleted or replaced then, until it is released."""
        self.request("hold", file=windows_path(self.folder / file))

    def release(self):
        self.request("hold")

    def start(self, program, *words):
        """Starts a program, which is not waited for."""
        return subprocess.Popen([wine_machine.WINE, str(program), *words], env=self.environment,
                                stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def wine(self, *words):
        subprocess.run([wine_machine.WINE, *words], env=self.environment, check=True, stdin=subprocess.DEVNULL,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def registry(self, root="HKCU"):
        """{key: {name: value}} as an export shows them."""
        target = self.prefix / f"{root}.reg"
        self.wine("reg", "export", root, windows_path(target), "/y")
        keys, key = {}, None
        for line in target.read_text(encoding="utf-16").replace("\\\n  ", "").splitlines():
            if line.startswith("["):
                key = keys.setdefault(line[1:-1].partition("\\")[2], {})
            elif "=" in line and key is not None:
                name, _, value = line.partition("=")
                key[name.strip('"')] = value
        target.unlink()
        return keys

    def entry(self):
        """What the list of programs knows, texts without their quotes; empty when there is no entry."""
        values = self.registry().get(KEY, {})
        return {name: value[1:-1].replace('\\"', '"').replace("\\\\", "\\") if value.startswith('"') else value
                for name, value in values.items()}

    def files(self):
        """All files and folders of drive C:, temporary ones, too."""
        drive = self.prefix / "drive_c"
        return sorted(path.relative_to(drive).as_posix() for path in drive.rglob("*"))

    def temporary(self):
        """Those that are temporary; the names, as they come and go while they are listed."""
        return sorted(str(path) for folder in TEMPORARY for path in self.path(folder).rglob("*"))

    def installed(self):
        """{name: bytes} of what is in the program's folder."""
        return {file.relative_to(self.folder).as_posix(): file.read_bytes()
                for file in self.folder.rglob("*") if file.is_file()}

    # Pages

    def dialog(self):
        """What a dialog of another program shows; None when there is none."""
        return self.request("dialog")["dialog"]

    def wait_dialog(self, text):
        """The dialog that shows a text, once it does."""
        return wait_for(lambda: self.dialog_with(text), f"a dialog with {text!r}", self._dialog_now)

    def _dialog_now(self):
        """None, too, while one page takes the place of another."""
        try:
            return self.dialog()
        except DriverError:
            return None

    def _gone(self):
        try:
            return self.dialog() is None
        except DriverError:
            return False

    def dialog_with(self, text):
        """The dialog, when it shows that text."""
        shown = self._dialog_now()
        return shown if shown and any(text in control["text"] for control in shown["controls"]) else None

    def press(self, button):
        wait_for(lambda: self._usable(button), f"a button {button!r}", self._dialog_now)
        self.request("press", button=button)

    def _usable(self, button):
        shown = self._dialog_now() or {"controls": []}
        return any(control["text"].replace("&", "") == button and control["enabled"] for control in shown["controls"])

    def wait_no_dialog(self):
        wait_for(self._gone, "the end of the dialog", self._dialog_now)

    def program_windows(self):
        return [window["name"] for window in self.request("windows")["windows"] if window["visible"]]

    def wait_program(self):
        wait_for(lambda: "frmMain" in self.program_windows(), "the program's window", self.program_windows)

    def end_program(self):
        self.request("endSession")
        wait_for(lambda: PROGRAM not in self.processes(), "the program's end", self.processes)

    def close(self):
        super().close()
        shutil.rmtree(self.prefix, ignore_errors=True)


def wait_for(condition, what, otherwise):
    """What the condition tells, as soon as that is anything."""
    end = time.monotonic() + PATIENCE
    while True:
        found = condition()
        if found:
            return found
        if time.monotonic() > end:
            raise AssertionError(f"waited for {what} in vain; there is {otherwise()}")
        time.sleep(POLL)


class InstallerCase(unittest.TestCase):
    letters = 96
    version = "win10"
    screen = wine_machine.SCREEN
    maxDiff = None

    def setUp(self):
        missing = needs()
        if missing:
            self.fail(missing)
        self.machine = WindowsMachine(self.letters, self.version, self.screen)
        self.addCleanup(self.machine.close)
        self.temporary = self.machine.temporary()

    def start(self, program, *words):
        process = self.machine.start(program, *words)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    def install(self, number=OLD, more="", plain=None):
        return self.machine.run(f'"{windows_path(setup(number))}" /S{more}', plain)

    def remove(self, folder):
        """By the uninstaller of that folder."""
        status = self.machine.run(rf'"{folder}\{UNINSTALLER}" /S _?={folder}')
        self.wait_tidy()
        return status

    def block(self, name, folder=FOLDER):
        """A folder of the user's has that name, which no file can replace."""
        blocked = self.machine.path(folder) / name
        blocked.mkdir(parents=True)
        (blocked / "mine").touch()
        return blocked

    def uninstall(self, more="", plain=None):
        """As the list of programs tells for removing silently."""
        program, _, rest = self.machine.entry()["QuietUninstallString"].partition(" /S")
        status = self.machine.run(f"{program} /S{more}{rest}", plain)
        if status == 0:
            self.wait_tidy()
        return status

    def wait_tidy(self):
        """Until the uninstaller is gone, which cannot delete itself, with a copy that its pages run from."""
        wait_for(lambda: self.machine.temporary() == self.temporary and not REMOVE & set(self.machine.processes()),
                 "the end of the uninstaller", lambda: self.machine.temporary() + self.machine.processes())

    def expect_installed(self, number=OLD, changed=None):
        """What was packed is there and nothing else, but for what is told with its bytes."""
        wanted = packed(number) | (changed or {})
        found = self.machine.installed()
        self.assertEqual(found.pop(UNINSTALLER)[:2], b"MZ")
        self.assertEqual(sorted(found), sorted(wanted))
        self.assertEqual([name for name in wanted if found[name] != wanted[name]], [])

    def expect_gone(self):
        """Files, entry, and what was made on the way."""
        self.assertFalse(self.machine.folder.exists())
        self.assertEqual(self.machine.entry(), {})
        self.assertEqual(self.machine.temporary(), self.temporary)

    def picture(self, name):
        folder = os.environ.get("USBTOOL_PICTURES")
        if folder:
            Path(folder).mkdir(parents=True, exist_ok=True)
            time.sleep(0.3)  # so that it is painted; no test depends on a picture
            self.machine.screenshot(Path(folder) / f"{name}.png")
