"""What the update server of these tests offers, and names that nothing may be called."""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "scripts"))
from version import program_version  # noqa: E402

# Every byte value, among them NUL and those that Windows-1252 leaves undefined, in more than one read of 2048 bytes.
FIRMWARE = bytes(range(256)) * 40
SETTINGS = bytes(range(255, -1, -1)) * 20
VERSION = program_version().encode()
NEWS = "Neu: der SR 900;Weiß und Grau für 199 €;Größere Schrift;Fragen?".encode("cp1252")


# What is no name of a file: "path not found".
NO_NAMES = {
    "device": "NUL",
    "device with an extension": "con.abs",
    "port": "com1.bin",
    "port with a raised digit": "LPT².x",
    "path on a drive": "C:\\canary.txt",
    "relative path on a drive": "C:canary.txt",
    "path on a drive behind a folder": "..\\C:\\canary.txt",
    "path on the stick": "E:\\x",
    "stream": "canary.txt:stream",
    "network": "\\\\server\\x",
    "folder that is not there": "none\\x",
    "folder that is not there with a slash": "none/x",
    "new folder": "none\\",
    "line feed": "a\nb",
    "escape": "a\x1bb",
    "tab": "a\tb",
    "nul": "a\0b",
    "question mark": "a?b",
    "asterisk": "*",
    "quote": 'a"b',
    "pipe": "a|b",
    "less than": "a<b",
    "300 characters": "x" * 300,
    "300 characters that are not ASCII": "ä" * 300,
    "folder of 300 characters": "x" * 300 + "\\y",
    "dots": "...",
    "blanks": "   ",
}


def row(name="", picture="", firmware="", date="", note="", settings=None):
    """One line of the catalog; `settings` maps a kind (0 Austria .. 4 Spain) to (file, date)."""
    fields = [name, picture, firmware, date, note]
    for kind in range(5):
        fields += (settings or {}).get(kind, ("", ""))
    return ";".join(fields)


ROWS = [
    row("SR 100", "sr100.bmp"),
    row("SR 200 CI", "sr200ci.gif", "sr200.abs", "14.03.2026 (V1.32)", "Größere Schrift",
        {0: ("sr200_at.sdx", "02.09.2026"), 1: ("sr200_de.sdx", "28.08.2026"), 4: ("sr200_es.sdx", "11.06.2026")}),
    row("SR 300 PVR", "sr300pvr.jpg", "sr300.abs", "22.04.2026 (V2.07)", "Neue Timer",
        {1: ("sr300_de.sdx", "19.07.2026")}),
    row("SR 400 Twin", "sr400twin.gif", "sr400.abs", "09.01.2026 (V1.18)", "Zweiter Tuner"),
    row("SR 500 HD", "sr500hd.jpg"),
    row("SR 600 HD CI", "sr600hdci.ico", "sr600.abs", "30.06.2026 (V1.05)", "Kürzere Startzeit",
        {2: ("sr600_it.sdx", "01.01.2026"), 3: ("sr600_fr.sdx", "01.02.2026")}),
    row("SR 700 HD Twin", "sr700hdtwin.jpg"),
    row("SR 800 HD PVR", "sr800hdpvr.bmp"),
    row("SR 900 UHD", "sr900uhd.jpg"),
]


def catalog(rows=None, changes=None):
    """The catalog's bytes; `changes` maps the number of a row to another one."""
    lines = list(rows or ROWS)
    for number, line in (changes or {}).items():
        lines[number] = line
    return "\r\n".join(lines).encode("cp1252")
