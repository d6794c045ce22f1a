"""Boots the guest and runs the scenarios in it: ring.py [NUMBER | NUMBERletter ...]

One line a scenario: its number, how it went, how long it took, its figure. The status is 1 when one of them failed.
"""

import os
import random
import shutil
import signal
import sys
import time
import traceback

import guest_program
import images
import payload
import scenario
from guest import Guest, built_guest
from server import Server

import scenarios_detection  # noqa: F401
import scenarios_disks  # noqa: F401
import scenarios_events  # noqa: F401
import scenarios_interrupted  # noqa: F401
import scenarios_job  # noqa: F401
import scenarios_label  # noqa: F401
import scenarios_listing  # noqa: F401

RESULTS = payload.BUILD / "hardware"
KNOWN = ("busctl call org.freedesktop.UDisks2 /org/freedesktop/UDisks2 org.freedesktop.DBus.ObjectManager "
         "GetManagedObjects")


class Ring:
    """What a scenario has at hand. What it plugs in and starts is gone before the next one begins."""

    def __init__(self):
        self.seed = int(os.environ.get("USBTOOL_SEED", "0")) or random.SystemRandom().randrange(1, 10**6)
        self.random = random.Random(self.seed)
        self.pictures = RESULTS / "pictures"
        self.images = RESULTS / "images"
        for folder in (RESULTS, self.images, self.pictures):
            shutil.rmtree(folder, ignore_errors=True)
            folder.mkdir(parents=True)
        self.server = Server()
        self.guest = Guest(built_guest(), payload.make_payload(RESULTS / "payload"), RESULTS)
        self.user, self.root = self.guest.user, self.guest.root
        self.programs = []
        self._automounter = None

    def prepare(self):
        """Once a boot."""
        guest_program.prepare(self.guest)

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
        program.screenshot(self.pictures / f"{name}.png", window)

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
        self.root.run("rm -rf /run/user/1000/orvanta-usbtool /run/usbtool-root/orvanta-usbtool")
        for image in self.images.iterdir():
            image.unlink()

    def close(self):
        self.guest.close()
        self.server.stop()
        shutil.rmtree(self.images, ignore_errors=True)


def play(ring, one):
    began = time.monotonic()
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
                program.screenshot(ring.pictures / f"failed-{one.name}-{program.name}.png")
            except Exception as error:
                file.write(f"{program.name}: {error}\n")


def main():
    chosen = [one for one in scenario.scenarios() if not sys.argv[1:] or
              one.name in sys.argv[1:] or one.number in sys.argv[1:]]
    if not chosen:
        sys.exit("There is no such scenario.")
    began = time.monotonic()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("ended from outside"))
    ring = Ring()
    print(f"The guest was up after {ring.guest.boot_time:.1f} s. Random moments: USBTOOL_SEED={ring.seed}.", flush=True)
    try:
        ring.prepare()
        failed = [one.name for one in chosen if not play(ring, one)]
    finally:
        ring.close()
    print(f"{len(chosen) - len(failed)} of {len(chosen)} scenarios passed in {time.monotonic() - began:.0f} s; "
          f"pictures are in {ring.pictures}.")
    if failed:
        print(f"Failed: {', '.join(failed)}; more in {RESULTS / 'failures.txt'}.")
        sys.exit(1)


if __name__ == "__main__":
    main()
