"""The program as the figures start it: its drives, its server, its window."""

import os
import shutil
import subprocess
import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
BUILD = Path(os.environ.get("USBTOOL_BUILD", ROOT / "build"))
sys.path[:0] = [str(ROOT / "tests" / "driver"), str(ROOT / "tests" / "support"), str(ROOT / "scripts")]

from driver import Drive, Program  # noqa: E402
from fault_server import FaultServer, body, slow  # noqa: E402,F401
from version import program_version  # noqa: E402

MIB = 1 << 20
BENCH = BUILD / "tests" / "bench"
PROGRAM = BUILD / "program" / "orvanta-usbtool"


def drives(stick):
    return [Drive("C", 3, "/"), Drive("E", 2, stick, total=8 << 30), Drive("Z", 4, "/")]


def stick_folder(folder):
    stick = folder / "stick"
    stick.mkdir(exist_ok=True)
    return stick


def catalog(firmware, settings):
    row = f"SR 500 HD;sr500hd.jpg;{firmware};1;note;{settings};1" + ";" * 8
    return "\r\n".join([row] * 9).encode("cp1252")


class FileServer:
    """A plain file server in a process of its own, so that it does not share an interpreter with who measures."""

    def __init__(self, folder, files):
        self.root = folder / "server"
        downloads = self.root / "orvanta" / "download"
        downloads.mkdir(parents=True)
        for name, contents in files.items():
            (downloads / name).write_bytes(contents)
        port_file = folder / "port"
        self.process = subprocess.Popen(
            [sys.executable, ROOT / "demo" / "server.py", self.root, "--port-file", port_file])
        while not port_file.exists():
            time.sleep(0.01)
        self.url = "http://127.0.0.1:" + port_file.read_text().strip()

    def address(self, name):
        return f"{self.url}/orvanta/download/{name}"

    def file(self, name):
        return self.root / "orvanta" / "download" / name

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()


def status_value(pid, key):
    """A value of /proc/PID/status; kB for sizes."""
    for line in Path(f"/proc/{pid}/status").read_text().splitlines():
        if line.startswith(key + ":"):
            return int(line.split()[1])
    raise KeyError(key)


def server_files(firmware, settings):
    return {
        "usb-version.txt": program_version().encode(),
        "usb-news.csv": b"a;b;c;d\r\n",
        "usb-list.csv": catalog("firmware.bin", "list.bin"),
        "firmware.bin.txt": firmware,
        "list.bin.txt": settings,
    }


def fresh_stick(folder):
    stick = folder / "stick"
    shutil.rmtree(stick, ignore_errors=True)
    stick.mkdir()
    os.sync()
    return stick


def bench_folder(folder, name):
    """A benchmark in a folder of its own, with what it needs of a program folder around it."""
    target = folder / name
    if not target.exists():
        shutil.copytree(PROGRAM.parent, target)
        shutil.copy2(BENCH / name / f"bench_{name}", target)
    return target


def offscreen():
    environment = dict(os.environ, QT_QPA_PLATFORM="offscreen", LC_ALL="C.UTF-8")
    for name in ("http_proxy", "https_proxy", "all_proxy", "HTTP_PROXY", "HTTPS_PROXY", "ALL_PROXY"):
        environment.pop(name, None)
    return environment


def run_bench(folder, name, *arguments):
    result = subprocess.run([folder / f"bench_{name}", *arguments], env=offscreen(), capture_output=True, check=True)
    return [float(word) for word in result.stdout.split()]


def started(stick, **arguments):
    """The program, which has not been entered yet."""
    return Program(drives=drives(stick), executable=PROGRAM, **arguments)


class CheckServer(FaultServer):
    """A server with a catalog, and files that may stand in for its."""

    def __init__(self, **files):
        super().__init__()
        for name, contents in (server_files(b"", b"") | files).items():
            self.set("/orvanta/download/" + name, body(contents))


class EmptyWindow(Program):
    """A window of as many widgets as the program's, which is as large."""

    def __init__(self, widgets, size):
        self.arguments = (str(widgets), *map(str, size))
        super().__init__(executable=BENCH / "empty_window" / "bench_empty_window")


def wait_painted(program):
    """Seconds from the start until its window has been painted."""
    program.wait_until(lambda: program.request("windows") and program.first_paint, what="the first paint")
    return program.first_paint - program.started


def main_window(stick):
    """How many widgets it has, and its size."""
    with started(stick) as program:
        wait_painted(program)
        return len(program.all()), program.windows()["frmMain"]["geometry"][2:]
