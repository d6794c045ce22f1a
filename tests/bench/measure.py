"""Pairs measured in alternation, on an idle machine and beside a process that keeps one of its cores busy."""

import os
import statistics
import subprocess
import sys

PAIRS = 11


def alternate(ours, theirs, pairs=PAIRS):
    """Median of ours / theirs over the pairs, and the medians of both, in the unit that they return."""
    return medians([(ours(), theirs()) for _ in range(pairs)])


def medians(pairs):
    ours, theirs = zip(*pairs)
    return statistics.median(a / b for a, b in pairs), statistics.median(ours), statistics.median(theirs)


class BusyCore:
    """Another process has one of the cores for itself, as far as it gets it."""

    def __enter__(self):
        core = max(os.sched_getaffinity(0))
        spin = f"import os\nos.sched_setaffinity(0, {{{core}}})\nwhile True: pass"
        self.process = subprocess.Popen([sys.executable, "-c", spin])

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()


def with_and_without_load(measure):
    idle = measure()
    with BusyCore():
        return idle, measure()


def in_seconds(time):
    return f"{time:.2f} s"


def in_milliseconds(time):
    return f"{time * 1000:.0f} ms"


def in_microseconds(time):
    return f"{time * 1e6:.0f} µs"


def judge(goal, measure, shown=in_seconds):
    """Goal, measured and reached of a row; `measure` returns a ratio and what it was made of."""
    figures = with_and_without_load(measure)
    texts = [f"{ratio:.2f} ({shown(ours)} / {shown(theirs)})" for ratio, ours, theirs in figures]
    return f"≤ {goal:.2f}", "; with a busy core ".join(texts), all(figure[0] <= goal for figure in figures)


def compare(ours, theirs, goal, shown=in_seconds):
    return judge(goal, lambda: alternate(ours, theirs), shown)


def table_row(what, against, goal, measured, reached):
    return f"| {what} | {against} | {goal} | {measured} | {'reached' if reached else 'missed'} |"
