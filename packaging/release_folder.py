"""The folder of a release, and the sizes of what is in it."""

import os
import re
import shutil
import tempfile
from pathlib import Path

from artefacts import NAME

SUMS = "SHA256SUMS"
NOTES = "NOTES.md"
NAMES = rf"{NAME}[\w.+~-]*|{re.escape(NOTES)}"
SUM_LINE = re.compile(rf"[0-9a-f]{{64}}  ({NAMES})")
# Megabytes of what people download of programs that prepare sticks, too.
PEERS = {"USBImager": 0.3, "Rufus": 1.5, "Fedora Media Writer": 20, "balenaEtcher": 110}


def names_of(folder):
    """What an earlier release put there. ValueError where a release would replace anything of anybody else's."""
    sums = folder / SUMS
    lines = sums.read_text(encoding="utf-8", errors="replace").splitlines() if sums.exists() else []
    found = [SUM_LINE.fullmatch(line) for line in lines]
    if not all(found):
        raise ValueError(f"{sums} is not that of a release: choose another folder")
    names = [match[1] for match in found]
    for file in sorted(folder.iterdir()) if folder.exists() else []:
        if re.fullmatch(NAMES, file.name) and file.name not in names and (file.is_symlink() or not file.is_dir()):
            raise ValueError(f"{file} is not that of a release: choose another folder")
    return names


def move_in(made, output):
    """One file after the other, each as a whole: under a name of its own first, since what is copied may not fit."""
    with tempfile.TemporaryDirectory(prefix=".release-", dir=output) as beside:
        for file in made:
            shutil.move(file, Path(beside) / file.name)
        for file in made:
            os.replace(Path(beside) / file.name, output / file.name)


def replace(output, made):
    """Moves all files of one folder to where those of an earlier release were. What only the earlier one had goes."""
    output.mkdir(parents=True, exist_ok=True)
    earlier, files = names_of(output), sorted(made.iterdir())
    move_in(files, output)
    for name in set(earlier) - {file.name for file in files}:
        (output / name).unlink(missing_ok=True)


def size_table(sizes):
    """Names and megabytes, the smallest first; the peers' in brackets."""
    rows = [(size / 1e6, name) for name, size in sizes.items()] + [(size, f"({name})") for name, size in PEERS.items()]
    return "\n".join(f"{size:7.2f} MB  {name}" for size, name in sorted(rows))
