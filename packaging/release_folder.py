"""The folder of a release, and the sizes of what is in it."""

import shutil

SUMS = "SHA256SUMS"
# Megabytes of what people download of programs that prepare sticks, too.
PEERS = {"USBImager": 0.3, "Rufus": 1.5, "Fedora Media Writer": 20, "balenaEtcher": 110}


def names_of(folder):
    """What an earlier release put there; nothing of anybody else's."""
    sums = folder / SUMS
    if not sums.exists():
        return []
    return [line.split("  ", 1)[1] for line in sums.read_text(encoding="utf-8").splitlines()] + [SUMS]


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
