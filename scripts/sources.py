"""The sources as git sees them here."""

import shutil
import subprocess
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent


def source_names(*kinds):
    """What git knows; with further options of `git ls-files` what these say. git trusts the files of another user."""
    command = ["git", "-c", f"safe.directory={ROOT}", "-C", str(ROOT), "ls-files", "-z", *kinds]
    listed = subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE).stdout
    return [name for name in listed.split("\0") if name and (ROOT / name).is_file()]


def copy_of_sources(folder):
    """What git knows or would add."""
    for name in source_names("--cached", "--others", "--exclude-standard"):
        (folder / name).parent.mkdir(parents=True, exist_ok=True)
        shutil.copy2(ROOT / name, folder / name)
