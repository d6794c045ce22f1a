"""The artefacts of a release: for each what makes it, and why it cannot be made where it cannot.

Every maker gets the sources' folder, a folder for what it makes, and the time of the last commit, and gives the files
that it made.
"""

import lzma
import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

NAME = "orvanta-usbtool"


class NotMade(Exception):
    """Why an artefact was not made, in words."""


def run(*command, **options):
    subprocess.run(list(map(str, command)), check=True, stdout=sys.stderr, **options)


def expect_tools(*tools):
    missing = [tool for tool in tools if shutil.which(tool) is None]
    if missing:
        raise NotMade("missing: " + ", ".join(missing))


def version_of(root):
    return re.search(r"^project\(\S+ VERSION ([\d.]+)", (root / "CMakeLists.txt").read_text(), re.MULTILINE)[1]


def new_files(output, before):
    return sorted(set(output.iterdir()) - before)


def by_script(root, output, script, *tools):
    """By a script of the sources that takes --output."""
    path = root / script
    if not path.exists():
        raise NotMade(f"there is no {script}")
    expect_tools(*tools)
    with tempfile.TemporaryDirectory(prefix="usbtool-release-") as folder:
        run(sys.executable, "-B", path, "--output", folder)
        made = sorted(Path(folder).glob(f"*{end}"))
        if not made:
            raise NotMade(f"{path.name} has left no *{end}")
        return [Path(shutil.move(file, output / file.name)) for file in made]


def make_zip(root, output, _seconds):
    return by_script(root, output, "packaging/windows/make_zip.py", "cmake", "x86_64-w64-mingw32-g++-posix")


def make_setup(root, output, _seconds):
    return by_script(root, output, "packaging/windows/make_setup.py", "cmake", "x86_64-w64-mingw32-g++-posix",
                     "makensis")


def export(root, target):
    """The sources as they were committed, and nothing else."""
    target.mkdir(parents=True)
    archive = subprocess.Popen(["git", "-C", str(root), "archive", "HEAD"], stdout=subprocess.PIPE)
    run("tar", "-x", "-C", target, stdin=archive.stdout)
    if archive.wait() != 0:
        raise NotMade("git archive failed")


def make_deb(root, output, seconds):
    """From the committed sources, in a folder whose name is the same each time."""
    if not (root / "debian" / "control").exists():
        raise NotMade("there is no debian/control")
    expect_tools("dpkg-buildpackage")
    with tempfile.TemporaryDirectory(prefix="usbtool-deb-") as folder:
        sources = Path(folder) / NAME
        export(root, sources)
        check = subprocess.run(["dpkg-checkbuilddeps"], cwd=sources, text=True, capture_output=True, check=False)
        if check.returncode != 0:
            raise NotMade(check.stderr.strip())
        run("dpkg-buildpackage", "--unsigned-source", "--unsigned-changes", "--build=binary", cwd=sources,
            env=dict(os.environ, SOURCE_DATE_EPOCH=str(seconds)))
        made = sorted(Path(folder).glob("*.deb"))
        return [Path(shutil.move(file, output / file.name)) for file in made]


def make_source(root, output, _seconds):
    """Of the last commit; git gives all files its time."""
    version = version_of(root)
    tree = subprocess.run(["git", "-C", str(root), "archive", f"--prefix={NAME}-{version}/", "HEAD"], check=True,
                          stdout=subprocess.PIPE).stdout
    target = output / f"{NAME}-{version}.tar.xz"
    target.write_bytes(lzma.compress(tree, preset=9))
    return [target]


MAKERS = {"source": make_source, "zip": make_zip, "setup": make_setup, "deb": make_deb}
