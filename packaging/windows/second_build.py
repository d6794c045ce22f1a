"""A package made once more, of a copy of the sources that is built in another folder."""

import os
import shutil
import sys

from program_files import ROOT, run


def copy_of_sources(folder):
    names = run("git", "-C", ROOT, "ls-files", "-z", "--cached", "--others", "--exclude-standard").split("\0")
    for name in filter(None, names):
        if (ROOT / name).is_file():
            (folder / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(ROOT / name, folder / name)


def made_by(script, seconds, folder):
    """What the script of packaging/windows makes there, below a folder of another name and depth."""
    sources = folder / "another folder" / "sources"
    build = folder / "b"
    copy_of_sources(sources)
    # Compiled, not taken from ccache: that would be the first build's once more.
    environment = dict(os.environ, SOURCE_DATE_EPOCH=str(seconds), CCACHE_DISABLE="1")
    run("cmake", "-S", sources, "-B", build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=MinSizeRel", "-DBUILD_TESTING=OFF",
        "--toolchain", sources / "cmake" / "mingw-w64-x86_64.cmake", env=environment)
    run("cmake", "--build", build, "--target", "orvanta-usbtool", "-j", "2", env=environment)
    path = sources / "packaging" / "windows" / script
    run(sys.executable, path, "--build", build, "--output", folder / "out", env=environment)
    return next((folder / "out").iterdir())
