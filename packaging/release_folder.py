"""The folder of a release, and the sizes of what is in it."""

import re
import shutil

from artefacts import NAME

SUMS = "SHA256SUMS"
NOTES = "NOTES.md"
SUM_LINE = re.compile(rf"[0-9a-f]{{64}}  ({NAME}[\w.+~-]*|{re.escape(NOTES)})")
# Megabytes of what people download of programs that prepare sticks, too.
PEERS = {"USBImager": 0.3, "Rufus": 1.5, "Fedora Media Writer": 20, "balenaEtcher": 110}


def names_of(folder):
    """What an earlier release put there. ValueError where a release would replace anything of anybody else's."""
    sums, notes = folder / SUMS, folder / NOTES
    lines = sums.read_text(encoding="utf-8", errors="replace").splitlines() if sums.exists() else []
    found = [SUM_LINE.fullmatch(line) for line in lines]
    if not all(found):
        raise ValueError(f"{sums} is not that of a release: choose another folder")
    names = [match[1] for match in found]
    if notes.exists() and NOTES not in names:
        raise ValueError(f"{notes} is not that of a release: choose another folder")
    return names


def replace(output, made):
    """Moves all files of one folder to where those of an earlier release were."""
    output.mkdir(parents=True, exist_ok=True)
    for name in names_of(output):
        (output / name).unlink(missing_ok=True)
    for file in sorted(made.iterdir()):
        shutil.move(file, output / file.name)


def size_table(sizes):
    """Names and megabytes, the smallest first; the peers' in brackets."""
    rows = [(size / 1e6, name) for name, size in sizes.items()] + [(size, f"({name})") for name, size in PEERS.items()]
    return "\n".join(f"{size:7.2f} MB  {name}" for size, name in sorted(rows))
