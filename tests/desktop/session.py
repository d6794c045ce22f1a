"""A desktop session on X11 that nobody sees: a screen, a bus, a window manager, maybe a panel.

    with Session("xfwm4", size=(1366, 768), panel=True) as session:
        session.screen.press("Tab")

Everything that the session's programs write goes below its folder in build/desktop, which is their home, too.
"""

import os
import shutil
import subprocess
import tempfile
import time
from pathlib import Path

from pixels import crop
from processes import Processes
from report import RESULTS
from screen import Screen
from waiting import wait

PANEL_HEIGHT = 30  # pixels

# A clock would make two pictures of an idle screen differ.
PANEL = f"""panel_items = TS
panel_size = 100% {PANEL_HEIGHT}
panel_position = bottom center horizontal
strut_policy = follow_size
wm_menu = 0
systray_padding = 2 2 2
"""

FONT = "DejaVu Sans,{},-1,5,400,0,0,0,0,0,0,0,0,0,0,1"
COLOURS = {False: "airy", True: "darker"}


def base_environment():
    """Of the caller's environment no more than where programs are."""
    return {"PATH": os.environ["PATH"], "LANG": "C.UTF-8"}


def german():
    """The variables of the German locale, which is made when it is missing: machines without it stay as they are."""
    folder = RESULTS / "locales"
    if not (folder / "de_DE.UTF-8" / "LC_NUMERIC").exists():
        folder.mkdir(parents=True, exist_ok=True)
        made = Path(tempfile.mkdtemp(dir=folder))
        subprocess.run(["localedef", "-i", "de_DE", "-f", "UTF-8", str(made / "de_DE.UTF-8")], check=True,
                       capture_output=True)
        try:
            (made / "de_DE.UTF-8").rename(folder / "de_DE.UTF-8")
        except OSError:
            pass  # another scene was quicker
        shutil.rmtree(made)
    return {"LOCPATH": str(folder), "LANG": "de_DE.UTF-8", "LANGUAGE": "de"}


class Base:
    """What sessions of every kind have: a home, a bus, settings of the desktop's look."""

    def __init__(self, name, environment, font_size=10, dark=False, theme="qt6ct"):
        RESULTS.joinpath("sessions").mkdir(parents=True, exist_ok=True)
        self.folder = Path(tempfile.mkdtemp(prefix=f"{name}-", dir=RESULTS / "sessions"))
        self.processes = Processes(self.folder)
        self.runtime = Path(tempfile.mkdtemp(prefix="usbtool-desktop-"))  # paths of sockets are short
        self.environment = base_environment() | {
            "HOME": str(self.folder), "XDG_RUNTIME_DIR": str(self.runtime),
            "XDG_CONFIG_HOME": str(self.folder / "config"), "XDG_CACHE_HOME": str(self.folder / "cache"),
            "XDG_DATA_HOME": str(self.folder / "data")} | environment
        self._choose_look(theme, font_size, dark)

    def _choose_look(self, theme, font_size, dark):
        """As the user has chosen it in the desktop's settings: those of Xfce, or those of a desktop with Qt."""
        config = self.folder / "config"
        if theme == "gtk3":
            (config / "gtk-3.0").mkdir(parents=True)
            (config / "gtk-3.0" / "settings.ini").write_text(
                f"[Settings]\ngtk-font-name=DejaVu Sans {font_size}\n", encoding="utf-8")
            self.environment.update(XDG_CURRENT_DESKTOP="XFCE", QT_QPA_PLATFORMTHEME="gtk3")
            return
        (config / "qt6ct").mkdir(parents=True)
        colours = f"/usr/share/qt6ct/colors/{COLOURS[dark]}.conf"
        (config / "qt6ct" / "qt6ct.conf").write_text(
            f"[Appearance]\ncolor_scheme_path={colours}\ncustom_palette={str(dark).lower()}\nstyle=Fusion\n"
            f"[Fonts]\nfixed=\"{FONT.format(font_size).replace('Sans', 'Sans Mono')}\"\n"
            f"general=\"{FONT.format(font_size)}\"\n", encoding="utf-8")
        self.environment.update(QT_QPA_PLATFORMTHEME="qt6ct")

    def start_bus(self):
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = self.processes.start_and_ask(
            ["dbus-daemon", "--session", "--nofork"], self.environment, "--print-address={}")

    def enter(self):
        """From now on this process belongs to the session, as far as its libraries look for one."""
        os.environ.update(self.environment)

    def stop(self):
        self.processes.stop()
        shutil.rmtree(self.runtime, ignore_errors=True)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stop()


class Session(Base):
    """window_manager  "openbox" or "xfwm4"
    size            of the screen in pixels
    panel           a bar with the windows and a tray at the bottom of the screen
    environment     variables for all programs of the session
    look            font_size, dark, theme as of Base
    """

    def __init__(self, window_manager, size=(1366, 768), panel=False, environment=None, **look):
        super().__init__(window_manager, environment or {}, **look)
        self.size = size
        try:
            self._start(window_manager, panel)
        except BaseException:
            self.stop()
            raise

    def _start(self, window_manager, panel):
        number = self.processes.start_and_ask(
            ["Xvfb", "-screen", "0", f"{self.size[0]}x{self.size[1]}x24", "-nolisten", "tcp"], self.environment,
            "-displayfd")
        self.environment["DISPLAY"] = f":{number}"
        self.start_bus()
        self.screen = Screen(self.environment["DISPLAY"])
        self.processes.start([window_manager], self.environment)
        wait(self.screen.managed, window_manager)
        if panel:
            self._start_panel()

    def _start_panel(self):
        whole = self.screen.work_area()
        settings = self.folder / "panel"
        settings.write_text(PANEL, encoding="ascii")
        self.processes.start(["tint2", "-c", str(settings)], self.environment)
        wait(lambda: self.screen.work_area()[3] == whole[3] - PANEL_HEIGHT, "the panel")

    def picture(self, path=None):
        image = self.screen.picture()
        if path is not None:
            self.keep(image, path)
        return image

    @staticmethod
    def keep(image, path):
        path.parent.mkdir(parents=True, exist_ok=True)
        image.save(path, compress_level=1)

    def contents(self, box):
        """A picture of that part of the screen; of a window's inside it has no frame, which others may change."""
        return crop(self.picture(), box)

    def still(self, since=0.3):
        """A picture of the screen after nothing has moved on it for a while: what has been asked for is drawn."""
        before, moved = self.picture(), time.monotonic()
        def resting():
            nonlocal before, moved
            now = self.picture()
            if now.tobytes() != before.tobytes():
                before, moved = now, time.monotonic()
            return time.monotonic() - moved >= since
        wait(resting, "a screen at rest", poll=0.05)
        return before

    def stop(self):
        if getattr(self, "screen", None) is not None:
            self.screen.close()
            self.screen = None
        super().stop()
