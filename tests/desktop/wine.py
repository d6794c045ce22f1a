"""The program for Windows in a session: under Wine, whose windows the session's window manager frames and places.

It has no accessibility bus; what its windows show is read by the probe of the Wine tests. Keys come from the session.
"""

import os
from pathlib import Path

from report import ROOT

os.environ["USBTOOL_BUILD"] = os.environ.get("USBTOOL_WINDOWS_BUILD", str(ROOT / "build" / "windows"))

from household import FORMATTER, Household  # noqa: E402: it puts the folders of the drivers into the path
from part import Part  # noqa: E402
from windows_program import WindowsProgram  # noqa: E402
from wine_machine import PREFIXES, TOOLS, Machine, copy_prefix, make_base  # noqa: E402

OWN_DESKTOP = '"Desktop"="Default"'  # windows on a desktop of Wine's own, as the Wine tests want them
INCH = 96  # dots, at 100 %


class SessionMachine(Machine):
    """On the screen of a session, which outlives it. scale is what Windows enlarges everything by."""

    def __init__(self, session, name, scale=1):
        self._session = session
        prefix = PREFIXES / f"desktop-{name}"
        copy_prefix(make_base(), prefix)
        self._set(prefix / "user.reg", scale)
        super().__init__(prefix)

    @staticmethod
    def _set(registry, scale):
        text = registry.read_text(encoding="utf-8", errors="surrogateescape").replace(OWN_DESKTOP, "")
        dots = round(INCH * scale)
        text += f'\n[Control Panel\\\\Desktop] 1\n"LogPixels"=dword:{dots:08x}\n'
        registry.write_text(text, encoding="utf-8", errors="surrogateescape")

    def _start_screen(self):
        self.display = self._session.environment["DISPLAY"]

    def _end_screen(self):
        pass  # the session does


class WindowsHousehold(Household):
    """The same stick and server; the machine goes with it."""

    def __init__(self, session, scale=1):
        super().__init__(session)
        self._scale = scale
        self.machine = None

    def __enter__(self):
        super().__enter__()
        self.machine = SessionMachine(self._session, self.home.name, self._scale)
        self.addCleanup(self.machine.close)
        return self

    def start(self, drives=None, **_):
        path = f"{self.home / 'bin'}:{os.environ['PATH']}"
        program = WindowsProgram(
            self.machine, drives=self.drives() if drives is None else drives, server=self.server.url(),
            files={FORMATTER: (TOOLS / "formatter.exe").read_bytes(), "formatter.txt": b"answer\nDone\n"},
            environment={"PATH": path, "USBTOOL_ADMINISTRATORS": "root", "USERNAME": "root"}, start=False)
        self.addCleanup(program.stop)
        program.start()
        return program


def parts_of(program, window="frmMain"):
    """As access.parts() tells them."""
    def parts():
        left, top, _, _ = program.windows()[window]["geometry"]
        found = []
        for name, part in program.all(window).items():
            x, y, width, height = part["geometry"]
            states = {state for state, key in (("enabled", "enabled"), ("focused", "focus"), ("showing", "visible"))
                      if part[key]}
            box = (left + x, top + y, width, height)
            found.append(Part(role(name, part["class"]), name, part["text"], frozenset(states), box))
        return found

    return parts


def role(name, kind):
    """As the accessibility bus calls parts whose class tells less than their names."""
    if "_Option_" in name:
        return "radio button"
    return "check box" if name.startswith("chk") else kind


def built():
    """Whether there is a program for Windows to play with."""
    return (Path(os.environ["USBTOOL_BUILD"]) / "program" / "orvanta-usbtool.exe").exists()
