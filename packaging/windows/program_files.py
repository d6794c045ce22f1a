"""What the packages for Windows hold: the version, the time, the stripped programs and the files beside them.

The time is that of the last commit, or SOURCE_DATE_EPOCH. The programs are signed as sign.py tells.
"""

import argparse
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

import sign

ROOT = Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "scripts"))
from version import program_version  # noqa: E402

PROGRAM = "orvanta-usbtool.exe"
LARGEST = {PROGRAM: 3_000_000, "fat32format.exe": 500_000}  # the programs, and how many bytes they may have
HANDBOOK = "Anleitung.html"
TOOLS = "x86_64-w64-mingw32-"
# Libraries of Windows 10 and 11 that are never looked for beside the program: Windows keeps them on its list of known
# ones, or, COMCTL32, the program's manifest binds them. All others are loaded when they are first used.
SYSTEM_LIBRARIES = {
    "advapi32.dll", "comctl32.dll", "comdlg32.dll", "gdi32.dll", "gdiplus.dll", "kernel32.dll", "msvcrt.dll",
    "ntdll.dll", "ole32.dll", "oleaut32.dll", "shell32.dll", "shlwapi.dll", "user32.dll",
}


def run(*command, **options):
    return subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE, **options).stdout


def source_time():
    given = os.environ.get("SOURCE_DATE_EPOCH")
    return int(given or run("git", "-C", ROOT, "log", "-1", "--format=%ct"))


def dos_text(text):
    """Text files for people, as Notepad of every Windows shows them."""
    return text.replace("\n", "\r\n").encode("utf-8-sig")


def read_me(number):
    """The text beside the program."""
    text = (ROOT / "packaging" / "windows" / "LIESMICH.txt").read_text(encoding="utf-8")
    return dos_text(text.replace("@PROJECT_VERSION@", number))


def stripped(program, folder):
    target = Path(folder) / program.name
    # Otherwise it writes the time of day into the program.
    run(TOOLS + "strip", "--strip-all", "--preserve-dates", "-o", target, program)
    return target


def handbook(folder):
    """{name: bytes} of the handbook with its pictures, where the build has made it."""
    pages = [folder / HANDBOOK, *sorted((folder / Path(HANDBOOK).stem).glob("**/*"))]
    return {page.relative_to(folder).as_posix(): page.read_bytes() for page in pages if page.is_file()}


def contents(build, folder, number=None):
    """{name below the program's folder: bytes}"""
    files = {file.name: file.read_bytes() for file in (ROOT / "data" / "program").iterdir()}
    files["Server.ini"] = (build / "program" / "Server.ini").read_bytes()  # has the addresses that the builder chose
    files |= handbook(build / "program")
    for name in LARGEST:
        program = stripped(build / "program" / name, folder)
        sign.sign(program)
        files[name] = program.read_bytes()
    files["LIESMICH.txt"] = read_me(number or program_version())
    files["LIZENZ.txt"] = dos_text((ROOT / "LICENSE").read_text(encoding="utf-8"))
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


def expect_fine(files, build):
    """Ends with what is wrong with the programs, or is missing, when there is something."""
    wrong = [complaint for name in LARGEST for complaint in complaints(name, files[name], build)]
    if HANDBOOK not in files:
        wrong.append(f"the build has made no {HANDBOOK}")
    if wrong:
        sys.exit("\n".join(wrong))


def arguments(description):
    """What the makers of packages take."""
    parser = argparse.ArgumentParser(description=description, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=Path)
    parser.add_argument("--output", type=Path, default=ROOT / "build" / "packages")
    parser.add_argument("--check", action="store_true")
    options = parser.parse_args()
    if options.check and sign.command():
        sys.exit("A signature tells when it was made: --check compares unsigned packages only.")
    return options


def finished_build(given):
    """The build folder that is told, built when it is not there yet, or that of the preset, which is built."""
    if given is None:
        subprocess.run([ROOT / "scripts" / "build.sh", "windows", "orvanta-usbtool"], check=True)
        return ROOT / "build" / "windows"
    if not given.exists():
        for words in (["--preset", "windows", "-B", given, "-DBUILD_TESTING=OFF"],
                      ["--build", given, "--target", Path(PROGRAM).stem]):
            subprocess.run(["cmake", *words], check=True, cwd=ROOT, stdout=sys.stderr)
    return given.resolve()
