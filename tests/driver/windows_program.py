"""Uses the real Windows program as a person does, on a machine of wine_machine.py.

    with WindowsProgram(machine, drives=[Drive("E", 2, stick)], server=url) as program:
        program.wait_for("cmdChoose", "text", "Starte Update")

The program is program/orvanta-usbtool.exe of the build folder USBTOOL_BUILD, or the one that USBTOOL_PROGRAM names.
"""

import os
import shutil
import tempfile
from pathlib import Path

from driver import server_ini
from window import DEADLINE, DriverError, LocalProgram, ProgramEnded, given
from wine_machine import BUILD, WINE

PROGRAM = Path(os.environ.get("USBTOOL_PROGRAM", BUILD / "program" / "orvanta-usbtool.exe"))
ARRIVAL = 0x8000  # DBT_DEVICEARRIVAL
REMOVAL = 0x8004  # DBT_DEVICEREMOVECOMPLETE


class WindowsProgram(LocalProgram):
    """One run of the program on a machine, in a private copy of its folder. Arguments as of driver.Program; what drives
    hold and what they are called can be given, their sizes and file systems are those of this machine's disk."""

    def __init__(self, machine, drives=None, server=None, files=None, environment=None, start=True):
        self.machine = machine
        self._original = PROGRAM.resolve()
        self._temporary = tempfile.TemporaryDirectory(prefix="usbtool-")
        self.home = Path(self._temporary.name)
        self.folder = self.home / "program"
        self.executable = self.folder / self._original.name
        self._environment = environment or {}
        self._table = {}
        shutil.copytree(self._original.parent, self.folder, ignore=shutil.ignore_patterns("Settings.ini"))
        if server is not None:
            self.write("Server.ini", server_ini(server))
        for name, contents in (files or {}).items():
            self.write(name, contents)
        if drives is not None:
            self.set_drives(drives)
        if start:
            self.start()

    # Life

    def set_drives(self, drives, announce=True):
        """C: and Z: are those of the prefix. A running program gets the messages that Windows sends."""
        wanted = {drive.letter: drive for drive in drives if drive.letter not in "CZ"}
        gone = [letter for letter in self._table if letter not in wanted]
        new = [letter for letter, drive in wanted.items() if self._table.get(letter) != drive.values]
        for letter in gone:
            self.machine.undefine(letter)
        for letter in new:
            self._define(wanted[letter])
        self._table = {letter: dict(drive.values) for letter, drive in wanted.items()}
        if not announce or self.process is None or not self.running():
            return
        if gone:
            self.device_message(REMOVAL, "".join(gone))
        if new:
            self.device_message(ARRIVAL, "".join(new))

    def _define(self, drive):
        folder = Path(drive.values["Path"])
        label = drive.values["Label"]
        if folder.is_dir():
            mark = folder / ".windows-label"
            mark.unlink(missing_ok=True)
            if label:
                mark.write_bytes(label.encode())
        self.machine.define(drive.letter, drive.values["Type"], folder)

    def start(self):
        environment = self.machine.environment | {name: str(value) for name, value in self._environment.items()
                                                  if value is not None}
        for name in (name for name, value in self._environment.items() if value is None):
            environment.pop(name, None)
        self._launch([WINE, str(self.executable)], environment)
        self.wait_until(self._shown, what="a window")

    def _shown(self):
        self._expect_running()
        return self.windows() or self.message()

    def terminate(self):
        """The end of the session."""
        self.request("endSession")

    # Requests

    def request(self, what, timeout=DEADLINE, **arguments):
        try:
            return self.machine.request(what, **given(arguments))
        except DriverError as error:
            if self.running():
                raise
            raise ProgramEnded(f"{error}\n{self.output()}") from None

    def mouse(self, name, *steps, window=None, button="left"):
        words = " ".join(f"{what} {int(x)} {int(y)}" for what, x, y in steps)
        self.request("mouse", name=name, steps=words, window=window, button=button)

    def type(self, text="", *keys):
        self.request("type", text=text, keys=" ".join(keys))

    def enter_text(self, name, text, window=None):
        """Replaces the text of a box by typing. Messages that are posted overtake keys, so it is waited for."""
        self.focus(name, window)
        self.type("", "Home", "Shift+End", "Backspace")
        self.type(text)
        self.wait_for(name, "text", text, window=window)

    def screenshot(self, path, window=None):
        self.machine.screenshot(path)

    def device_message(self, event, letters=None):
        """What Windows tells the main window about drives, or, without letters, about devices in general."""
        self.request("deviceMessage", event=event, letters=letters)

    def menu(self, name):
        """An item of the menu that belongs to the tray icon."""
        self.request("menu", name=name)

    def longest_answer(self, seconds, window="frmMain"):
        """How many seconds the window takes to answer at the worst, asked for so long."""
        answer = self.request("longestAnswer", timeout=DEADLINE + seconds, window=window,
                              milliseconds=int(seconds * 1000))
        return answer["milliseconds"] / 1000

    def minimize(self, window="frmMain"):
        self.request("minimize", window=window)

    def colors(self, name, window=None):
        """{(red, green, blue): number of pixels} of what is on the screen at a part."""
        return {tuple(c[:3]): c[3] for c in self.request("colors", name=name, window=window)["colors"]}

    def shown_tool_tip(self):
        """The tool tip that is on the screen; empty when there is none."""
        return self.request("shownToolTip")["text"]

    def other_windows(self):
        return self.machine.other_windows()
