"""What the tests of the assistant for hard disks share: its texts, its steps, a formatter that only plays one."""

import re
from pathlib import Path

from case import REPORT_TITLE
from sticks import SticksCase

FIRST = ("Vergewisseren Sie sich dass die USB-Platte NICHT am PC angeschlossen ist und drücken Sie dann auf "
         "WEITER.")
SECOND = ("Schließen Sie jetzt die USB-Festplatte an.\n\nFalls die Festplatte nicht gefunden wird, schließen Sie "
          "die Platte nochmal ab und gehen einen Schritt ZURÜCK.")
THIRD = "USB-Festplatte gefunden!\nLaufwerksbuchstabe: {}"
QUESTION_TITLE = "Wollen Sie formatieren ?"
QUESTION = ("ACHTUNG: ALLE DATEN AUF DER USB-DISK WERDEN GELÖSCHT:\n\nWollen Sie wirklich die Festplatte {} "
            "formatieren?\n\nFür Datenverlust wird keine Haftung übernommen.\n\nFormatieren mit OK ?")
REFUSAL_TITLE = "Keine Administrator-Rechte !"
REFUSAL = ("Zum Formatieren benötigen Sie Administrator-Rechte\nMelden Sie sich bei Windows als Administrator an, "
           "oder verständigen Sie Ihren Systemadministrator!")
DONE = "Formatierung abgeschlossen."
FAILED = "Formatierung fehlgeschlagen."
FORMATTING = "Wird formatiert – Platte nicht abziehen"
CANCEL = "Die Festplatte wird gerade formatiert. Wirklich abbrechen?"
NOT_STARTED = "New process could not be created!"
FORMATTER = "fat32format.exe"
OTHER = "ANOTHER ONE"  # the label of a disk that takes one's place

# It takes note of how it was called, of its number and of the answer.
HEAD = '#!/bin/sh\ncd "$(dirname "$0")"\nprintf "%s\\n" "$*" > called\necho $$ > number\n'
ANSWER = 'read -r answer\nprintf "%s\\n" "$answer" > answered\n'


class AssistantCase(SticksCase):
    def start_assistant(self, script=ANSWER + "echo Done\n", letters="", user="root", scale=1, **arguments):
        """The assistant is open in its first step; `user` is an administrator. No script is no formatter."""
        program = self.start(drives=self.table(letters), start=False,
                             environment={"USERNAME": user, "QT_SCALE_FACTOR": scale},
                             files={FORMATTER: None if script is None else (HEAD + script).encode()}, **arguments)
        if script is not None:
            (program.folder / FORMATTER).chmod(0o755)
        program.start()
        program.wait_window("frmMain")
        self.open(program)
        return program

    def open(self, program):
        program.click("cmdtest", "frmMain")
        program.wait_window("Form1")
        self.expect_step(program, 1, FIRST)

    def expect_step(self, program, number, text):
        program.wait_for("Label3", "text", f"Schritt {number}:", window="Form1")
        self.expect(program, {"Label2.text": text})

    def expect_buttons(self, program, onward, back):
        for name, enabled in (("Command1", onward), ("Command2", back)):
            program.wait_for(name, "enabled", enabled, window="Form1")

    def second_step(self, program):
        program.click("Command1", "Form1")
        self.expect_step(program, 2, SECOND)
        self.expect_buttons(program, False, True)

    def third_step(self, program, letters="h", found="H:"):
        self.second_step(program)
        self.plug(program, letters)
        self.expect_step(program, 3, THIRD.format(found))
        self.expect_buttons(program, True, True)

    def expect_disk(self, program, label):
        """Size and label of the disk that was found; a folder has no maker."""
        shown = re.compile(rf'(.*, )?\d+[.,]\d GB, Bezeichnung "{label}"')
        program.wait_for("lblDisk", "text", shown.fullmatch, window="Form1")

    def exchange_disk(self, program, letter):
        """From now on another disk has the letter, whose label is OTHER."""
        table = self.table(letter, **{letter: OTHER})
        folder = self.folder(f"{letter}-other")
        (folder / ".windows-serial").write_text("0815CAFE\n")  # where Wine keeps a folder's number
        for drive in table:
            if drive.letter == letter.upper():
                drive.values["Path"] = folder
        program.set_drives(table)

    def ask(self, program):
        program.click("Command1", "Form1")
        program.wait_message(title=QUESTION_TITLE)

    def start_format(self, program):
        self.third_step(program)
        self.ask(program)
        program.answer("OK")

    def note(self, program, name):
        path = program.folder / name
        return path.read_text() if path.exists() else None

    def child(self, program):
        """The number of the formatter that runs."""
        return int(program.wait_until(lambda: self.note(program, "number"), what="the formatter"))

    def is_gone(self, number):
        """Whether it has ended, even when nobody has asked after it yet."""
        try:
            state = Path(f"/proc/{number}/stat").read_text().rsplit(")", 1)[1].split()[0]
        except (FileNotFoundError, ProcessLookupError):
            return True
        return state == "Z"

    def wait_child_gone(self, program, number):
        program.wait_until(lambda: self.is_gone(number), what="the formatter's end")

    def cancel(self, program):
        """Closes the assistant while the formatter runs, and means it."""
        program.close("Form1")
        self.drop_message(program, REPORT_TITLE, CANCEL, 48, ("Ja", "Nein"))

    def expect_result(self, program, text):
        self.drop_message(program, REPORT_TITLE, text, 0)
        program.wait_until(lambda: "Form1" not in program.windows(), what="the assistant's end")
        self.assertIn("frmMain", program.windows())
