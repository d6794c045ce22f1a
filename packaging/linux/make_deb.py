#!/usr/bin/env python3
"""Makes the Debian package from the sources as they lie here, with its tests.

packaging/linux/make_deb.py [--output FOLDER] [--check] [--version VERSION] [--no-tests]

--output    where the packages go (build/packages)
--check     makes it once more, without tests, in a folder of another name and depth, and compares the bytes
--version   as if the sources were of that version: for the tests of an upgrade
--no-tests  without the unit tests
"""

import argparse
import fcntl
import hashlib
import os
import shutil
import subprocess
import sys
import tempfile
from contextlib import contextmanager
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "scripts"))
from sources import copy_of_sources  # noqa: E402
from version import program_version  # noqa: E402

NAME = "orvanta-usbtool"
DAY_LATER = "Mon, 23 Nov 2026 12:00:00 +0000"  # of a version that is none yet


def output_of(*command, **options):
    words = [str(word) for word in command]
    return subprocess.run(words, check=True, text=True, stdout=subprocess.PIPE, **options).stdout


def pretend(folder, version):
    own = program_version()
    lists = folder / "CMakeLists.txt"
    lists.write_text(lists.read_text().replace(f"VERSION {own} ", f"VERSION {version} ", 1))
    changelog = folder / "debian" / "changelog"
    text = changelog.read_text(encoding="utf-8")
    author = next(line for line in text.splitlines() if line.startswith(" -- ")).partition(">")[0]
    changelog.write_text(f"{NAME} ({version}) unstable; urgency=medium\n\n  * The next version.\n\n"
                         f"{author}>  {DAY_LATER}\n\n{text}", encoding="utf-8")


def users_cache():
    """For packages whose bytes nobody compares. debhelper gives each build a home of its own, hence the folder."""
    if shutil.which("ccache") is None:
        return {}
    return {"CCACHE_DIR": output_of("ccache", "--get-config", "cache_dir").strip(),
            "ORVANTA_COMPILER_CACHE": "ON"}


def build(sources, version, tests):
    """The packages, and what else dpkg-buildpackage leaves beside the sources."""
    copy_of_sources(sources)
    environment = dict(os.environ, LC_ALL="C.UTF-8")
    if version != program_version():
        pretend(sources, version)
        environment |= users_cache()
    environment.pop("SOURCE_DATE_EPOCH", None)  # that of the changelog
    if not tests:
        environment["DEB_BUILD_OPTIONS"] = "nocheck"
        environment["DEB_BUILD_PROFILES"] = "nocheck"
    log = sources.parent / "build.log"
    with open(log, "w", encoding="utf-8") as output:
        done = subprocess.run(["dpkg-buildpackage", "--build=binary", "--unsigned-changes", "--no-sign"], cwd=sources,
                              env=environment, stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT,
                              check=False)
    if done.returncode != 0:
        print("\n".join(log.read_text(encoding="utf-8", errors="replace").splitlines()[-60:]), file=sys.stderr)
        sys.exit("The package could not be built.")
    kinds = (".deb", ".changes", ".buildinfo", ".log")
    return sorted(path for path in sources.parent.iterdir() if path.suffix in kinds)


@contextmanager
def build_folder():
    """Always the same one, so that a compiler's cache knows it; who comes second waits."""
    folder = ROOT / "build" / "debian-package"
    folder.parent.mkdir(exist_ok=True)
    with open(f"{folder}.lock", "w", encoding="ascii") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        shutil.rmtree(folder, ignore_errors=True)
        yield folder
        shutil.rmtree(folder)


def digests(files):
    return {file.name: hashlib.sha256(file.read_bytes()).hexdigest() for file in files if file.suffix == ".deb"}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--output", type=Path, default=ROOT / "build" / "packages")
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--version", default=program_version())
    parser.add_argument("--no-tests", action="store_true")
    options = parser.parse_args()
    options.output.mkdir(parents=True, exist_ok=True)
    with build_folder() as folder:
        made = build(folder / "sources", options.version, not options.no_tests)
        first = digests(made)
        for file in made:
            target = f"{NAME}_{options.version}.build.log" if file.name == "build.log" else file.name
            shutil.copy2(file, options.output / target)
    for name, digest in first.items():
        print(f"{options.output / name}: {(options.output / name).stat().st_size} bytes; SHA-256 {digest}")
    if options.check:
        with tempfile.TemporaryDirectory(prefix="usbtool-other-") as folder:
            sources = Path(folder) / "another folder" / "sources"
            second = digests(build(sources, options.version, False))
        if second != first:
            sys.exit(f"A second build, in another folder, makes other packages: {second}")
        print("A second build, in another folder, makes the same packages.")


if __name__ == "__main__":
    main()
