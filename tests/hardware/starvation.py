"""How long the guest's processors, which are threads here, waited for a processor of this machine.

In that time the guest's clock goes on and nothing in it can: on a machine that does other things, too, a figure by that
clock tells of those other things. https://docs.kernel.org/scheduler/sched-stats.html, /proc/<pid>/schedstat
"""

import bisect
import threading
import time
from pathlib import Path

PERIOD = 0.01  # seconds between two looks


class Starvation:
    """Looks at a process from `with` on; then waited() can be asked about moments of that time (time.monotonic())."""

    def __init__(self, process):
        self._folder = Path(f"/proc/{process}/task")
        self._looks = []
        self._stop = threading.Event()
        self._thread = threading.Thread(target=self._look, daemon=True)

    def __enter__(self):
        self._thread.start()
        return self

    def __exit__(self, *_):
        self._stop.set()
        self._thread.join()

    def _look(self):
        while True:
            waits = {}
            for thread in self._folder.iterdir():
                try:
                    waits[thread.name] = int((thread / "schedstat").read_text().split()[1]) / 1e9
                except OSError:
                    pass  # it has just ended
            self._looks.append((time.monotonic(), waits))
            if self._stop.wait(PERIOD):
                return

    def waited(self, begin, end):
        """Seconds that the thread which waited longest of all waited in between; the others may have as well."""
        first, last = self._at(begin), self._at(end)
        return max(wait - first.get(thread, 0) for thread, wait in last.items())

    def _at(self, moment):
        index = bisect.bisect_left(self._looks, moment, key=lambda look: look[0])
        return self._looks[min(index, len(self._looks) - 1)][1]
