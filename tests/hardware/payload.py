"""What is handed to the guest when it starts: the program, the driver plugin, the agent."""

import os
import shutil
import subprocess
from pathlib import Path

HERE = Path(__file__).resolve().parent
ROOT = HERE.parents[1]
BUILD = Path(os.environ.get("USBTOOL_BUILD", ROOT / "build"))
PROGRAM = Path(os.environ.get("USBTOOL_PROGRAM", BUILD / "program" / "orvanta-usbtool"))
PLUGINS = Path(os.environ.get("USBTOOL_DRIVER", BUILD / "tests" / "plugins"))
SHIPPED = PROGRAM.parent
WINDOWS = Path(os.environ.get("USBTOOL_WINDOWS_BUILD", ROOT / "build" / "windows"))
FORMATTER = WINDOWS / "tests" / "tools" / "fat32format_on_images.exe"  # of its tests, for one scenario
NOT_SHIPPED = shutil.ignore_patterns("Settings.ini", "Drives.ini")


def make_payload(folder):
    shutil.rmtree(folder, ignore_errors=True)
    shutil.copytree(SHIPPED, folder / "program", ignore=NOT_SHIPPED)
    shutil.copytree(PLUGINS, folder / "plugins")
    shutil.copytree(HERE / "guest", folder / "guest", ignore=shutil.ignore_patterns("build", "__pycache__"))
    (folder / "windows").mkdir()
    if FORMATTER.exists():
        shutil.copy(FORMATTER, folder / "windows")
    for file in [*(folder / "program").iterdir(), *folder.glob("plugins/**/*.so")]:
        if file.is_file() and file.read_bytes()[:4] == b"\x7fELF":
            subprocess.run(["strip", "--strip-debug", file], check=True)
    return folder
