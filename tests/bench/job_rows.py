"""The job, from the answer to its question until its success box is seen."""

import contextlib
import os
import statistics
import subprocess
import time

from measure import PAIRS, compare, judge, medians, with_and_without_load
from program import BUILD, MIB, PROGRAM, FaultServer, FileServer, fresh_stick, server_files, slow, started, status_value


class Job:
    """The program with its stick, ready for jobs."""

    def __init__(self, stick, url, environment=None):
        self.program = started(stick, server=url, environment={"BROWSER": "true", **(environment or {})})

    def __enter__(self):
        self.program.__enter__()
        self.program.wait_window("frmMain")
        self.program.wait_for("StatusBar1_2", "text", "Updates geladen.")
        self.idle = status_value(self.program.process.pid, "VmRSS")  # kB
        return self

    def __exit__(self, *details):
        return self.program.__exit__(*details)

    def run(self):
        """Seconds from the confirmation to the success box, which it then answers."""
        self.program.click("cmdChoose")
        self.program.wait_message(title="Wollen Sie updaten ?")
        self.program.poll = 0.004  # what is measured may be a dozen of the usual ones
        started = time.monotonic()
        self.program.request("answer", button="OK")
        self.program.wait_message(timeout=120, title="Update erfolgreich")
        taken = time.monotonic() - started
        self.program.answer("OK")
        self.program.wait_until(lambda: self.program.message() is None, what="the end of the job")
        return taken

    def highest_memory(self):
        """kB."""
        return status_value(self.program.process.pid, "VmHWM")


def run_job(stick, url):
    with Job(stick, url) as job:
        return job.run()


def shell_job(stick, server):
    """The same with the system's own tools; `dd` has the cache forget a file."""
    copies = {name: PROGRAM.parent / name for name in ("autorun.inf", "orvantastick.ico")}
    originals = {name: server.file(name + ".txt") for name in ("firmware.bin", "list.bin")} | copies
    commands = [["curl", "-s", "-o", stick / name, server.address(name + ".txt")]
                for name in originals if name not in copies]
    commands += [["cp", original, stick / name] for name, original in copies.items()]
    commands.append(["sync", "-f", stick])
    for name, original in originals.items():
        commands.append(["dd", f"if={stick / name}", "iflag=nocache", "count=0", "status=none"])
        commands.append(["cmp", stick / name, original])
    started = time.monotonic()
    for command in commands:
        subprocess.run(command, check=True)
    return time.monotonic() - started


def whole_job(folder):
    with FileServer(folder, server_files(os.urandom(64 * MIB), os.urandom(MIB))) as server:
        measured = compare(lambda: run_job(fresh_stick(folder), server.url),
                           lambda: shell_job(fresh_stick(folder), server), 1.10)
    return [("whole job, 64 MB firmware, 1 MB list, read back, folder stick on ext4",
             "`curl -o` twice + `cp` twice + `sync -f` + `cmp` of all four past the cache", *measured)]


def job_memory(folder):
    firmware = 64 * MIB
    with FileServer(folder, server_files(os.urandom(firmware), os.urandom(MIB))) as server:
        def share():
            with Job(fresh_stick(folder), server.url) as job:
                job.run()
                return job.highest_memory() / (job.idle + firmware / 1024)

        highest = statistics.median(share() for _ in range(PAIRS))
    return [("peak memory of the job with 64 MB", "program idle + file size", "≤ 1.03", f"{highest:.3f}",
             highest <= 1.03)]


def written_when(stick):
    """Tells any change of the stick's files."""
    return {path.name: (path.stat().st_mtime_ns, path.stat().st_ctime_ns) for path in stick.iterdir()}


def two_jobs(stick, url, environment=None):
    """Seconds of the first and the second job with the same files; the second writes nothing."""
    with Job(stick, url, environment) as job:
        first = job.run()
        before = written_when(stick)
        second = job.run()
        assert written_when(stick) == before, "the second job has written"
        return second, first


def second_job(folder):
    """On a fast disk most of a job is the download; on a stick as many are, the writing."""
    def row(what, run):
        measured = judge(0.5, lambda: medians([run() for _ in range(PAIRS)]))
        return (f"second job with the same files, {what}", "the first one", *measured)

    with FileServer(folder, server_files(os.urandom(64 * MIB), os.urandom(MIB))) as server:
        fast = row("64 MB, folder on ext4", lambda: two_jobs(fresh_stick(folder), server.url))
    slow_stick = {"LD_PRELOAD": BUILD / "tests" / "libslowness.so", "USBTOOL_SLOW_FOLDER": folder / "stick",
                  "USBTOOL_SLOW_WRITE": 10_000, "USBTOOL_SLOW_READ": 25_000}
    with FaultServer() as server:
        for name, contents in server_files(os.urandom(8 * MIB), os.urandom(MIB)).items():
            server.set("/orvanta/download/" + name, slow(contents, 200_000, 0.01))
        return [fast, row("8 MB at 20 MB/s, to a stick that writes 10 and reads 25 MB/s",
                          lambda: two_jobs(fresh_stick(folder), server.url(), slow_stick))]


def line_fit(points):
    """Offset and slope of the straight line through (x, y), and R²."""
    xs, ys = zip(*points)
    slope, offset = statistics.linear_regression(xs, ys)
    return offset, slope, statistics.correlation(xs, ys) ** 2


def job_sizes(folder):
    """Every size in turn, several times. A step would be a size whose share of time for another megabyte leaps."""
    sizes = (1, 4, 16, 64, 256)

    def typical():
        taken = {size: [] for size in sizes}
        for _ in range(5):
            for size in sizes:
                taken[size].append(run_job(fresh_stick(folder), servers[size].url))
        return [(size, statistics.median(times)) for size, times in taken.items()]

    def judged(points):
        offset, slope, fit = line_fit(points)
        step = max((y - offset - slope * x) / (offset + slope * x) for x, y in points)
        times = ", ".join(f"{y:.2f}" for _, y in points)
        return f"R² {fit:.4f}, at most {step:+.0%} above the line ({times} s)", fit > 0.99 and step < 0.25

    servers = {}
    with contextlib.ExitStack() as stack:
        for size in sizes:
            home = folder / f"size{size}"
            home.mkdir()
            servers[size] = stack.enter_context(FileServer(home, server_files(os.urandom(size * MIB), os.urandom(MIB))))
        texts, reached = zip(*map(judged, with_and_without_load(typical)))
    return [("job time over 1, 4, 16, 64, 256 MB", "a straight line", "R² > 0.99, no step",
             "; with a busy core ".join(texts), all(reached))]
