#!/usr/bin/env python3
"""Packs the program for Windows as a ZIP archive that is the same whenever and wherever it is made.

packaging/windows/make_zip.py [--build FOLDER] [--output FOLDER] [--check]

--build   a finished cross build; without it the preset "windows" is built
--output  where the archive goes (build/packages)
--check   makes the archive once more, from a copy of the sources in another folder, and compares the two

The archive's times are those of the last commit, or SOURCE_DATE_EPOCH; SIGN_COMMAND signs the programs (see sign.py).
What is packed is checked each time: the programs are not too large, need nothing but Windows' own libraries, and name
no folder of this machine.
"""

import hashlib
import sys
import tempfile
import time
import zipfile
from pathlib import Path

import program_files
import second_build
from program_files import LARGEST, program_version, source_time

FIRST_TIME = 315_532_800  # 1980; a ZIP archive knows none before


def write_zip(target, files, seconds):
    moment = time.gmtime(max(seconds, FIRST_TIME))[:6]
    with zipfile.ZipFile(target, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
        for name in sorted(files):
            entry = zipfile.ZipInfo(f"orvanta-usbtool/{name}", moment)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.create_system = 0  # no rights of another system
            entry.external_attr = 0x20  # the archive bit
            archive.writestr(entry, files[name])


def archive_name():
    return f"orvanta-usbtool-{program_version()}-windows-x64.zip"


def make(build, output, seconds):
    output.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory() as folder:
        files = program_files.contents(build, folder)
    program_files.expect_fine(files, build)
    target = output / archive_name()
    write_zip(target, files, seconds)
    return target, {name: len(files[name]) for name in LARGEST}


def differing(first, second):
    with zipfile.ZipFile(first) as one, zipfile.ZipFile(second) as other:
        names = set(one.namelist()) | set(other.namelist())
        both = set(one.namelist()) & set(other.namelist())
        return sorted(name for name in names if name not in both or one.read(name) != other.read(name))


def main():
    options = program_files.arguments(__doc__)
    seconds = source_time()
    target, sizes = make(program_files.finished_build(options.build), options.output, seconds)
    digest = hashlib.sha256(target.read_bytes()).hexdigest()
    programs = ", ".join(f"{name} {size}" for name, size in sizes.items())
    print(f"{target}: {target.stat().st_size} bytes, {programs}; SHA-256 {digest}")
    if options.check:
        with tempfile.TemporaryDirectory(prefix="usbtool-package-") as folder:
            second = second_build.made_by("make_zip.py", seconds, Path(folder))
            names = differing(target, second)
            if names or second.read_bytes() != target.read_bytes():
                sys.exit("A second build, in another folder, makes another archive: " + ", ".join(names))
        print("A second build, in another folder, makes the same archive.")


if __name__ == "__main__":
    main()
