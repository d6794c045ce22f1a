"""Where the tests of the packages find things, and how they run commands."""

import os
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BUILD = Path(os.environ.get("USBTOOL_BUILD", ROOT / "build")).resolve()
NEXT = "99.6"  # the version that is upgraded to; tests/packages/run makes the package of it
MADE = ROOT / "build" / "packages" / "tested"  # what tests/packages/run --packages leaves

sys.path[:0] = [str(ROOT / folder) for folder in ("scripts", "tests/driver", "demo")]


def run(*command, **options):
    """Its output; a command that fails shows all that it has said."""
    done = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          encoding="utf-8", errors="replace", check=False, **options)
    if done.returncode != 0:
        raise AssertionError(f"{' '.join(map(str, command))} ended with {done.returncode}:\n{done.stdout}")
    return done.stdout


def names_below(folder):
    """Files and links, a line each, as a tree is listed in the tests."""
    folder = Path(folder)
    lines = []
    for path in sorted(folder.rglob("*")):
        name = path.relative_to(folder).as_posix()
        if path.is_symlink():
            lines.append(f"{name} -> {os.readlink(path)}")
        elif not path.is_dir():
            lines.append(name)
    return sorted(lines)
