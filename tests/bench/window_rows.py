"""The window: its start, its memory, long texts, and what it does when nobody uses it."""

import subprocess
import time
from pathlib import Path

from measure import PAIRS, compare, in_milliseconds, medians
from program import (BUILD, PROGRAM, CheckServer, EmptyWindow, catalog, main_window, started, stick_folder, status_value,
                     wait_painted)


def start_up(folder):
    stick = stick_folder(folder)
    widgets, size = main_window(stick)

    def painted(program):
        with program:
            return wait_painted(program)

    measured = compare(lambda: painted(started(stick)), lambda: painted(EmptyWindow(widgets, size)), 1.25,
                       in_milliseconds)
    return [("start until the window is painted", empty_window(widgets, size), *measured)]


def empty_window(widgets, size):
    return f"an empty Qt window with {widgets} widgets, {size[0]} × {size[1]}"


def proportional_memory(pid):
    """PSS in kB: what several processes share counts a share for each."""
    for line in Path(f"/proc/{pid}/smaps_rollup").read_text().splitlines():
        if line.startswith("Pss:"):
            return int(line.split()[1])
    raise KeyError("Pss")


def memory(folder):
    """Both windows are there at the same time, so that they share what they can."""
    stick = stick_folder(folder)
    widgets, size = main_window(stick)
    states = {"the window is painted": [], "the check is done": []}
    with CheckServer() as server:
        for _ in range(PAIRS):
            with EmptyWindow(widgets, size) as empty, started(stick, server=server.url()) as program:
                wait_painted(empty)
                wait_painted(program)
                for state, pairs in states.items():
                    if state == "the check is done":
                        program.wait_for("StatusBar1_2", "text", "Updates geladen.")
                    time.sleep(1)
                    pairs.append([proportional_memory(window.process.pid) / 1024 for window in (program, empty)])
    rows = []
    for state, pairs in states.items():
        ratio, ours, theirs = medians(pairs)
        rows.append((f"idle memory (PSS) when {state}", empty_window(widgets, size), "≤ 1.20",
                     f"{ratio:.2f} ({ours:.1f} MB / {theirs:.1f} MB)", ratio <= 1.2))
    return rows


def processor_time(pid):
    """Seconds, of all threads."""
    tasks = Path(f"/proc/{pid}/task")
    return sum(int((task / "schedstat").read_text().split()[0]) for task in tasks.iterdir()) / 1e9


def long_texts():
    """100 KB of note for the receiver that is shown, 100 KB in each of the four lines of the news."""
    text = ("Wort " * 20_000).encode("cp1252")
    lines = catalog("firmware.bin", "list.bin").split(b"\r\n")
    return {"usb-news.csv": b";".join([text] * 4),
            "usb-list.csv": b"\r\n".join([lines[0].replace(b"note", text), *lines[1:]])}


def large_catalog(folder):
    """What the processors do from the painted window until the check is done and its texts are painted."""
    stick = stick_folder(folder)

    def check(**files):
        with CheckServer(**files) as server, started(stick, server=server.url()) as program:
            wait_painted(program)
            time.sleep(0.5)
            before = processor_time(program.process.pid)
            program.wait_for("StatusBar1_2", "text", "Updates geladen.")
            time.sleep(0.5)
            return processor_time(program.process.pid) - before

    measured = compare(lambda: check(**long_texts()), check, 1.5, in_milliseconds)
    return [("check with 100 KB of note, news of 400 KB: time of the processors", "ordinary catalog", *measured)]


def sizes(folder):
    """As they are shipped; the .exe when it has been built, too."""
    rows = []
    for program, tool, goal in ((PROGRAM, "strip", 900), (BUILD / "windows" / "program" / "orvanta-usbtool.exe",
                                                          "x86_64-w64-mingw32-strip", 800)):
        if not program.exists():
            continue
        target = folder / program.name
        subprocess.run([tool, "--strip-all", "-o", target, program], check=True)
        size = target.stat().st_size
        rows.append((f"size of `{program.name}`, stripped", "—", f"≤ {goal} KB", f"{size / 1024:.0f} KB",
                     size <= goal * 1024))
    return rows


def voluntary_switches(pid):
    """By thread."""
    tasks = Path(f"/proc/{pid}/task")
    return {task.name: status_value(f"{pid}/task/{task.name}", "voluntary_ctxt_switches") for task in tasks.iterdir()}


def idle(folder):
    seconds = 30
    settings = {"Settings.ini": b"[USB Tool]\r\nchkAuto=1\r\ncmbSize=0\r\n"}
    with CheckServer() as server, started(stick_folder(folder), server=server.url(), files=settings) as program:
        program.wait_for("StatusBar1_2", "text", "Updates geladen.")
        before = voluntary_switches(program.process.pid)
        time.sleep(seconds)
        after = voluntary_switches(program.process.pid)
    # A thread that is new counts in full; one that has ended does not wake up any more.
    switches = sum(count - before.get(task, 0) for task, count in after.items()) / seconds
    return [("idle for 30 s after the check, automatic detection on", "—", "≤ 2 context switches a second",
             f"{switches:.2f}", switches <= 2)]
