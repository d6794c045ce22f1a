"""The artefacts of a release: for each what makes it, and why it cannot be made where it cannot.

Every maker gets the sources' folder, one for what it makes, and one for builds, which are made anew: what somebody
has chosen for a build folder of the sources is no part of a release. It gives the files that it made.
"""

import lzma
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "scripts"))
from version import program_version  # noqa: E402

NAME = "orvanta-usbtool"


class NotMade(Exception):
    """Why an artefact was not made, in words."""


def run(*command, **options):
    subprocess.run(list(map(str, command)), check=True, stdout=sys.stderr, **options)


def expect_tools(*tools):
    missing = [tool for tool in tools if shutil.which(tool) is None]
    if missing:
        raise NotMade("missing: " + ", ".join(missing))


def by_script(root, output, script, end, *tools, build=None):
    """The files of that end which a script of the sources makes; it takes --output, and --build where one is told."""
    path = root / script
    if not path.exists():
        raise NotMade(f"there is no {script}")
    expect_tools(*tools)
    with tempfile.TemporaryDirectory(prefix="usbtool-release-") as folder:
        run(sys.executable, "-B", path, "--output", folder, *(["--build", build] if build else []))
        made = sorted(Path(folder).glob(f"*{end}"))
        if not made:
            raise NotMade(f"{path.name} has left no *{end}")
        return [Path(shutil.move(file, output / file.name)) for file in made]


def make_zip(root, output, builds):
    return by_script(root, output, "packaging/windows/make_zip.py", ".zip", "cmake", "x86_64-w64-mingw32-g++-posix",
                     build=builds / "windows")


def make_setup(root, output, builds):
    return by_script(root, output, "packaging/windows/make_setup.py", ".exe", "cmake", "x86_64-w64-mingw32-g++-posix",
                     "makensis", build=builds / "windows")


def make_deb(root, output, _builds):
    """It builds in a folder of its own."""
    return by_script(root, output, "packaging/linux/make_deb.py", ".deb", "dpkg-buildpackage", "dh")


def make_source(root, output, _builds):
    """Of the last commit; git gives all files its time."""
    version = program_version(root)
    tree = subprocess.run(["git", "-C", str(root), "archive", f"--prefix={NAME}-{version}/", "HEAD"], check=True,
                          stdout=subprocess.PIPE).stdout
    target = output / f"{NAME}-{version}.tar.xz"
    target.write_bytes(lzma.compress(tree, preset=9))
    return [target]


MAKERS = {"source": make_source, "zip": make_zip, "setup": make_setup, "deb": make_deb}
