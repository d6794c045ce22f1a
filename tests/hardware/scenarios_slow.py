"""A stick that writes slowly: the window lives meanwhile, and its end leaves a clean stick."""

import signal
import time

from guest_program import SUCCESS
from scenario import expect, expect_equal, scenario
from scenarios_interrupted import program_with_stick
from scenarios_job import EARLIER, expect_clean, expect_files, job_files
from server import FIRMWARE

SECONDS = 8  # that the firmware alone takes
RATE = len(FIRMWARE) // SECONDS
WRITING = "Wird auf den Stick geschrieben"


def start_job(ring, image):
    program, name = program_with_stick(ring, image, write_rate=RATE)
    program.heartbeat()
    program.confirm()
    program.wait_for("prgUpdate", "text", lambda text: text.startswith(WRITING))
    return program, name


@scenario("21", f"stick that writes {RATE // 1000} kB a second: the window is painted")
def slow_stick(ring):
    image = ring.stick("stick", "ORVANTA", files=EARLIER)
    program, name = start_job(ring, image)
    began = time.monotonic()
    ring.picture(program, "writing-slowly")
    program.wait_message(title=SUCCESS)
    length = time.monotonic() - began
    paints, gap = program.heartbeat()
    expect(length > SECONDS / 2, f"the stick was not slow: {length:.1f} s")
    expect(gap < length / 2, f"{gap:.1f} s without being painted")
    program.answer()
    program.end()
    ring.guest.pull(name)
    expect_files(image, EARLIER | job_files())
    expect_clean(image)
    return f"written in {length:.1f} s, painted {paints} times, {gap:.2f} s without at the most"


@scenario("21a", "the same, ended while it is written")
def ended(ring):
    image = ring.stick("stick", "ORVANTA", files=EARLIER)
    program, name = start_job(ring, image)
    began = time.monotonic()
    ring.user.request("kill", process=program.process, how=signal.SIGTERM)
    expect_equal(program.exit_status(), 0, "exit status")
    length = time.monotonic() - began
    expect(length < SECONDS / 2, f"it took {length:.1f} s to end")
    ring.wait(lambda: ring.mounts() == {}, "the stick unmounted")
    ring.guest.pull(name)
    expect_clean(image)
    return f"ended after {length:.1f} s, nothing mounted, fsck.fat clean"
