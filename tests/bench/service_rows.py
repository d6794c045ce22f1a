"""The services: a download, the drives, a listing, the registry."""

import os
import statistics
import subprocess
import time

from measure import PAIRS, compare, in_microseconds, judge, medians, with_and_without_load
from program import BENCH, MIB, Drive, FileServer, bench_folder, drives, offscreen, run_bench, stick_folder


def download(folder):
    size = 256 * MIB
    target = bench_folder(folder, "open_url")
    (target / "Drives.ini").write_text("".join(d.section() for d in drives(folder)))
    with FileServer(folder, {"file": bytes(size)}) as server:
        url = server.address("file")

        def ours():
            length, seconds = run_bench(target, "open_url", url)
            assert length == size
            return seconds

        def theirs():
            words = subprocess.run(["curl", "-s", "-o", "/dev/null", "-w", "%{time_total}", url], env=offscreen(),
                                   capture_output=True, check=True).stdout
            return float(words.decode().replace(",", "."))

        measured = compare(ours, theirs, 1.10)
    return [("`OpenURL` of 256 MB from loopback", "`curl -o /dev/null`", *measured)]


def scan(folder):
    target = bench_folder(folder, "scan_drives")
    letters = "ABCDEFGHIJKLMNO"
    sections = [Drive(letter, 2, folder).section() for letter in letters]
    (target / "Drives.ini").write_text("".join(sections))

    def milliseconds():
        count, median, _ = run_bench(target, "scan_drives")
        assert count == len(letters)
        return median

    idle, busy = with_and_without_load(lambda: statistics.median(milliseconds() for _ in range(PAIRS)))
    return [("scan of 15 roots with `Drives.ini`", "—", "< 0.50 ms", f"{idle:.2f} ms; with a busy core {busy:.2f} ms",
             max(idle, busy) < 0.5)]


def arrivals(folder):
    """1,000 times a stick goes and comes, in one program: the last hundred take as long as the first."""
    target = bench_folder(folder, "arrivals")
    (target / "Drives.ini").write_text("".join(d.section() for d in drives(stick_folder(folder))))

    kilobytes = []

    def growth():
        first, last, more = run_bench(target, "arrivals")
        kilobytes.append(more)
        return last / 1000, first / 1000

    goal, measured, reached = judge(1.10, lambda: medians([growth() for _ in range(PAIRS)]), in_microseconds)
    return [("1,000 stick arrivals in a row: the last hundred", "the first hundred", goal,
             f"{measured}; {statistics.median(kilobytes):+.0f} KB", reached)]


def listing(folder):
    """100,000 files in 1,000 folders."""
    tree = folder / "tree"
    for i in range(1000):
        (tree / f"folder{i}").mkdir(parents=True)
        for j in range(99):
            (tree / f"folder{i}" / f"file{j}").touch()
    target = bench_folder(folder, "list_files")
    (target / "Drives.ini").write_text("".join(d.section() for d in drives(tree)))

    def ours():
        count, seconds = run_bench(target, "list_files", "E:\\")
        assert count == 100_000
        return seconds

    def theirs():
        started = time.monotonic()
        subprocess.run(["find", tree, "-printf", "%p %m\n"], stdout=subprocess.DEVNULL, check=True)
        return time.monotonic() - started

    return [("`GetAllFiles` of 100,000 files", "`find -printf`", *compare(ours, theirs, 1.10))]


def registry(folder):
    """1,000 keys, each operation for all of them; the figure is all of the operations but the flushes together."""
    result = subprocess.run([BENCH / "registry_keys" / "bench_registry_keys"], env=dict(os.environ, TMPDIR=str(folder)),
                            capture_output=True, check=True, text=True)
    times = {name: float(median) for name, median, _ in map(str.split, result.stdout.splitlines())}
    flushed = times.pop("flushed")
    parts = ", ".join(f"{name} {median:.1f}" for name, median in times.items())
    total = times["create"] + times["set"] + times["read"]
    return [
        ("1,000 registry keys created, set and read", "—", "< 50 ms", f"{total:.1f} ms ({parts})", total < 50),
        ("1,000 keys by `RegKeyCreate`, which waits for the disk each time", "—", "none", f"{flushed:.0f} ms", True),
    ]
