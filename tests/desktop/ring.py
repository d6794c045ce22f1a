"""Plays the scenes of the ring: ring.py [SCENE ...]

Each scene is a process of its own, two run beside each other, and the lines of their checks are shown as they come. The
status is 1 when a check failed or a scene did not come to its end.
"""

import importlib
import os
import queue
import shutil
import subprocess
import sys
import threading
import time
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE))

from report import PICTURES, RESULTS, GivenUp, Report  # noqa: E402

# The long ones first: the others fill what they leave. Not two that make a Wine prefix.
SCENES = ["windows", "progress", "speech", "keys-openbox", "keys-xfwm4", "focus-light", "focus-dark", "focus-large",
          "placement-xfwm4", "placement-openbox", "fonts", "contrast-light", "contrast-dark", "weston", "sway", "tree", "menu"]
AT_ONCE = 2
LONGEST = 300  # seconds: a scene that takes longer hangs


def play(scene):
    """In this process. The scene's module has a function of the name `play`; what follows a hyphen is its argument."""
    report = Report(scene)
    module, _, variant = scene.partition("-")
    try:
        importlib.import_module(module).play(report, *([variant] if variant else []))
    except GivenUp:
        pass
    except Exception:
        report.camera = None
        with report.check("to its end"):
            raise
    return 1 if report.failed or not report.made else 0


class Ring:
    def __init__(self, scenes):
        self._left = queue.Queue()
        for scene in scenes:
            self._left.put(scene)
        self._lock = threading.Lock()
        self.failed = []

    def play_all(self):
        players = [threading.Thread(target=self._play_what_is_left) for _ in range(AT_ONCE)]
        for player in players:
            player.start()
        for player in players:
            player.join()

    def _play_what_is_left(self):
        while True:
            try:
                scene = self._left.get_nowait()
            except queue.Empty:
                return
            if self._play_in_a_process(scene) != 0:
                self.failed.append(scene)

    def _play_in_a_process(self, scene):
        log = RESULTS / f"{scene}.log"
        started = time.monotonic()
        with open(log, "wb") as errors:
            process = subprocess.Popen([sys.executable, __file__, "--scene", scene], stdout=subprocess.PIPE,
                                       stderr=errors, text=True, encoding="utf-8", start_new_session=True,
                                       env=os.environ | {"PYTHONDONTWRITEBYTECODE": "1"})
        watch = threading.Timer(LONGEST, self._end, [process])
        watch.start()
        for line in process.stdout:
            self._tell(line.rstrip())
        status = process.wait()
        watch.cancel()
        if status not in (0, 1):
            self._tell(f"FAIL  {scene}: ended by itself with status {status}, see {os.path.relpath(log)}")
        self._tell(f"      {scene}: {time.monotonic() - started:.0f} s")
        return status

    @staticmethod
    def _end(process):
        """With all that it has started."""
        os.killpg(process.pid, 9)

    def _tell(self, line):
        with self._lock:
            print(line, flush=True)


def main(arguments):
    if arguments[:1] == ["--scene"]:
        return play(arguments[1])
    unknown = [name for name in arguments if name not in SCENES]
    if unknown:
        print(f"no scene {' '.join(unknown)}; there are: {' '.join(SCENES)}", file=sys.stderr)
        return 2
    for folder in (PICTURES, RESULTS / "sessions", RESULTS / "work"):
        shutil.rmtree(folder, ignore_errors=True)
    RESULTS.mkdir(parents=True, exist_ok=True)
    started = time.monotonic()
    ring = Ring(arguments or SCENES)
    ring.play_all()
    verdict = f"failed: {' '.join(ring.failed)}" if ring.failed else "all checks hold"
    print(f"The desktop ring, {time.monotonic() - started:.0f} s: {verdict}. Pictures: {os.path.relpath(PICTURES)}")
    return 1 if ring.failed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
