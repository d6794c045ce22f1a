#!/usr/bin/env python3
"""Makes the installer of the program for Windows, the same bytes whenever and wherever it is made.

packaging/windows/make_setup.py [--build FOLDER] [--output FOLDER] [--check]

--build   a finished cross build; without it the preset "windows" is built
--output  where the installer goes (build/packages)
--check   makes the installer once more, from a copy of the sources in another folder, and compares the two

All files have the time of the last commit, or SOURCE_DATE_EPOCH; SIGN_COMMAND signs the programs, the installer and
its uninstaller (see sign.py). What is packed is that of the archive, checked as there.
"""

import hashlib
import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

import program_files
import second_build
import sign
from program_files import PROGRAM, ROOT, program_version, source_time

HERE = Path(__file__).resolve().parent
PICTURES = ("setup.bmp", "setup-large.bmp")


def write_files(folder, files, seconds):
    for name, data in files.items():
        target = folder / name
        target.parent.mkdir(parents=True, exist_ok=True)
        target.write_bytes(data)
        os.utime(target, (seconds, seconds))


def in_order(names):
    """The program comes last: until then the one that is replaced still fits the formatter and the pictures."""
    return sorted(names, key=lambda name: (name == PROGRAM, name))


def listing(files):
    """The names, as macros that call another one with each."""
    names = [name.replace("/", "\\") for name in in_order(files)]
    folders = sorted({name.rpartition("\\")[0] for name in names} - {""})
    lines = ["!macro EachFile Do", *(f'  !insertmacro ${{Do}} "{name}"' for name in names), "!macroend",
             "!macro EachFolder Do", *(f'  !insertmacro ${{Do}} "{name}"' for name in folders), "!macroend", ""]
    return "\n".join(lines)


def four_numbers(number):
    return ".".join((number.split(".") + ["0"] * 4)[:4])


def compile_setup(target, folder, number, kilobytes):
    values = {"VERSION": number, "FOUR_NUMBERS": four_numbers(number), "KILOBYTES": kilobytes,
              "FILES": folder / "files", "LISTING": folder / "files.nsh", "ICON": ROOT / "data" / "icons" / "103.ico",
              "PICTURES": folder / "pictures", "TARGET": target}
    if sign.command():
        values["SIGN"] = f'"{sys.executable}" "{HERE / "sign.py"}"'
    command = ["makensis", "-V2", "-WX", "-NOCONFIG", "-INPUTCHARSET", "UTF8"]
    command += [f"-D{name}={value}" for name, value in values.items()] + [HERE / "setup.nsi"]
    subprocess.run(command, check=True, stdout=sys.stderr, env=dict(os.environ, TZ="UTC"))


def make(build, output, seconds, number):
    output.mkdir(parents=True, exist_ok=True)
    target = output.resolve() / f"orvanta-usbtool-{number}-windows-x64-setup.exe"
    with tempfile.TemporaryDirectory(prefix="usbtool-setup-") as temporary:
        folder = Path(temporary)
        files = program_files.contents(build, folder, number)
        program_files.expect_fine(files, build)
        write_files(folder / "files", files, seconds)
        write_files(folder / "pictures", {name: (HERE / name).read_bytes() for name in PICTURES}, seconds)
        (folder / "files.nsh").write_text(listing(files), encoding="utf-8")
        made = folder / target.name
        compile_setup(made, folder, number, sum(map(len, files.values())) // 1024 + 1)
        shutil.move(made, target)  # whole and signed, or not at all
    return target


def main():
    options = program_files.arguments(__doc__)
    seconds = source_time()
    target = make(program_files.finished_build(options.build), options.output, seconds, program_version())
    digest = hashlib.sha256(target.read_bytes()).hexdigest()
    print(f"{target}: {target.stat().st_size} bytes; SHA-256 {digest}")
    if options.check:
        with tempfile.TemporaryDirectory(prefix="usbtool-setup-") as folder:
            if second_build.made_by("make_setup.py", seconds, Path(folder)).read_bytes() != target.read_bytes():
                sys.exit("A second build, in another folder, makes another installer.")
        print("A second build, in another folder, makes the same installer.")


if __name__ == "__main__":
    main()
