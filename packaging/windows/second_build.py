"""A package made once more, of a copy of the sources that is built in another folder."""

import os
import sys

from program_files import run  # looks into scripts, too
from sources import copy_of_sources


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
