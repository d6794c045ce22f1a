#!/usr/bin/env python3
"""Runs the program against the demo server, with a folder as the stick: run_demo.py BUILD

With a display the window opens and the demo runs until it is closed. Without one the job is played through the real
window, offscreen: every step is told, a picture of it is left in BUILD/demo/pictures, and the stick is compared with the
server's files in the end. Exit status 0: the stick holds exactly what it should.
"""

import hashlib
import os
import shutil
import signal
import subprocess
import sys
import time
from contextlib import contextmanager
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests" / "driver"))

from driver import Drive, Program, server_ini  # noqa: E402

STICK_SIZE = 4 * 1024**3
DOWNLOADS = Path("orvanta") / "download"


@contextmanager
def demo_server(folder):
    """The address of the demo server, which runs meanwhile."""
    port_file = folder / "port"
    port_file.unlink(missing_ok=True)
    process = subprocess.Popen([sys.executable, ROOT / "demo" / "server.py", folder / "server", "--port-file", port_file])
    try:
        deadline = time.monotonic() + 20
        while not port_file.exists():
            if process.poll() is not None or time.monotonic() > deadline:
                raise SystemExit("The demo server does not start.")
            time.sleep(0.02)
        yield f"http://127.0.0.1:{port_file.read_text().strip()}"
    finally:
        process.terminate()
        process.wait()


def demo_drives(stick):
    """The stick between two drives that are none; the last letter is never looked at."""
    return [
        Drive("C", 3, "/"),
        Drive("E", 2, stick, label="ORVANTA", file_system="FAT32", total=STICK_SIZE),
        Drive("Z", 4, "/"),
    ]


def prepare(build):
    """An empty stick and the server's files."""
    folder = build / "demo"
    for name in ("stick", "server", "pictures"):
        shutil.rmtree(folder / name, ignore_errors=True)
        (folder / name).mkdir(parents=True)
    subprocess.run([sys.executable, ROOT / "demo" / "make_server_tree.py", folder / "server"], check=True)
    return folder


def show_window(build, folder, address):
    """The program in a copy of its folder, with the demo's two INI files."""
    program = folder / "program"
    shutil.rmtree(program, ignore_errors=True)
    shutil.copytree(build / "program", program)
    (program / "Server.ini").write_bytes(server_ini(address))
    drives = "".join(drive.section() for drive in demo_drives(folder / "stick"))
    (program / "Drives.ini").write_bytes(drives.encode("cp1252"))
    print(f"The stick is {folder / 'stick'}, the server {address}. The demo ends with the window.", flush=True)
    return subprocess.run([program / "orvanta-usbtool"], check=False).returncode


class Play:
    """The typical run, step by step."""

    def __init__(self, program, pictures):
        self.program = program
        self.pictures = pictures
        self.step = 0

    def tell(self, text, name):
        self.step += 1
        picture = self.pictures / f"{self.step}-{name}.png"
        self.program.screenshot(picture)
        print(f"{self.step}. {text}", flush=True)

    def run(self):
        program = self.program
        program.wait_for("lblLW", "text", "E:\\")
        size, free = program.text("lblHDSize"), program.text("lblHDFree")
        self.tell(f"Stick gefunden: {program.text('lblLW')} {program.text('txtDT_Cap')}, "
                  f"{program.text('txtFAT')}, {size} MB, davon {free} MB frei", "stick-found")

        program.wait_for("StatusBar1_2", "text", "Updates geladen.")
        self.tell(f"Katalog geladen, vorgewählt: {self.chosen('Firm_Option', 9)}, "
                  f"{self.chosen('Sett_Option', 5)}; News: {program.text('lbl_news_0')}", "catalog-loaded")

        program.click("Firm_Option_4")
        program.click("Sett_Option_1")
        program.wait_for("Sett_Option_1", "checked", True)
        self.tell(f"Gewählt: {self.chosen('Firm_Option', 9)} ({program.text('lbl_firmstand')}), "
                  f"{self.chosen('Sett_Option', 5)} ({program.text('lbl_settstand')})", "receiver-chosen")

        program.click("cmdChoose")
        box = program.wait_message(title="Wollen Sie updaten ?")
        self.tell("„Starte Update“ gedrückt, Rückfrage: " + " | ".join(box["text"].split("\n")), "confirmation")

        program.answer("OK")
        box = program.wait_message(timeout=60, title="Update erfolgreich")
        self.tell(f"{box['title']}: {box['text'].splitlines()[0]}", "success")
        program.answer("OK")
        self.tell(program.text("prgUpdate"), "done")

        program.close()
        status = program.exit_status()
        print(f"{self.step + 1}. Fenster geschlossen, Programm beendet mit {status}", flush=True)
        return status

    def chosen(self, array, count):
        parts = (self.program.get(f"{array}_{i}") for i in range(count))
        return next((part["text"].replace("&", "") for part in parts if part["checked"]), "nichts")


def expected_files(build, folder):
    """What the stick must hold after the run: name on the stick -> the file it comes from."""
    catalog = (folder / "server" / DOWNLOADS / "usb-list.csv").read_bytes().decode("cp1252")
    fields = catalog.split("\r\n")[4].split(";")
    firmware, settings = fields[2], fields[7]
    server = folder / "server" / DOWNLOADS
    return {
        firmware: server / f"{firmware}.txt",
        settings: server / f"{settings}.txt",
        "autorun.inf": build / "program" / "autorun.inf",
        "orvantastick.ico": build / "program" / "orvantastick.ico",
    }


def checksum(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


def compare(stick, expected):
    """Prints what is on the stick; true when that is exactly what should be."""
    found = {path.relative_to(stick).as_posix() for path in stick.rglob("*")}
    right = True
    print("Auf dem Stick:")
    for name in sorted(found | set(expected)):
        path = stick / name
        if name not in expected:
            verdict = "gehört nicht dorthin"
        elif not path.is_file():
            verdict = "fehlt"
        else:
            verdict = "gleich" if checksum(path) == checksum(expected[name]) else "ANDERS"
        right = right and verdict == "gleich"
        size = path.stat().st_size if path.is_file() else 0
        digest = checksum(path)[:16] if path.is_file() else "-"
        print(f"  {name:24} {size:>9} Bytes  sha256 {digest}…  {verdict}")
    return right


def play(build, folder, address):
    # No browser starts from a demo that nobody watches.
    browser = {"BROWSER": "true"}
    with Program(drives=demo_drives(folder / "stick"), server=address, environment=browser,
                 executable=build / "program" / "orvanta-usbtool") as program:
        status = Play(program, folder / "pictures").run()
    right = compare(folder / "stick", expected_files(build, folder))
    print(f"Bilder: {folder / 'pictures'}")
    print("Der Stick enthält genau, was er soll." if right and status == 0 else "Der Stick ist NICHT, wie er sein soll.")
    return 0 if right and status == 0 else 1


def main():
    build = Path(sys.argv[1]).resolve()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))
    folder = prepare(build)
    with demo_server(folder) as address:
        if os.environ.get("DISPLAY") or os.environ.get("WAYLAND_DISPLAY"):
            return show_window(build, folder, address)
        return play(build, folder, address)


if __name__ == "__main__":
    sys.exit(main())
