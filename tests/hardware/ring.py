"""Boots the guest and runs the scenarios in it:
ring.py [--guest | --bench | --timed | --untimed | NUMBER | NUMBERletter ...]

One line a scenario: its number, how it went, how long it took, its figure. The status is 1 when one of them failed.

Those whose figure is a time come first, in a guest alone that has just been booted. The others wait a good deal, so
two guests run beside each other, and each takes the next scenario that is left. --timed and --untimed run only the
ones or the others, --guest only builds the guest. --bench prints figures (bench.py), in a guest alone.
"""

import functools
import os
import queue
import random
import shutil
import signal
import sys
import tempfile
import threading
import time
import traceback
from pathlib import Path

import bench
import guest_program
import images
import payload
import scenario
from guest import Guest, built_guest
from server import Server

import scenarios_detection  # noqa: F401
import scenarios_disks  # noqa: F401
import scenarios_events  # noqa: F401
import scenarios_exchange  # noqa: F401
import scenarios_interrupted  # noqa: F401
import scenarios_slow  # noqa: F401
import scenarios_job  # noqa: F401
import scenarios_label  # noqa: F401
import scenarios_listing  # noqa: F401
import scenarios_windows  # noqa: F401

RESULTS = payload.BUILD / "hardware"
PICTURES = RESULTS / "pictures"
GUESTS = 2
KNOWN = ("busctl call org.freedesktop.UDisks2 /org/freedesktop/UDisks2 org.freedesktop.DBus.ObjectManager "
         "GetManagedObjects")


class Ring:
    """What a scenario has at hand. What it plugs in and starts is gone before the next one begins."""

    def __init__(self, folder, disk, handed_over, seed):
        self.images = folder / "images"
        self.images.mkdir()
        self.seed = seed
        self.random = None
        self.server = Server()
        self.guest = Guest(disk, handed_over, folder)
        self.user, self.root = self.guest.user, self.guest.root
        self.programs = []
        self._automounter = None
        guest_program.prepare(self.guest)

    def prepare(self, one):
        """For a scenario. Its random moments are the same whatever ran before it."""
        self.random = random.Random(f"{self.seed} {one.name}")

    def image(self, name):
        """Path of an image of that name; each scenario has its own."""
        return self.images / f"{name}.img"

    def stick(self, name, label, **arguments):
        return images.fat(self.image(name), label, **arguments)

    def program(self, agent=None, **arguments):
        """The program, by default as the user who is logged in at the console."""
        program = guest_program.GuestProgram(self.guest, agent or self.user, self.server.url, **arguments)
        self.programs.append(program)
        return program

    def loaded_program(self, agent=None, **arguments):
        program = self.program(agent, **arguments)
        program.wait_loaded()
        return program

    def picture(self, program, name, window=None):
        program.screenshot(PICTURES / f"{name}.png", window)

    def mounts(self):
        """{device: folder} of the USB volumes that are mounted."""
        lines = self.root.run("grep '^/dev/sd' /proc/mounts || true").splitlines()
        return {line.split()[0]: line.split()[1].replace("\\040", " ") for line in lines}

    def unmount_all(self):
        for folder in self.mounts().values():
            self.root.run(f"umount '{folder}'")

    def wait(self, condition, what, timeout=60):
        end = time.monotonic() + timeout
        while not condition():
            if time.monotonic() > end:
                raise AssertionError(f"{what} did not come true within {timeout} s")
            time.sleep(0.1)

    def wait_known(self, count=1):
        """Until UDisks2 knows that many USB volumes, besides the guest's own one."""
        self.wait(lambda: self.user.run(KNOWN).count('"IdUsage" s "filesystem"') > count,
                  f"{count} volumes known to UDisks2")

    # Automounter

    def start_automounter(self):
        """Unless it runs."""
        if self._automounter is not None:
            return
        self._automounter = self.user.request("start", command=["python3", "/payload/guest/automount.py"],
                                              output="/tmp/automounter")["process"]
        self.wait(lambda: "watching" in self.user.run("cat /tmp/automounter"), "the automounter")

    def stop_automounter(self):
        if self._automounter is not None:
            self.user.run(f"pkill -P {self._automounter}; kill {self._automounter}; rm -f /tmp/automounter",
                          check=False)
            self._automounter = None

    # Before the next scenario

    def clean_up(self):
        self.stop_automounter()
        for program in self.programs:
            program.dispose()
        self.programs.clear()
        for name in self.guest.plugged():
            self.guest.pull(name)
        self.server.reset()
        self.wait(lambda: not self.mounts(), "the guest without mounted sticks")
        self.wait(lambda: "/block_devices/sd" not in self.user.run(KNOWN, check=False), "UDisks2 without sticks")
        self.root.run("rm -rf /run/user/1000/orvanta-usbtool /run/usbtool-root/orvanta-usbtool")
        for image in self.images.iterdir():
            image.unlink()

    def close(self):
        self.guest.close()
        self.server.stop()
        shutil.rmtree(self.images, ignore_errors=True)


def play(ring, one):
    began = time.monotonic()
    ring.prepare(one)
    try:
        figure = one.play(ring)
        outcome = "ok  "
    except Exception as error:  # a failed scenario does not keep the others from running
        figure = str(error).strip().splitlines()[0] if str(error).strip() else type(error).__name__
        outcome = "FAIL"
        report(ring, one)
    try:
        ring.clean_up()
    except Exception as error:
        report(ring, one)
        outcome, figure = "FAIL", f"not put in order again: {error}"
    print(f"{one.name:>4} {outcome} {time.monotonic() - began:6.1f} s  {one.title}: {figure}", flush=True)
    return outcome == "ok  "


def report(ring, one):
    with open(RESULTS / "failures.txt", "a", encoding="utf-8") as file:
        file.write(f"--- {one.name} {one.title}\n{traceback.format_exc()}\n")
        for program in ring.programs:
            try:
                file.write(f"{program.name}: status {program.status()}\n{program.output()}\n")
                program.screenshot(PICTURES / f"failed-{one.name}-{program.name}.png")
            except Exception as error:
                file.write(f"{program.name}: {error}\n")
        try:
            file.write(ring.root.run("journalctl --no-pager --lines=60 --output=short-monotonic"))
        except Exception as error:
            file.write(f"no journal: {error}\n")


def play_all(ring, waiting, passed):
    """Those that are left."""
    while True:
        try:
            one = waiting.get_nowait()
        except queue.Empty:
            return
        if play(ring, one):
            passed.append(one.name)


def beside_each_other(calls):
    """Returns when all have returned; nothing waits for them when the ring is ended from outside."""
    threads = [threading.Thread(target=call, daemon=True) for call in calls]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()


def play_beside(rings, chosen, passed):
    waiting = queue.SimpleQueue()
    for one in chosen:
        waiting.put(one)
    beside_each_other([functools.partial(play_all, ring, waiting, passed) for ring in rings])


def boot(rings, count, seed):
    """Appends rings, whose guests boot at the same time."""
    disk, handed_over = built_guest(), payload.make_payload(RESULTS / "payload")
    beside_each_other([functools.partial(append_ring, rings, disk, handed_over, seed) for _ in range(count)])
    if len(rings) < count:
        sys.exit("A guest did not start, see above.")
    print(f"Up after {max(ring.guest.boot_time for ring in rings):.1f} s: {count}.", flush=True)


def append_ring(rings, disk, handed_over, seed):
    rings.append(Ring(Path(tempfile.mkdtemp(prefix="guest-", dir=RESULTS)), disk, handed_over, seed))


def play_in(count, chosen, seed, passed):
    """In so many guests, or as many as there are scenarios."""
    rings = []
    try:
        boot(rings, min(count, len(chosen)), seed)
        play_beside(rings, chosen, passed)
    finally:
        for ring in rings:
            ring.close()


def print_figures():
    rings = []
    PICTURES.mkdir(parents=True, exist_ok=True)
    try:
        boot(rings, 1, 0)
        for measure in bench.ROWS:
            print(measure(rings[0]), flush=True)
            rings[0].clean_up()
    finally:
        for ring in rings:
            ring.close()


def wanted(one, arguments):
    kind = "--timed" if one.timed else "--untimed"
    return not arguments or kind in arguments or one.name in arguments or one.number in arguments


def main():
    arguments = sys.argv[1:]
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("ended from outside"))
    if arguments == ["--guest"]:
        built_guest()
        return
    if arguments == ["--bench"]:
        print_figures()
        return
    chosen = [one for one in scenario.scenarios() if wanted(one, arguments)]
    if not chosen:
        sys.exit("There is no such scenario.")
    seed = int(os.environ.get("USBTOOL_SEED", "0")) or random.SystemRandom().randrange(1, 10**6)
    print(f"Random moments: USBTOOL_SEED={seed}.", flush=True)
    if arguments != ["--untimed"]:  # those belong to what has been run before
        shutil.rmtree(RESULTS, ignore_errors=True)
    PICTURES.mkdir(parents=True, exist_ok=True)
    began, passed = time.monotonic(), []
    for count, some in ((1, [one for one in chosen if one.timed]), (GUESTS, [one for one in chosen if not one.timed])):
        if some:
            play_in(count, some, seed, passed)
    # One that was not played, whatever the reason, has failed.
    failed = [one.name for one in chosen if one.name not in passed]
    print(f"{len(passed)} of {len(chosen)} scenarios passed in {time.monotonic() - began:.0f} s; "
          f"pictures are in {PICTURES}.")
    if failed:
        print(f"Failed: {', '.join(failed)}; more in {RESULTS / 'failures.txt'}.")
        sys.exit(1)


if __name__ == "__main__":
    main()
