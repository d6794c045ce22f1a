#!/usr/bin/env python3
"""Packs the program for Windows as a ZIP archive that is the same whenever and wherever it is made.

packaging/windows/make_zip.py [--build FOLDER] [--output FOLDER] [--check]

--build   a finished cross build; without it the preset "windows" is built
--output  where the archive goes (build/packages)
--check   makes the archive once more, from a copy of the sources in another folder, and compares the two

The archive's times are those of the last commit, or SOURCE_DATE_EPOCH. What is packed is checked each time: the
programs are not too large, need nothing but Windows' own libraries, and name no folder of this machine.
"""

import argparse
import hashlib
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time
import zipfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "scripts"))
from version import program_version  # noqa: E402

PROGRAM = "orvanta-usbtool.exe"
LARGEST = {PROGRAM: 3_000_000, "fat32format.exe": 500_000}  # the programs, and how many bytes they may have
TOOLS = "x86_64-w64-mingw32-"
# Libraries of Windows 10 and 11 that are never looked for beside the program: Windows keeps them on its list of known
# ones, or, COMCTL32, the program's manifest binds them. All others are loaded when they are first used.
SYSTEM_LIBRARIES = {
    "advapi32.dll", "comctl32.dll", "comdlg32.dll", "gdi32.dll", "gdiplus.dll", "kernel32.dll", "msvcrt.dll",
    "ntdll.dll", "ole32.dll", "oleaut32.dll", "shell32.dll", "shlwapi.dll", "user32.dll",
}
FIRST_TIME = 315_532_800  # 1980; a ZIP archive knows none before


def run(*command, **options):
    return subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE, **options).stdout


def archive_name():
    return f"orvanta-usbtool-{program_version()}-windows-x64.zip"


def source_time():
    given = os.environ.get("SOURCE_DATE_EPOCH")
    return int(given or run("git", "-C", ROOT, "log", "-1", "--format=%ct"))


def dos_text(file):
    """Text files for people, as Notepad of every Windows shows them."""
    text = file.read_text(encoding="utf-8").replace("@PROJECT_VERSION@", program_version())
    return text.replace("\n", "\r\n").encode("utf-8-sig")


def stripped(program, folder):
    target = Path(folder) / program.name
    # Otherwise it writes the time of day into the program.
    run(TOOLS + "strip", "--strip-all", "--preserve-dates", "-o", target, program)
    return target.read_bytes()


def contents(build, folder):
    """{name in the archive: bytes}"""
    files = {file.name: file.read_bytes() for file in (ROOT / "data" / "program").iterdir()}
    files["Server.ini"] = (build / "program" / "Server.ini").read_bytes()
    for name in LARGEST:
        files[name] = stripped(build / "program" / name, folder)
    files["LIESMICH.txt"] = dos_text(ROOT / "packaging" / "windows" / "LIESMICH.txt")
    files["LIZENZ.txt"] = dos_text(ROOT / "LICENSE")
    return files


def complaints(name, program, build):
    """What is wrong with a program, in words."""
    if len(program) > LARGEST[name]:
        yield f"{name} has {len(program)} bytes, more than {LARGEST[name]}"
    with tempfile.NamedTemporaryFile(suffix=".exe") as file:
        file.write(program)
        file.flush()
        imports = re.findall(r"DLL Name: (\S+)", run(TOOLS + "objdump", "-p", file.name))
    for library in imports:
        if library.lower() not in SYSTEM_LIBRARIES:
            yield f"{name} needs {library}"
    for folder in {str(ROOT), str(build), str(Path.home()), "/usr/"}:
        if folder.encode() in program or folder.encode("utf-16-le") in program:
            yield f"{name} names the folder {folder}"


def write_zip(target, files, seconds):
    moment = time.gmtime(max(seconds, FIRST_TIME))[:6]
    with zipfile.ZipFile(target, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
        for name in sorted(files):
            entry = zipfile.ZipInfo(f"orvanta-usbtool/{name}", moment)
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.create_system = 0  # no rights of another system
            entry.external_attr = 0x20  # the archive bit
            archive.writestr(entry, files[name])


def make(build, output, seconds):
    output.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory() as folder:
        files = contents(build, folder)
    wrong = [complaint for name in LARGEST for complaint in complaints(name, files[name], build)]
    if wrong:
        sys.exit("\n".join(wrong))
    target = output / archive_name()
    write_zip(target, files, seconds)
    return target, {name: len(files[name]) for name in LARGEST}


def copy_of_sources(folder):
    names = run("git", "-C", ROOT, "ls-files", "-z", "--cached", "--others", "--exclude-standard").split("\0")
    for name in filter(None, names):
        if (ROOT / name).is_file():
            (folder / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(ROOT / name, folder / name)


def made_elsewhere(seconds, folder):
    """The archive of a build of its own, in a folder of another name and depth."""
    sources = folder / "another folder" / "sources"
    build = folder / "b"
    copy_of_sources(sources)
    run("cmake", "-S", sources, "-B", build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=MinSizeRel", "-DBUILD_TESTING=OFF",
        "--toolchain", sources / "cmake" / "mingw-w64-x86_64.cmake")
    run("cmake", "--build", build, "--target", "orvanta-usbtool", "-j", "2")
    environment = dict(os.environ, SOURCE_DATE_EPOCH=str(seconds))
    script = sources / "packaging" / "windows" / "make_zip.py"
    run(sys.executable, script, "--build", build, "--output", folder / "out", env=environment)
    return next((folder / "out").glob("*.zip"))


def differing(first, second):
    with zipfile.ZipFile(first) as one, zipfile.ZipFile(second) as other:
        names = set(one.namelist()) | set(other.namelist())
        both = set(one.namelist()) & set(other.namelist())
        return sorted(name for name in names if name not in both or one.read(name) != other.read(name))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=Path)
    parser.add_argument("--output", type=Path, default=ROOT / "build" / "packages")
    parser.add_argument("--check", action="store_true")
    options = parser.parse_args()
    if options.build is None:
        subprocess.run([ROOT / "scripts" / "build.sh", "windows", "orvanta-usbtool"], check=True)
        options.build = ROOT / "build" / "windows"

    seconds = source_time()
    target, sizes = make(options.build.resolve(), options.output, seconds)
    digest = hashlib.sha256(target.read_bytes()).hexdigest()
    programs = ", ".join(f"{name} {size}" for name, size in sizes.items())
    print(f"{target}: {target.stat().st_size} bytes, {programs}; SHA-256 {digest}")
    if options.check:
        with tempfile.TemporaryDirectory(prefix="usbtool-package-") as folder:
            second = made_elsewhere(seconds, Path(folder))
            names = differing(target, second)
            if names or second.read_bytes() != target.read_bytes():
                sys.exit("A second build, in another folder, makes another archive: " + ", ".join(names))
        print("A second build, in another folder, makes the same archive.")


if __name__ == "__main__":
    main()
