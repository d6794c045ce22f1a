#!/usr/bin/env python3
"""Runs clang-tidy over the sources of a build whose names match a pattern: tidy.py BUILD PATTERN [ARGUMENT ...]

A source in which nothing was found is noted below ${XDG_CACHE_HOME:-~/.cache}/orvanta-usbtool, by all that clang-tidy
would read: it is not analysed again before one of its lines or headers, the settings or clang-tidy itself change.
"""

import functools
import hashlib
import json
import os
import re
import shlex
import subprocess
import sys
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
TIDY = "clang-tidy-14"
NOTES = Path(os.environ.get("XDG_CACHE_HOME") or Path.home() / ".cache") / "orvanta-usbtool" / "tidy"
KEPT = 30 * 24 * 60 * 60  # seconds that a note is kept after its last use


def units(build, pattern):
    """{name: command} of the build's own sources."""
    commands = {}
    for entry in json.loads((build / "compile_commands.json").read_text(encoding="utf-8")):
        name = os.path.relpath(entry["file"], ROOT)
        if re.match(pattern, name) and name.endswith(".cpp") and not name.startswith(("build/", "..")):
            commands[name] = entry["command"]
    return dict(sorted(commands.items()))


def settings(arguments):
    """What is the same for all of them."""
    version = subprocess.run([TIDY, "--version"], stdout=subprocess.PIPE, check=True).stdout
    return b"\0".join([version, (ROOT / ".clang-tidy").read_bytes(), *(argument.encode() for argument in arguments)])


@functools.cache
def digest(path):
    return hashlib.sha256(Path(path).read_bytes()).hexdigest()


def read_by(command, build):
    """The source and its headers as they lie there, each by its name below this folder: directives and comments count,
    too. None if one of them cannot be read."""
    words = shlex.split(command)
    words[words.index("-o"):words.index("-o") + 2] = []
    words[words.index("-c")] = "-M"
    run = subprocess.run(words, cwd=build, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, check=False)
    if run.returncode:
        return None
    files = shlex.split(run.stdout.partition(":")[2].replace("\\\n", " "))
    read = [" ".join(words)] + [f"{os.path.normpath(build / file)} {digest(build / file)}" for file in files]
    return "\n".join(read).replace(str(ROOT), "").encode()


def note_of(common, command, build):
    read = read_by(command, build)
    return None if read is None else NOTES / hashlib.sha256(common + b"\0" + read).hexdigest()


def is_noted(note):
    try:
        os.utime(note)
        return True
    except OSError:
        return False


def write(note):
    try:
        NOTES.mkdir(parents=True, exist_ok=True)
        note.touch()
    except OSError:
        pass  # a home that cannot be written: it is analysed again the next time


def forget_old():
    for note in NOTES.glob("*"):
        try:
            if note.stat().st_mtime < time.time() - KEPT:
                note.unlink()
        except FileNotFoundError:
            pass  # another run was faster


def analyse(name, command, common, build, arguments):
    """Tells what was found; "new", "noted" or "found"."""
    note = note_of(common, command, build)
    if note and is_noted(note):
        return "noted"
    run = subprocess.run([TIDY, "-p", build, "--quiet", "--extra-arg=-Wno-unknown-warning-option", *arguments, name],
                         cwd=ROOT, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=False)
    if run.returncode:
        print(run.stdout or run.stderr, end="", flush=True)
        return "found"
    if note:
        write(note)
    return "new"


def main(arguments):
    build = (ROOT / arguments[0]).resolve()
    commands = units(build, arguments[1])
    if not commands:
        sys.exit(f"There are no sources in {build}.")
    common = settings(arguments[2:])
    with ThreadPoolExecutor(len(os.sched_getaffinity(0))) as threads:
        outcomes = list(threads.map(lambda name: analyse(name, commands[name], common, build, arguments[2:]), commands))
    forget_old()
    print(f"clang-tidy: {len(outcomes)} sources of {arguments[0]}, {outcomes.count('noted')} of them as they were.")
    return 1 if "found" in outcomes else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
