"""What somebody hears who does not see: the screen reader Orca says it, here into a file, in German."""

import os
import re
import threading
import tty

import access
from household import CONFIRMATION, SUCCESS, TITLE, Household
from session import Session, german
from waiting import wait

SPOKEN = re.compile(r"SPEECH OUTPUT: '(.*?)' ?\{", re.DOTALL)
AUTOMATIC = {"Settings.ini": b"[USB Tool]\r\nchkAuto=1\r\ncmbSize=0\r\n"}
FOUND = r"(?<!Kein )USB-Stick gefunden|^USB Stick\b(?! Informationen)"
GONE = r"Kein USB-Stick gefunden|^No Stick\b"
MEGABYTES, RATE = 8, 1  # the firmware takes 8 s
MOST_WORDS = 25  # utterances from the question to the success box: one a dot would be more than a hundred
NOTIFICATION = re.compile(r"^Benachrichtigung (.+)")


class Ears:
    """Orca, and what it has said so far. It writes in large blocks to anything but a terminal, so it gets one."""

    def __init__(self, session):
        ours, its = os.openpty()
        tty.setraw(its)
        self._notes = bytearray()
        self._heard = 0
        threading.Thread(target=self._listen, args=(ours, session.folder / "orca-notes"), daemon=True).start()
        session.processes.start(["orca", "--replace", f"--debug-file={os.ttyname(its)}"], session.environment)
        wait(self.all, "a word of the screen reader's")

    def _listen(self, terminal, copy):
        with open(copy, "wb") as file:
            while True:
                words = os.read(terminal, 65536)
                self._notes += words
                file.write(words)
                file.flush()

    def all(self):
        """Everything that was said, oldest first."""
        return SPOKEN.findall(bytes(self._notes).decode("utf-8", errors="replace"))

    def skip(self):
        """From now on only what is still to be said counts."""
        self._heard = len(self.all())

    def hear(self, pattern, timeout=20):
        """Waits for an utterance that matches, behind the last one that was waited for, and returns it."""
        def found():
            for number, words in enumerate(self.all()[self._heard :], self._heard):
                if re.search(pattern, words):
                    self._heard = number + 1
                    return words
            return None

        try:
            return wait(found, f"the words {pattern!r}", timeout, poll=0.2)
        except AssertionError as error:
            raise AssertionError(f"{error}, only {self.all()[self._heard :]}") from None


def shortened(words):
    words = " ".join(words.split())
    return repr(words if len(words) <= 90 else words[:90] + " …")


def expect(report, ears, label, pattern):
    with report.check(label) as check:
        check.figure = shortened(ears.hear(pattern))


def sticks(report, household, program, ears):
    """From the start to the stick, gone once and back again."""
    with report.check("the window") as check:
        words = ears.hear(re.escape(TITLE))
        check.figure = shortened(words)
        check.that("Dialog" not in words, "a dialog, whose whole text is read")
    expect(report, ears, "search for updates has ended", "Updates geladen|Updates wurden geladen")
    access.wait_part(lambda part: part.name == "Updates geladen.", what="the end of the search")
    program.set_drives(household.table("E"))
    expect(report, ears, "stick found", FOUND)
    program.set_drives(household.table(""))
    expect(report, ears, "stick gone", GONE)
    program.set_drives(household.table("E"))
    access.wait_loaded()


def job(report, session, ears):
    screen = session.screen
    screen.wait_active(TITLE)
    ears.skip()
    screen.press("Alt+U")
    screen.wait_active(CONFIRMATION)
    expect(report, ears, "question", "Updaten mit OK")
    screen.press("Return")
    before = len(ears.all())
    with report.check("percent while it is fetched") as check:
        heard = [ears.hear(r"\b\d+ ?(%|Prozent)") for _ in range(2)]
        check.figure = " then ".join(map(shortened, heard))
        shares = [int(re.search(r"(\d+) ?(%|Prozent)", words).group(1)) for words in heard]
        check.that(shares[0] < shares[1], "it does not grow")
    screen.wait_active(SUCCESS)
    expect(report, ears, "done", "Update abgeschlossen")
    expect(report, ears, "files read back", "Geprüft: 4 Dateien")
    expect(report, ears, "success box", "KOSTENLOS")
    with report.check("few words") as check:
        said = len(ears.all()) - before
        check.figure = f"{said} utterances"
        check.that(said <= MOST_WORDS, "nobody can listen to that")
    with report.check("nothing twice") as check:
        found = [words.group(1) for words in map(NOTIFICATION.match, ears.all()) if words]
        twice = [words for words, after in zip(found, found[1:]) if words == after]
        check.figure = f"{len(found)} notifications"
        check.that(not twice, f"said twice: {twice}")


def play(report):
    with Session("openbox", environment=german()) as session, Household(session) as household:
        access.enter(session)
        report.camera = session.picture
        with report.check("screen reader", needed=True) as check:
            ears = Ears(session)
            check.figure = repr(ears.all()[0])
        household.serve_slowly("sr200.abs.txt", MEGABYTES, RATE)
        program = household.start(drives=household.table(""), files=AUTOMATIC)
        sticks(report, household, program, ears)
        job(report, session, ears)
        (session.folder / "spoken").write_text("\n".join(ears.all()), encoding="utf-8")
