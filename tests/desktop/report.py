"""What the ring tells: a line a check, with its figure, and a picture of the screen beside it."""

import contextlib
import os
import re
import sys
import traceback
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
RESULTS = Path(os.environ.get("USBTOOL_RESULTS", ROOT / "build" / "desktop"))
PICTURES = RESULTS / "pictures"


class Failed(AssertionError):
    """What a check found is not what has to be."""


class GivenUp(Exception):
    """What failed was needed for the rest, and has been told."""


class Check:
    """One of them, while it is made."""

    def __init__(self):
        self.figure = ""

    def that(self, holds, complaint):
        if not holds:
            raise Failed(complaint)

    def least(self, value, least, what):
        """`value` is the figure; it has to be at least so large."""
        self.figure = f"{value:.2f} {what}"
        self.that(value >= least, f"less than {least}")


class Report:
    """Of one scene. `camera` is a function that writes a picture of the screen to a path, while there is a screen."""

    def __init__(self, scene):
        self._scene = scene
        self.camera = None
        self.failed = 0
        self.made = 0

    @contextlib.contextmanager
    def check(self, name, needed=False):
        """Tells how the check that is made in the block went; a failed one ends the scene when the rest needs it."""
        check = Check()
        try:
            yield check
            verdict, complaint = "ok", ""
        except AssertionError as error:
            verdict, complaint = "FAIL", str(error)
        except Exception as error:  # whatever goes wrong in a check is a failure of that check
            verdict, complaint = "FAIL", " ".join(f"{type(error).__name__}: {error}".split())
            self._note(traceback.format_exc())
        picture = self.picture(name)
        parts = [part for part in (check.figure, complaint) if part]
        where = f" [{picture}]" if complaint and picture else ""
        print(f"{verdict:<5} {self._scene}: {name}{': ' if parts else ''}{'; '.join(parts)}{where}", flush=True)
        self.made += 1
        self.failed += verdict != "ok"
        if needed and verdict != "ok":
            raise GivenUp(name)

    def picture(self, name):
        """Takes one, and returns its path; None when there is no screen (any more)."""
        if self.camera is None:
            return None
        path = PICTURES / f"{file_name(f'{self._scene} {name}')}.png"
        try:
            self.camera(path)
        except Exception:
            self._note(traceback.format_exc())
            return None
        return os.path.relpath(path, ROOT)

    @staticmethod
    def _note(text):
        """For the scene's log."""
        print(text, file=sys.stderr, flush=True)


def file_name(text):
    return re.sub(r"[^0-9A-Za-zÄÖÜäöüß]+", "-", text).strip("-")
