"""The job is cut off at random moments: the stick pulled, the program killed."""

import signal
import time

import images
from guest_program import SUCCESS
from scenario import expect, expect_equal, scenario
from scenarios_job import EARLIER, differences, expect_clean, expect_files, job_files
from server import FIRMWARE, FIRMWARE_NAME, slow
from window import ProgramEnded

PULLS = 10
KILLS = 20
SLOWER = 1.5  # seconds that this download takes longer
SLOW_DOWNLOAD = slow(FIRMWARE, 50_000, SLOWER / 30)
TARGETS = ("sr200.abs", "sr200_at.sdx", "autorun.inf", "orvantastick.ico")


def job_length(ring, program):
    """Seconds from the confirmation to the success message."""
    program.confirm()
    began = time.monotonic()
    program.wait_message(title=SUCCESS)
    length = time.monotonic() - began
    program.answer()
    return length


def expect_earlier_files(image, moment):
    """The file that was being written may be anything, even one that cannot be read."""
    expect_equal(differences({name: images.read(image, name) for name in EARLIER}, EARLIER), [],
                 f"earlier files damaged after {moment:.2f} s")
    others = set(images.names(image)) - set(EARLIER) - set(TARGETS)
    expect(not others, f"files nobody asked for after {moment:.2f} s: {others}")


def after_pull(program):
    """What the program tells when the stick has gone: the number of the error, or what else it shows."""
    def told():
        try:
            box = program.message()
        except ProgramEnded:
            return "ended"
        if box is not None:
            return box["text"].splitlines()[0].split("'")[1] if "Laufzeitfehler" in box["text"] else box["title"]
        return None

    return program.wait_until(told, what="an end of the job")


@scenario("11", f"stick pulled at {PULLS} random moments of the job", long=True)
def pulls(ring):
    program, name = program_with_stick(ring, ring.stick("whole", "ORVANTA", files=EARLIER))
    length = job_length(ring, program)
    ring.guest.pull(name)
    program.wait_no_stick()
    outcomes = []
    for number in range(PULLS):
        is_slow = number % 2 == 1
        ring.server.set(FIRMWARE_NAME + ".txt", SLOW_DOWNLOAD if is_slow else FIRMWARE)
        image = ring.stick(f"stick{number}", "ORVANTA", files=EARLIER)
        if program is None:
            program, name = program_with_stick(ring, image)
        else:
            name = ring.guest.plug(image)
            program.wait_stick("ORVANTA")
        moment = ring.random.uniform(0, length + (SLOWER if is_slow else 0))
        program.confirm()
        time.sleep(moment)
        ring.guest.pull(name)
        outcomes.append(after_pull(program))
        program = end_after_pull(ring, program, outcomes[-1], image, moment)
    told = ", ".join(f"{outcome} x{outcomes.count(outcome)}" for outcome in sorted(set(outcomes)))
    return f"{told}; earlier files intact each time (the job takes {length:.1f} s)"


def program_with_stick(ring, image, **stick):
    name = ring.guest.plug(image, **stick)
    ring.wait_known()
    program = ring.loaded_program()
    program.wait_stick("ORVANTA")
    return program, name


def end_after_pull(ring, program, outcome, image, moment):
    """Judges the stick and answers the message; the program, if it runs on."""
    expect(outcome == SUCCESS or outcome.isdigit(), f"pulled after {moment:.2f} s: {outcome}")
    program.answer()
    if outcome == SUCCESS:
        expect_files(image, EARLIER | job_files())
        program.wait_no_stick()
    else:
        expect_equal(program.exit_status(), 1, f"exit status after error {outcome}")
        program.dispose()
        ring.programs.remove(program)
        program = None
    expect_earlier_files(image, moment)
    ring.wait(lambda: not ring.mounts(), "no mount that is left over")
    return program


@scenario("17", f"program killed at {KILLS} random moments of the job", long=True)
def kills(ring):
    image = ring.stick("stick", "ORVANTA", files=EARLIER)
    program, name = program_with_stick(ring, image)
    length = job_length(ring, program)
    for number in range(KILLS):
        # Another firmware each time, or there is nothing to write.
        ring.server.set(FIRMWARE_NAME + ".txt", FIRMWARE[number + 1:] + FIRMWARE[:number + 1])
        program.confirm()
        moment = ring.random.uniform(0, length)
        time.sleep(moment)
        program.kill()
        program.dispose()
        ring.programs.remove(program)
        if ring.random.random() < 0.5:  # else the next program finds it as the killed one has left it
            ring.guest.pull(name)
            expect_earlier_files(image, moment)
            program, name = program_with_stick(ring, image)
        else:
            program = ring.loaded_program()
            program.wait_stick("ORVANTA")
    ring.server.reset()
    job_length(ring, program)
    program.end()
    ring.guest.pull(name)
    expect_earlier_files(image, 0)
    wrong = differences({name: images.files(image).get(name) for name in TARGETS}, job_files())
    expect_equal(wrong, [], "files of the job after the last, whole run")
    return f"{KILLS} kills; earlier files intact, every next start showed the stick, the last job was whole"


@scenario("20", "program hung up, interrupted, terminated; a stick that it has mounted for its user")
def told_to_end(ring):
    image = ring.stick("stick", "ORVANTA", files=EARLIER)
    for number in (signal.SIGHUP, signal.SIGINT, signal.SIGTERM):
        program, name = program_with_stick(ring, image)
        expect(ring.mounts(), "nothing is mounted")
        program.click("chkAuto", "frmMain")
        ring.user.request("kill", process=program.process, how=number)
        expect_equal(program.exit_status(), 0, f"exit status after {number.name}")
        expect_equal(ring.mounts(), {}, f"mounts after {number.name}")
        settings = ring.user.read(f"{program.folder}/Settings.ini").decode()
        expect("chkAuto=0" in settings, f"settings after {number.name}: {settings!r}")
        ring.guest.pull(name)
        expect_clean(image)
    expect_files(image, EARLIER)
    return "unmounted each time, settings saved, fsck.fat clean"
