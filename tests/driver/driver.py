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
import subprocess
import tempfile
import time
from pathlib import Path

from window import DEADLINE, POLL, DriverError, ProgramEnded, Window

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


class Program(Window):
    """One run of the program in a private copy of its folder.

    drives        list of Drive for Drives.ini; None leaves the file out
    server        address for all three keys of Server.ini; None leaves the file that ships
    files         {name: bytes} put into the program folder before the start; None as bytes removes the file
    environment   variables to set; None as value removes one
    screen        size of the screen in pixels
    executable    the program; else $USBTOOL_PROGRAM, else that of the release build
    """

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
        self._socket = None
        self._stream = None
        self.process = None
        self.started = None
        self.first_paint = None
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

    def write(self, name, contents):
        """Puts a file into the program folder at once, so that the program never sees half of it."""
        target = self.folder / name
        if contents is None:
            target.unlink(missing_ok=True)
            return
        part = target.with_name(target.name + ".part")
        part.write_bytes(contents)
        part.replace(target)

    def set_drives(self, drives):
        self.write("Drives.ini", "".join(drive.section() for drive in drives).encode("cp1252"))

    def _make_environment(self):
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
        self._output = open(self.home / "output.txt", "ab")
        self.started = time.monotonic()
        self.process = subprocess.Popen([str(self.executable)], env=self._make_environment(), cwd=self.home,
                                        stdin=subprocess.DEVNULL, stdout=self._output, stderr=subprocess.STDOUT)
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
            if self.process.poll() is not None:
                raise ProgramEnded(f"ended with status {self.process.returncode}:\n{self.output()}")
            if time.monotonic() > end:
                raise DriverError("the program does not listen; is the driver plugin built?")
            time.sleep(POLL)
        self._socket = connection
        self._stream = connection.makefile("rw", encoding="utf-8", newline="\n")

    def output(self):
        """What the program wrote to its standard output and error."""
        return (self.home / "output.txt").read_text(encoding="utf-8", errors="replace")

    def running(self):
        return self.process.poll() is None

    def exit_status(self, timeout=DEADLINE):
        """Waits for the end. A signal is a negative number."""
        try:
            return self.process.wait(timeout)
        except subprocess.TimeoutExpired:
            raise DriverError(f"still running after {timeout} s") from None

    def terminate(self):
        """The end of the session, as a service manager tells it."""
        self.process.send_signal(signal.SIGTERM)

    def stop(self):
        for closing in (self._stream, self._socket):
            try:
                if closing is not None:
                    closing.close()
            except OSError:
                pass
        if self.process is not None:
            if self.process.poll() is None:
                self.process.kill()
            self.process.wait()
            self._output.close()
        self._temporary.cleanup()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stop()

    def request(self, what, timeout=DEADLINE, **arguments):
        """One request and its reply, which comes when the program handles events."""
        message = {"do": what, **{key: value for key, value in arguments.items() if value is not None}}
        try:
            self._socket.settimeout(timeout)
            self._stream.write(json.dumps(message) + "\n")
            self._stream.flush()
            line = self._stream.readline()
        except TimeoutError:
            raise DriverError(f"no reply to {message} for {timeout} s") from None
        except OSError as error:
            raise ProgramEnded(f"at {message}: {error}\n{self.output()}") from None
        if not line:
            raise ProgramEnded(f"at {message}\n{self.output()}")
        reply = json.loads(line)
        if "error" in reply:
            raise DriverError(f"{message}: {reply['error']}")
        self.first_paint = reply.get("firstPaint") or None
        return reply


def plugin_folder():
    return Path(os.environ.get("USBTOOL_DRIVER", BUILD / "tests" / "plugins"))


def server_ini(address):
    """Contents of Server.ini with one address, "http://host:port", for everything."""
    host = address.split("://", 1)[1]
    return f"[Server]\r\nUpdate={address}\r\nUpdatePage={host}\r\nWebHost={host}\r\n".encode("cp1252")
