"""The installed program, started from its menu entry: what panels and compositors know it by, and show of it."""

import os
import subprocess
import tempfile
from pathlib import Path

from PIL import Image

import pixels
from compositor import Sway
from household import TITLE, Household, server_ini
from report import RESULTS, ROOT
from session import PANEL_HEIGHT, Session, german
from waiting import wait

NAME = "orvanta-usbtool"
BUILD = Path(os.environ.get("USBTOOL_BUILD", ROOT / "build"))
ICON_SIZE = 48
LEAST = 300  # changed pixels of the taskbar: an icon of 22 and a name have more


class Installed:
    """Below a folder of its own, where menus of the session find it."""

    def __init__(self, household, session):
        self.prefix = Path(tempfile.mkdtemp(prefix="installed-", dir=RESULTS))
        subprocess.run(["cmake", "--install", BUILD, "--prefix", self.prefix], check=True, capture_output=True)
        self.entry = self.prefix / "share" / "applications" / f"{NAME}.desktop"
        folder = (self.prefix / "bin" / NAME).resolve().parent
        (folder / "Server.ini").write_bytes(server_ini(household.server.url()))
        (folder / "Drives.ini").write_bytes("".join(drive.section() for drive in household.drives()).encode("cp1252"))
        session.environment.update(
            PATH=f"{self.prefix / 'bin'}:{household.home / 'bin'}:{session.environment['PATH']}",
            XDG_DATA_DIRS=f"{self.prefix / 'share'}:/usr/local/share:/usr/share")

    def value(self, key):
        lines = self.entry.read_text(encoding="utf-8").splitlines()
        return next(line.partition("=")[2] for line in lines if line.startswith(key + "="))

    def start(self, session):
        """As menus do: by the entry, not by the program's path."""
        session.processes.start(["gio", "launch", str(self.entry)], session.environment)

    def icon(self, size):
        return Image.open(self.prefix / "share" / "icons" / "hicolor" / f"{size}x{size}" / "apps" /
                          f"{self.value('Icon')}.png").convert("RGBA")


def taskbar(session):
    width, height = session.size
    return session.contents((0, height - PANEL_HEIGHT, width, PANEL_HEIGHT))


def on_x11(report):
    with Session("openbox", panel=True, environment=german()) as session, Household(session) as household:
        report.camera = session.picture
        installed = Installed(household, session)
        session.still()
        empty = taskbar(session)
        installed.start(session)
        window = session.screen.wait_window(TITLE)
        with report.check("X11, the window is the menu entry's") as check:
            check.figure = " ".join(session.screen.class_of(window))
            check.that(installed.value("StartupWMClass") in session.screen.class_of(window), "of another class")
        with report.check("X11, the name begins as in the menu") as check:
            check.figure = installed.value("Name[de]")
            check.that(session.screen.title(window).startswith(check.figure + " "), session.screen.title(window))
        with report.check("X11, the window's icon is the installed one") as check:
            icon = session.screen.icon_of(window, ICON_SIZE)
            check.that(icon is not None, f"none of {ICON_SIZE} pixels")
            check.figure = f"{ICON_SIZE} × {ICON_SIZE}"
            check.that(same(icon, installed.icon(ICON_SIZE)), "another picture")
        with report.check("X11, icon and name on the taskbar") as check:
            check.that(session.screen.is_on_taskbar(window), "it asks not to be there")
            changed = wait(lambda: shown(empty, taskbar(session)), "the taskbar's entry")
            check.figure = f"{changed} pixels of it"
        session.screen.close_window(window)
        wait(lambda: TITLE not in session.screen.windows(), "the end of the window")
    report.camera = None


def same(one, other):
    """What is transparent has no colour."""
    return all(a[3] == b[3] and (a[3] == 0 or max(abs(x - y) for x, y in zip(a, b)) <= 2)
               for a, b in zip(one.getdata(), other.getdata()))


def shown(before, now):
    changed = pixels.different(before, now)
    return changed if changed >= LEAST else 0


def on_wayland(report):
    with Sway((1366, 768), environment=german()) as session, Household(session) as household:
        report.camera = session.picture
        installed = Installed(household, session)
        installed.start(session)
        window = session.wait_window(TITLE)
        with report.check("Wayland, the window is the menu entry's") as check:
            check.figure = window["app_id"] or "nobody's"
            check.that(window["app_id"] == installed.entry.stem, "of another application")
        session.close_window(TITLE)
        wait(lambda: TITLE not in session.windows(), "the end of the window")
    report.camera = None


def play(report):
    on_x11(report)
    on_wayland(report)
