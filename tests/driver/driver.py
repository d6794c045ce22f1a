"""Uses the real program as a person does: offscreen, through the plugin beside this file.

    with Program(drives=[Drive("C", 3, root), Drive("E", 2, stick), Drive("Z", 4, root)], server=url) as program:
        program.wait_for("cmdChoose", "text", "Starte Update")
        program.click("cmdChoose")
        program.wait_message()
        program.answer("OK")

Nothing here sleeps for luck: what takes time is waited for, with a deadline.
"""

import json
import os
import shutil
import signal
import socket
import tempfile
import time
from pathlib import Path

from window import DEADLINE, POLL, DriverError, LocalProgram, PluginWindow

BUILD = Path(os.environ.get("USBTOOL_BUILD", Path(__file__).resolve().parents[2] / "build"))
SMALLEST_SCREEN = (1366, 768)  # that the window has to fit


class Drive:
    """A section of Drives.ini."""

    def __init__(self, letter, kind, path, label=None, file_system=None, total=None, free=None):
        self.letter = letter
        self.values = {"Type": kind, "Path": path, "Label": label, "FileSystem": file_system,
                       "Total": total, "Free": free}

    def section(self):
        lines = [f"[{self.letter}:]"]
        lines += [f"{key}={value}" for key, value in self.values.items() if value is not None]
        return "\r\n".join(lines) + "\r\n"


class Program(PluginWindow, LocalProgram):
    """One run of the program in a private copy of its folder.

    drives        list of Drive for Drives.ini; None leaves the file out
    server        address for all three keys of Server.ini; None leaves the file that ships
    files         {name: bytes} put into the program folder before the start; None as bytes removes the file
    environment   variables to set; None as value removes one
    screen        size of the screen in pixels
    executable    the program; else $USBTOOL_PROGRAM, else that of the release build
    """

    arguments = ()  # of the command line

    def __init__(self, drives=None, server=None, files=None, environment=None, executable=None, start=True,
                 screen=SMALLEST_SCREEN):
        original = executable or os.environ.get("USBTOOL_PROGRAM") or BUILD / "program" / "orvanta-usbtool"
        self._original = Path(original).resolve()
        self._temporary = tempfile.TemporaryDirectory(prefix="usbtool-")
        self.home = Path(self._temporary.name)
        self.folder = self.home / "program"
        self.executable = self.folder / self._original.name
        self._socket_path = self.home / "driver"
        self._environment = environment or {}
        self._screen_size = screen
        self._copy_folder()
        if drives is not None:
            self.set_drives(drives)
        if server is not None:
            self.write("Server.ini", server_ini(server))
        for name, contents in (files or {}).items():
            self.write(name, contents)
        if start:
            self.start()

    # Life

    def _copy_folder(self):
        self.folder.mkdir()
        for source in self._original.parent.iterdir():
            target = self.folder / source.name
            if source.name in ("Drives.ini", "Settings.ini"):
                continue
            if source == self._original:
                # A link, not a symbolic one: the program finds its folder by where its file is.
                try:
                    os.link(source, target)
                except OSError:
                    shutil.copy2(source, target)
            elif source.is_file():
                shutil.copy2(source, target)

    def set_drives(self, drives):
        self.write("Drives.ini", "".join(drive.section() for drive in drives).encode("cp1252"))

    def environment(self):
        """What the program is started with."""
        values = dict(os.environ)
        for name in ("DISPLAY", "WAYLAND_DISPLAY", "http_proxy", "https_proxy", "all_proxy", "HTTP_PROXY",
                     "HTTPS_PROXY", "ALL_PROXY", "SESSION_MANAGER", "QT_STYLE_OVERRIDE", "QT_QPA_PLATFORMTHEME"):
            values.pop(name, None)
        nowhere = f"unix:path={self.home}/no-bus"
        values.update(
            QT_QPA_PLATFORM=self._screen(), QT_PLUGIN_PATH=str(plugin_folder()),
            QT_QPA_GENERIC_PLUGINS=f"usbtooldriver:{self._socket_path}",
            LANG="C.UTF-8", LC_ALL="C.UTF-8", HOME=str(self.home), XDG_CONFIG_HOME=str(self.home / "config"),
            XDG_CACHE_HOME=str(self.home / "cache"), XDG_DATA_HOME=str(self.home / "data"),
            XDG_RUNTIME_DIR=str(self.home / "runtime"), DBUS_SESSION_BUS_ADDRESS=nowhere,
            DBUS_SYSTEM_BUS_ADDRESS=nowhere)
        for name, value in self._environment.items():
            if value is None:
                values.pop(name, None)
            else:
                values[name] = str(value)
        return values

    def set_environment(self, changes):
        """For the next start; arguments as of the constructor."""
        self._environment |= changes

    def _screen(self):
        description = self.home / "screen.json"
        description.write_text(json.dumps({
            "synchronousWindowSystemEvents": False, "windowFrameMargins": False,
            "screens": [{"name": "screen", "x": 0, "y": 0, "width": self._screen_size[0],
                         "height": self._screen_size[1],
                         "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]}), encoding="ascii")
        return f"offscreen:configfile={description}"

    def start(self):
        (self.home / "runtime").mkdir(mode=0o700, exist_ok=True)
        self._launch([str(self.executable), *self.arguments], self.environment())
        self._connect()

    def _connect(self):
        end = time.monotonic() + DEADLINE
        while True:
            connection = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
            try:
                connection.connect(str(self._socket_path))
                break
            except OSError:
                connection.close()
            self._expect_running()
            if time.monotonic() > end:
                raise DriverError("the program does not listen; is the driver plugin built?")
            time.sleep(POLL)
        self._use(connection)

    def drop(self, name, text, window=None):
        """Drops a text from another program onto a part; tells whether it was taken."""
        return self.request("drop", name=name, text=text, window=window)["taken"]

    def terminate(self, number=signal.SIGTERM):
        """The end of the session, as a service manager tells it."""
        self.process.send_signal(number)

    def restart(self):
        self._disconnect()
        super().restart()

    def stop(self):
        self._disconnect()
        super().stop()


def plugin_folder():
    return Path(os.environ.get("USBTOOL_DRIVER", BUILD / "tests" / "plugins"))


def server_ini(address):
    """Contents of Server.ini with one address, "http://host:port", for everything."""
    host = address.split("://", 1)[1]
    return f"[Server]\r\nUpdate={address}\r\nUpdatePage={host}\r\nWebHost={host}\r\n".encode("cp1252")
