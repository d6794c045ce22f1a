"""What the tests with several sticks share: sticks by letter, plugged and pulled, and pictures of the windows."""

import os
from pathlib import Path

from case import BUILD, GIB, WindowCase
from driver import Drive

PICTURES = Path(os.environ.get("USBTOOL_PICTURES", BUILD / "pictures"))

AUTOMATIC = {"Settings.ini": b"[USB Tool]\r\nchkAuto=1\r\ncmbSize=0\r\n"}

FOUND = {"StatusBar1_1.text": "USB Stick", "StatusBar1_1.enabled": True,
         "StatusBar1_1.toolTip": "USB-Stick gefunden."}

NONE = {"StatusBar1_1.text": "No Stick", "StatusBar1_1.enabled": False,
        "StatusBar1_1.toolTip": "Kein USB-Stick gefunden. Schließen Sie den USB-Stick am PC an.",
        "txtDT_Cap.text": "", "txtFAT.text": "", "txtOpenPath.text": "",
        "lblHDSize.text": "", "lblHDUsed.text": "", "lblHDFree.text": ""}


# While the program starts the button tells of the search for updates instead.
READY = {"cmdChoose.enabled": True, "cmdChoose.text": "Starte Update"}
WAITING = {"cmdChoose.enabled": False, "cmdChoose.text": "USB Stick einstecken"}


class SticksCase(WindowCase):
    """Sticks are named by their letters; their labels are "STICK E" and so on. Fixed disks have small letters."""

    def folder(self, letter):
        folder = self.home / letter
        folder.mkdir(exist_ok=True)
        return folder

    def table(self, letters="", **labels):
        """C:, the sticks and disks in the order of the letters, and Z:, which is never looked at."""
        drives = [Drive("C", 3, self.system)]
        for letter in letters:
            kind = 3 if letter.islower() else 2
            drives.append(Drive(letter.upper(), kind, self.folder(letter), label=labels.get(letter, f"STICK {letter}"),
                                file_system="FAT32", total=4 * GIB))
        return drives + [Drive("Z", 4, self.system)]

    def plug(self, program, letters):
        """From now on these are there."""
        program.set_drives(self.table(letters))

    def start_detecting(self, letters="", **arguments):
        """The program with automatic detection, past its start."""
        program = self.start(drives=self.table(letters), files=AUTOMATIC | arguments.pop("files", {}), **arguments)
        program.wait_for("chkAuto", "checked", True)
        return program

    def wait_stick(self, program, letter):
        program.wait_for("txtDT_Cap", "text", f"STICK {letter}", window="frmMain")
        self.expect(program, FOUND | {"lblLW.text": f"{letter}:\\", "txtFAT.text": "FAT32"})

    def wait_no_stick(self, program):
        program.wait_for("StatusBar1_1", "text", "No Stick")
        self.expect(program, NONE)

    def picture(self, program, name, window=None):
        """A picture to look at; no test depends on it."""
        PICTURES.mkdir(parents=True, exist_ok=True)
        program.screenshot(PICTURES / f"{name}.png", window)
