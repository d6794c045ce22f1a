#!/usr/bin/env python3
"""Makes the pictures of the user guide from the real program: handbook_pictures.py BUILD [FOLDER]

BUILD holds the program and the driver of its tests; FOLDER is docs/pictures. The program plays the demo offscreen, with
the fonts of one Debian package. Each picture bears the texts of its window and the version of Qt that drew it, so that
a test finds out when the window is another one today.

They are kept with the sources: builds for Windows, in a Flatpak, or without the tests have nothing that could play the
program, and their user guides show the same pictures.
"""

import json
import re
import struct
import subprocess
import sys
import tempfile
import zlib
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
sys.path[:0] = [str(ROOT / "tests" / "driver"), str(ROOT / "demo")]

import run_demo  # noqa: E402
from driver import Drive, Program, server_ini  # noqa: E402

SIGNATURE = b"\x89PNG\r\n\x1a\n"
TEXTS = b"Texts\0"
DRAWN_BY = b"Drawn by\0"
FONTS = """<?xml version="1.0"?>
<fontconfig>
  <dir>/usr/share/fonts/truetype/dejavu</dir>
  <cachedir>{}</cachedir>
  <include ignore_missing="yes">/etc/fonts/conf.d</include>
</fontconfig>
"""
ADMINISTRATOR = {"USERNAME": "root"}
DISK_SIZE = 1_000_204_886_016
USED = 1_625_292  # bytes on the stick, about what the job of the demo leaves there


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


def told_by(picture, keyword):
    """What it bears under a keyword; empty for a picture of something else."""
    for kind, contents in chunks(picture.read_bytes()):
        if kind == b"tEXt" and contents.startswith(keyword):
            return contents[len(keyword):].decode("ascii")
    return ""


def texts_of(picture):
    """What its window said."""
    return json.loads(told_by(picture, TEXTS) or "{}")


def lines_of(picture):
    """Bytes of red, green and blue, line by line. https://www.w3.org/TR/png-3/#9Filters"""
    listed = list(chunks(picture.read_bytes()))
    width, height = size_of(picture)
    if dict(listed)[b"IHDR"][8:] != bytes([8, 2, 0, 0, 0]):
        raise ValueError(f"{picture} is of another kind")
    data = zlib.decompress(b"".join(contents for kind, contents in listed if kind == b"IDAT"))
    length = 3 * width
    before = bytes(length)
    for start in range(0, height * (length + 1), length + 1):
        before = unfiltered(data[start], data[start + 1:start + 1 + length], before)
        yield before


def unfiltered(kind, line, above):
    done = bytearray(3) + line  # with a pixel of zeros on the left
    above = bytes(3) + above
    for i in range(3, len(done)):
        left, up, corner = done[i - 3], above[i], above[i - 3]
        if kind == 4:
            guess = left + up - corner
            predicted = min((left, up, corner), key=lambda value: abs(guess - value))
        else:
            predicted = (0, left, up, (left + up) // 2)[kind]
        done[i] = (done[i] + predicted) & 0xFF
    return bytes(done[3:])


def different_pixels(one, other, tolerance=24):
    """How many of two pictures of one size nobody would take for the same."""
    count = 0
    for line, line_of_other in zip(lines_of(one), lines_of(other)):
        if line != line_of_other:
            steps = [abs(a - b) for a, b in zip(line, line_of_other)]
            count += sum(max(steps[i:i + 3]) > tolerance for i in range(0, len(steps), 3))
    return count


def qt_of(program):
    """Its version, as the name of the library that the program loads has it."""
    listed = subprocess.run(["ldd", program], capture_output=True, text=True, check=True).stdout
    library = Path(re.search(r"libQt6Gui\.so\S* => (\S+)", listed)[1]).resolve()
    return library.name.partition(".so.")[2]


def take(program, window, target, qt):
    """Without what else the picture's maker writes into it, such as the time."""
    texts = {name: part["text"] for name, part in program.all(window).items() if part.get("text")}
    program.screenshot(target, window)
    kept = [(kind, contents) for kind, contents in chunks(target.read_bytes()) if kind in (b"IHDR", b"IDAT")]
    told = TEXTS + json.dumps(texts, sort_keys=True).encode("ascii")
    made = [kept[0], (b"tEXt", told), (b"tEXt", DRAWN_BY + qt.encode("ascii")), *kept[1:], (b"IEND", b"")]
    target.write_bytes(SIGNATURE + b"".join(chunk(*one) for one in made))


def main_window(program, target, qt):
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
    take(program, "frmMain", target, qt)


def assistant(program, target, qt, drives):
    """With a disk that has just been found."""
    program.click("cmdtest", "frmMain")
    program.wait_window("Form1")
    program.click("Command1", "Form1")
    program.wait_for("Label3", "text", "Schritt 2:", window="Form1")
    program.set_drives(drives)
    program.wait_for("Label3", "text", "Schritt 3:", timeout=60, window="Form1")
    program.focus("Command1", "Form1")
    take(program, "Form1", target, qt)


def make(build, folder):
    with tempfile.TemporaryDirectory() as temporary:
        demo = run_demo.prepare(Path(temporary))
        disk = Path(temporary) / "disk"
        disk.mkdir()
        drives = run_demo.demo_drives(demo / "stick")
        # Told, not measured: on a busy machine that takes too long, and the file system's own number is shown.
        drives[1].values["Free"] = run_demo.STICK_SIZE - USED
        with_disk = [*drives[:-1], Drive("H", 3, disk, label="FILME", file_system="NTFS", total=DISK_SIZE), drives[-1]]
        fonts = Path(temporary) / "fonts.conf"
        fonts.write_text(FONTS.format(Path(temporary) / "fonts"))
        original = build / "program" / "orvanta-usbtool"
        qt = qt_of(original)
        with run_demo.demo_server(demo) as address:
            program = Program(drives=drives, executable=original, files={"Server.ini": server_ini(address)},
                              environment=ADMINISTRATOR | {"FONTCONFIG_FILE": fonts})
            try:
                program.wait_window("frmMain")
                main_window(program, folder / "main-window.png", qt)
                assistant(program, folder / "assistant.png", qt, with_disk)
            finally:
                program.stop()


if __name__ == "__main__":
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    make(Path(sys.argv[1]).resolve(), Path(*sys.argv[2:]) if len(sys.argv) > 2 else ROOT / "docs" / "pictures")
