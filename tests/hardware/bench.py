"""Figures of the program on USB sticks, against what the guest's own tools do there: the rows of `run --bench`.

Each is a line of the table that README.md shows. Nothing here fails because a machine is slow; a missed goal is shown
as such.
"""

import os
import shlex
import shutil
import sys
import threading
import time
from pathlib import Path

from guest_program import BIN, CONFIRMATION, SUCCESS
from images import MIB
from scenario import expect, expect_equal
from scenarios_detection import offset_of_clocks
from scenarios_job import expect_files
from server import FIRMWARE_NAME, SETTINGS_NAME, at_rate

sys.path.append(str(Path(__file__).resolve().parent.parent / "bench"))

from measure import PAIRS, medians, table_row  # noqa: E402

PATIENCE = 300  # seconds a job may take
WRITE_RATE = 10_000_000  # bytes a second that the stick writes
SERVER_RATE = 20_000_000
ORIGINALS = "/dev/shm/originals"
COPIED = ("autorun.inf", "orvantastick.ico")
NAMES = (FIRMWARE_NAME, SETTINGS_NAME, *COPIED)


# The whole job


class JobBench:
    """A program and a stick that the desktop has mounted, so that nobody unmounts it; the tools use the same folder."""

    def __init__(self, ring):
        self.ring = ring
        self.image = ring.stick("stick", "ORVANTA")
        self.plugged = ring.guest.plug(self.image, write_rate=WRITE_RATE)
        ring.wait_known()
        ring.user.run("udisksctl mount --no-user-interaction -b /dev/disk/by-label/ORVANTA")
        self.stick, = ring.mounts().values()
        self.program = ring.loaded_program()
        self.program.wait_stick("ORVANTA")
        ring.root.write(f"{BIN}/curl", Path(shutil.which("curl")).read_bytes(), 0o755)
        self.contents = {FIRMWARE_NAME: os.urandom(64 * MIB), SETTINGS_NAME: os.urandom(MIB)}
        self._offer()

    def _offer(self):
        """The files are in the guest, too, to be compared with, before they are served at their rate."""
        self.ring.user.run(f"mkdir -p {ORIGINALS}")
        for name in COPIED:
            self.ring.user.run(f"cp {self.program.folder}/{name} {ORIGINALS}/{name}")
            self.contents[name] = self.ring.user.read(f"{ORIGINALS}/{name}")
        for name in (FIRMWARE_NAME, SETTINGS_NAME):
            self.ring.server.set(name + ".txt", self.contents[name])
            self._do([self._curl(f"{ORIGINALS}/{name}", name)])
            self.ring.server.set(name + ".txt", at_rate(self.contents[name], SERVER_RATE))

    def _curl(self, target, name):
        return [f"{BIN}/curl", "-s", "-o", target, self.ring.server.address(name + ".txt")]

    def _do(self, commands):
        """One after the other, in the guest; seconds that all took."""
        script = "set -e\n" + "\n".join(map(shlex.join, commands))
        reply = self.ring.user.request("run", patience=PATIENCE, timeout=PATIENCE, command=script)
        expect_equal(reply["status"], 0, f"status of the commands ({reply['errors']})")
        return reply["seconds"]

    def _on_stick(self, name):
        return f"{self.stick}/{name}"

    def fresh(self):
        """The stick without the files, and nothing on its way to it."""
        self._do([["rm", "-f", *map(self._on_stick, NAMES)], ["sync", "-f", self.stick]])

    def ours(self):
        self.fresh()
        self.program.click("cmdChoose", "frmMain")
        self.program.wait_message(title=CONFIRMATION)
        seconds = self.ring.user.request("box_after_answer", patience=PATIENCE, timeout=PATIENCE, button="OK",
                                         path=self.program.driver, title=SUCCESS)["seconds"]
        self.program.answer()
        self.program.wait_until(lambda: self.program.message() is None, what="the end of the job")
        self._do([self._compare(name) for name in NAMES])
        return seconds

    def _compare(self, name):
        return ["cmp", self._on_stick(name), f"{ORIGINALS}/{name}"]

    def theirs(self):
        self.fresh()
        commands = [self._curl(self._on_stick(name), name) for name in (FIRMWARE_NAME, SETTINGS_NAME)]
        commands += [["cp", f"{self.program.folder}/{name}", self._on_stick(name)] for name in COPIED]
        commands.append(["sync", "-f", self.stick])
        for name in NAMES:
            commands.append(["dd", f"if={self._on_stick(name)}", "iflag=nocache", "count=0", "status=none"])
            commands.append(self._compare(name))
        return self._do(commands)

    def end(self):
        """Ends with a look from outside at what is on the stick."""
        self.fresh()
        self.ours()
        self.program.end()
        self.ring.unmount_all()
        self.ring.guest.pull(self.plugged)
        expect_files(self.image, self.contents)
        self.ring.user.run(f"rm -rf {ORIGINALS}")


def whole_job(ring):
    bench = JobBench(ring)
    bench.theirs()  # the first use of a tool reads it from the disk
    ratio, ours, theirs = medians([(bench.ours(), bench.theirs()) for _ in range(PAIRS)])
    bench.end()
    return table_row("whole job, 64 MB firmware, 1 MB list, read back, FAT32 stick in the hardware ring's guest that "
                     f"writes {WRITE_RATE // 10**6} MB/s, server at {SERVER_RATE // 10**6} MB/s ({PAIRS} pairs)",
                     "`curl -o` twice + `cp` twice + `sync -f` + `cmp` of all four past the cache, in the guest", "≤ 1.02",
                     f"{ratio:.3f} ({ours:.2f} s / {theirs:.2f} s)", ratio <= 1.02)


# A stick is shown


def plug(ring, program, image):
    """Plugs a stick and pulls it again; seconds since the kernel announced it until the window showed it, and until
    UDisks2 told of its file system."""
    since = time.monotonic() - offset_of_clocks(ring) - 0.2  # the clocks were compared, not set
    answer = {}
    watcher = threading.Thread(target=lambda: answer.update(ring.root.request(
        "shown", path=program.driver, name="txtDT_Cap", key="text", value="STICK ONE", timeout=60)))
    watcher.start()
    name = ring.guest.plug(image)
    watcher.join()
    expect(answer.get("time"), f"not shown: {answer}")
    kernel = next(event for event in ring.root.request("announced", since=since)["events"]
                  if (event["by"], event["action"]) == ("kernel", "add"))
    told = next(event["time"] for event in ring.root.request("file_systems", since=since)["events"]
                if event["device"] == kernel["device"])
    ring.guest.pull(name)
    program.wait_no_stick()
    return answer["time"] - kernel["time"], told - kernel["time"]


def stick_shown(ring):
    image = ring.stick("stick", "STICK ONE")
    program = ring.loaded_program()
    ring.root.request("listen_to_udisks")
    plug(ring, program, image)  # the first one loads drivers
    ratio, ours, theirs = medians([plug(ring, program, image) for _ in range(PAIRS)])
    program.end()
    return table_row(f"stick shown in the hardware ring's guest, since its kernel announced the volume ({PAIRS} plugs)",
                     "UDisks2's own `InterfacesAdded` for the block device with its file system, since the same moment",
                     "≤ 1.3", f"{ratio:.2f} ({ours:.2f} s / {theirs:.2f} s)", ratio <= 1.3)


ROWS = (stick_shown, whole_job)
