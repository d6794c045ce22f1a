"""Machines for Windows programs: each a Wine prefix and a screen of its own, with a probe that sees and does all.

    machines = Machines(2)
    machine = machines.acquire()
    machine.define("E", 2, folder)
    machines.release(machine)
    machines.close()

Everything is taken from the environment:

    USBTOOL_BUILD   build folder, with the probe and the other tools in tests/tools
    USBTOOL_WINE    folder that holds the prefixes, which are made when they are missing
"""

import atexit
import json
import os
import queue
import shutil
import subprocess
import threading
import time
from pathlib import Path

from window import DEADLINE, POLL, DriverError

ROOT = Path(__file__).resolve().parents[2]
BUILD = Path(os.environ.get("USBTOOL_BUILD", ROOT / "build" / "windows")).resolve()
TOOLS = BUILD / "tests" / "tools"
WINE = str(ROOT / "tests" / "wine" / "start")
PREFIXES = Path(os.environ.get("USBTOOL_WINE", BUILD / "window-prefixes")).resolve()
SCREEN = (1366, 768)  # the smallest one that the window has to fit

# A desktop in a window of its own needs no window manager. Z:, which is this machine's root folder, is no hard disk:
# one that is plugged in has the last letter of those. The directory service has a provider of these tests, and so has
# the service that keeps what screen readers say. Pages go to the browser of this machine, as addresses do.
REGISTRY = r"""REGEDIT4

[HKEY_CURRENT_USER\Software\Wine\Explorer]
"Desktop"="Default"

[HKEY_CURRENT_USER\Software\Wine\Explorer\Desktops]
"Default"="{width}x{height}"

[HKEY_LOCAL_MACHINE\Software\Wine\Drives]
"z:"="network"

[HKEY_LOCAL_MACHINE\Software\Microsoft\ADs\Providers\WinNT]
@="UsbToolTestWinNT"

[HKEY_CLASSES_ROOT\.html]
@="htmlfile"

[HKEY_CLASSES_ROOT\htmlfile\shell\open\command]
@="winebrowser.exe -nohome \"%1\""

[HKEY_CLASSES_ROOT\UsbToolTestWinNT\CLSID]
@="{{6d0e9c1e-5d0c-4b8e-9a53-2f6a1f7f3b10}}"

[HKEY_CLASSES_ROOT\CLSID\{{6d0e9c1e-5d0c-4b8e-9a53-2f6a1f7f3b10}}\InprocServer32]
@="{provider}"
"ThreadingModel"="Both"

[HKEY_CLASSES_ROOT\CLSID\{{b5f8350b-0548-48b1-a6ee-88bd00b4a5e7}}\InprocServer32]
@="{provider}"
"ThreadingModel"="Both"
"""


def windows_path(path):
    return "Z:" + str(path).replace("/", "\\")


def wine_environment(prefix, **changes):
    """What a program of that prefix gets, and nothing of the proxies and desktops of this machine."""
    values = {name: os.environ[name] for name in ("PATH", "HOME", "TMPDIR") if name in os.environ}
    values.update(WINEPREFIX=str(prefix), WINEARCH="win64", WINEDEBUG=os.environ.get("USBTOOL_WINEDEBUG", "-all"),
                  WINEDLLOVERRIDES="winemenubuilder.exe=d;mscoree=d;mshtml=d", LC_ALL="C.UTF-8")
    values.update({name: str(value) for name, value in changes.items() if value is not None})
    return values


class Machine:
    """One screen, one prefix, one probe. Programs run on it one after the other."""

    screen = SCREEN

    def __init__(self, prefix):
        self.prefix = prefix
        self._drives = {}
        self._one_at_a_time = threading.Lock()
        self._start_screen()
        self.environment = wine_environment(prefix, DISPLAY=self.display)
        self._log = open(prefix / "probe.log", "ab")
        self._probe = subprocess.Popen([WINE, str(TOOLS / "usbtool_probe.exe")], env=self.environment,
                                       stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=self._log)
        self.undefine_all()

    def _start_screen(self):
        read, write = os.pipe()
        size = f"{self.screen[0]}x{self.screen[1]}x24"
        self._screen = subprocess.Popen(["Xvfb", "-displayfd", str(write), "-screen", "0", size, "-nolisten", "tcp"],
                                        pass_fds=[write], stderr=subprocess.DEVNULL)
        os.close(write)
        with open(read, encoding="ascii") as answer:
            self.display = ":" + answer.readline().strip()

    def request(self, what, **arguments):
        """One request and its reply; the probe gives a program that does not answer up by itself."""
        fields = [what] + [f"{key}={_escaped(value)}" for key, value in arguments.items()]
        with self._one_at_a_time:  # a test's server asks in a thread of its own
            self._probe.stdin.write(("\t".join(fields) + "\n").encode())
            self._probe.stdin.flush()
            line = self._probe.stdout.readline()
        if not line:
            raise DriverError(f"no reply to {what} {arguments}")
        # Both line ends look the same on the screen.
        reply = json.loads(line.decode().replace("\\u000d\\u000a", "\\u000a"))
        if "error" in reply:
            raise DriverError(f"{what} {arguments}: {reply['error']}")
        return reply

    def define(self, letter, kind, folder):
        return self.request("drives", letter=letter, type=kind, folder=str(folder))["letters"]

    def undefine(self, letter):
        return self.request("drives", letter=letter)["letters"]

    def letters(self):
        return self.request("drives")["letters"]

    def undefine_all(self):
        for letter in self.letters():
            if letter not in "CZ":
                self.undefine(letter)

    def processes(self):
        """The names of the files that run."""
        return self.request("processes")["names"]

    def set_decimal_separator(self, text):
        """A setting of the user's; programs that start later know it."""
        self.request("decimalSeparator", text=text)

    def other_windows(self):
        """[(class, title)] of what programs other than the tested one show."""
        return [tuple(entry) for entry in self.request("others")["windows"]]

    def tidy(self):
        """Nothing of one program's is left for the next."""
        self.undefine_all()
        end = time.monotonic() + DEADLINE
        while self.request("others", close=1)["windows"] and time.monotonic() < end:
            time.sleep(POLL)

    def screenshot(self, path):
        subprocess.run(["import", "-display", self.display, "-window", "root", str(path)], check=True)

    def close(self):
        self._probe.stdin.close()
        subprocess.run(["wineserver", "-k"], env=self.environment, check=False)
        self._probe.wait()
        self._probe.stdout.close()
        self._log.close()
        self._end_screen()

    def _end_screen(self):
        self._screen.terminate()
        self._screen.wait()


def _escaped(value):
    text = str(value)
    for character, escape in (("\\", "\\\\"), ("\t", "\\t"), ("\n", "\\n"), ("\r", "\\r")):
        text = text.replace(character, escape)
    return text


def make_base():
    """The prefix that the machines are copies of; it is made anew when its settings are other ones."""
    base = PREFIXES / "base"
    settings = base / "settings.reg"
    provider = windows_path(TOOLS / "winnt_provider.dll").replace("\\", "\\\\")
    wanted = REGISTRY.format(width=SCREEN[0], height=SCREEN[1], provider=provider)
    if (base / "ready").exists() and settings.read_text(encoding="ascii") == wanted:
        return base
    shutil.rmtree(base, ignore_errors=True)
    base.mkdir(parents=True)
    settings.write_text(wanted, encoding="ascii")
    run = ["xvfb-run", "-a", "sh", "-c", '"$1" wineboot -i && "$1" regedit /S "$2" && wineserver -w',
           "sh", WINE, windows_path(settings)]
    subprocess.run(run, env=wine_environment(base), check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    (base / "ready").touch()
    return base


def copy_prefix(base, prefix):
    """Wine replaces its own files and never writes into them, so that all but the registry can be links."""
    shutil.rmtree(prefix, ignore_errors=True)
    subprocess.run(["cp", "-al", str(base), str(prefix)], check=True)
    for registry in prefix.glob("*.reg"):
        registry.unlink()
        shutil.copy2(base / registry.name, registry)


class Machines:
    """A number of machines for tests that run beside each other."""

    def __init__(self, count):
        base = make_base()
        self._free = queue.Queue()
        self._all = []
        for number in range(count):
            prefix = PREFIXES / f"machine-{number}"
            copy_prefix(base, prefix)
            self._all.append(Machine(prefix))
            self._free.put(self._all[-1])
        atexit.register(self.close)

    def acquire(self):
        return self._free.get()

    def release(self, machine):
        machine.tidy()
        self._free.put(machine)

    def close(self):
        while self._all:
            self._all.pop().close()
