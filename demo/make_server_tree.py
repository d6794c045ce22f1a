#!/usr/bin/env python3
"""Writes the folder tree of a sample update server.

    make_server_tree.py OUTDIR

OUTDIR/orvanta/download/ then holds the version file, the news line, the catalog, and every firmware and channel
list that the catalog names, each with ".txt" behind its name. The same call always writes the same bytes: the texts
come from content/, the version is the program's, the rest is computed.
"""

import hashlib
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "scripts"))
from version import program_version  # noqa: E402

CONTENT = Path(__file__).resolve().parent / "content"
COUNTRIES = ("at", "de", "it", "fr", "es")  # order of the five channel lists in a catalog line
ENCODING = "cp1252"  # what the program takes a server file for
FIRST_LIST_FIELD = 5

FIRMWARE_SIZES = {
    "SR 200 CI": 212_992,
    "SR 300 PVR": 1_048_576,
    "SR 400 Twin": 655_361,  # odd on purpose: the last read is not a full one
    "SR 500 HD": 1_572_864,
    "SR 600 HD CI": 1_310_720,
    "SR 700 HD Twin": 2_097_152,
    "SR 800 HD PVR": 2_621_440,
    "SR 900 UHD": 3_000_000,
}


def stream(seed: str, size: int) -> bytes:
    """size bytes: SHA-256 of "seed:0", "seed:1", … one behind the other."""
    blocks = (hashlib.sha256(f"{seed}:{i}".encode("utf-8")).digest() for i in range((size + 31) // 32))
    return b"".join(blocks)[:size]


def firmware(model: str, name: str, size: int) -> bytes:
    """A 64-byte head (maker, model, name, length) and a body that uses all 256 byte values."""
    head = b"ORVANTA\0" + model.encode("ascii").ljust(16, b"\0") + name.encode("ascii").ljust(32, b"\0")
    head += size.to_bytes(8, "big")
    image = head + stream(name, size - len(head))
    if len(set(image)) != 256:
        raise ValueError(f"{name}: not every byte value occurs")
    return image


def channel_line(number: int, channel: str, dice: bytes) -> str:
    frequency = 10700 + int.from_bytes(dice[0:2], "big") % 2050
    polarisation = "HV"[dice[2] % 2]
    symbol_rate = (22000, 27500)[dice[3] % 2]
    pids = [int.from_bytes(dice[i : i + 2], "big") % 8160 + 32 for i in (4, 6, 8)]
    return f"{number:04};{channel};19.2E;{frequency};{polarisation};{symbol_rate};" + ";".join(map(str, pids))


def channel_list(model: str, country: str, date: str) -> str:
    """A head of three lines, the country's channels in their order, then services that only have a number."""
    channels = (CONTENT / "channels" / f"{country}.txt").read_text(encoding="utf-8").splitlines()
    total = 450 + stream(f"{model}/{country}", 1)[0] * 2
    channels += [f"Dienst {number:04}" for number in range(len(channels) + 1, total + 1)]
    lines = ["[Channels]", f"Receiver=Orvanta {model}", f"List={country.upper()} {date}"]
    for number, channel in enumerate(channels, start=1):
        lines.append(channel_line(number, channel, stream(f"{country}/{channel}", 10)))
    return "\n".join(lines) + "\n"


def to_ansi(text: str) -> bytes:
    return text.replace("\n", "\r\n").encode(ENCODING)


def write_catalog_files(folder: Path, line: str) -> None:
    fields = line.split(";")
    model, firmware_name = fields[0], fields[2]
    if firmware_name:
        image = firmware(model, firmware_name, FIRMWARE_SIZES[model])
        (folder / f"{firmware_name}.txt").write_bytes(image)
    for index, country in enumerate(COUNTRIES):
        name, date = fields[FIRST_LIST_FIELD + 2 * index : FIRST_LIST_FIELD + 2 * index + 2]
        if name:
            (folder / f"{name}.txt").write_bytes(to_ansi(channel_list(model, country, date)))


def main() -> int:
    if len(sys.argv) != 2:
        print("usage: make_server_tree.py OUTDIR", file=sys.stderr)
        return 2
    folder = Path(sys.argv[1]) / "orvanta" / "download"
    folder.mkdir(parents=True, exist_ok=True)
    # The version file is compared to the last character: no line end, so no conversion.
    (folder / "usb-version.txt").write_text(program_version(), encoding="ascii")
    for name in ("usb-news.csv", "usb-list.csv"):
        (folder / name).write_bytes(to_ansi((CONTENT / name).read_text(encoding="utf-8")))
    for line in (CONTENT / "usb-list.csv").read_text(encoding="utf-8").splitlines():
        write_catalog_files(folder, line)
    return 0


if __name__ == "__main__":
    sys.exit(main())
