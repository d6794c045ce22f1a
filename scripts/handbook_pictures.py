#!/usr/bin/env python3
"""Makes the pictures of the user guide from the real program: handbook_pictures.py BUILD [FOLDER]

BUILD holds the program and the driver of its tests; FOLDER is docs/pictures. The program plays the demo offscreen. Each
picture bears the texts of its window, so that a test finds out when the window says something else today.
"""

import json
import struct
import sys
import tempfile
import zlib
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
sys.path[:0] = [str(ROOT / "tests" / "driver"), str(ROOT / "demo")]

import run_demo  # noqa: E402
from driver import Drive, Program, server_ini  # noqa: E402

SIGNATURE = b"\x89PNG\r\n\x1a\n"
KEYWORD = b"Texts\0"
ADMINISTRATOR = {"USERNAME": "root"}
DISK_SIZE = 1_000_204_886_016


def chunks(data):
    """(kind, contents) of each."""
    position = len(SIGNATURE)
    while position < len(data):
        length, kind = struct.unpack(">I4s", data[position:position + 8])
        yield kind, data[position + 8:position + 8 + length]
        position += 12 + length


def chunk(kind, contents):
    return struct.pack(">I", len(contents)) + kind + contents + struct.pack(">I", zlib.crc32(kind + contents))


def size_of(picture):
    header = dict(chunks(picture.read_bytes()))[b"IHDR"]
    return struct.unpack(">II", header[:8])


def texts_of(picture):
    """What the window of a picture said; {} for a picture of something else."""
    for kind, contents in chunks(picture.read_bytes()):
        if kind == b"tEXt" and contents.startswith(KEYWORD):
            return json.loads(contents[len(KEYWORD):])
    return {}


def take(program, window, target):
    """Without what else the picture's maker writes into it, such as the time."""
    texts = {name: part["text"] for name, part in program.all(window).items() if part.get("text")}
    program.screenshot(target, window)
    kept = [(kind, contents) for kind, contents in chunks(target.read_bytes()) if kind in (b"IHDR", b"IDAT")]
    told = (b"tEXt", KEYWORD + json.dumps(texts, sort_keys=True).encode("ascii"))
    made = [kept[0], told, *kept[1:], (b"IEND", b"")]
    target.write_bytes(SIGNATURE + b"".join(chunk(*one) for one in made))


def main_window(program, target):
    """After the demo's job."""
    program.wait_for("StatusBar1_2", "text", "Updates geladen.")
    program.click("Firm_Option_4")
    program.click("Sett_Option_1")
    program.click("cmdChoose")
    program.wait_message(timeout=60, title="Wollen Sie updaten ?")
    program.answer("OK")
    program.wait_message(timeout=60, title="Update erfolgreich")
    program.answer("OK")
    program.wait_until(lambda: program.message() is None)
    program.focus("cmdChoose")
    take(program, "frmMain", target)


def assistant(program, target, drives):
    """With a disk that has just been found."""
    program.click("cmdtest", "frmMain")
    program.wait_window("Form1")
    program.click("Command1", "Form1")
    program.wait_for("Label3", "text", "Schritt 2:", window="Form1")
    program.set_drives(drives)
    program.wait_for("Label3", "text", "Schritt 3:", timeout=60, window="Form1")
    program.focus("Command1", "Form1")
    take(program, "Form1", target)


def make(build, folder):
    with tempfile.TemporaryDirectory() as temporary:
        demo = run_demo.prepare(Path(temporary))
        disk = Path(temporary) / "disk"
        disk.mkdir()
        drives = run_demo.demo_drives(demo / "stick")
        with_disk = [*drives[:-1], Drive("H", 3, disk, label="FILME", file_system="NTFS", total=DISK_SIZE), drives[-1]]
        with run_demo.demo_server(demo) as address:
            program = Program(drives=drives, executable=build / "program" / "orvanta-usbtool", environment=ADMINISTRATOR,
                              files={"Server.ini": server_ini(address)})
            try:
                program.wait_window("frmMain")
                main_window(program, folder / "main-window.png")
                assistant(program, folder / "assistant.png", with_disk)
            finally:
                program.stop()


if __name__ == "__main__":
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    make(Path(sys.argv[1]).resolve(), Path(*sys.argv[2:]) if len(sys.argv) > 2 else ROOT / "docs" / "pictures")
