"""The whole job, on sticks as people have them: pulled at once, mounted by the desktop, write-protected, full."""

import images
from guest_program import SUCCESS, TOO_LITTLE_SPACE
from images import MIB
from payload import SHIPPED
from scenario import expect, expect_equal, scenario
from server import FIRMWARE, FIRMWARE_NAME, SETTINGS, SETTINGS_NAME

EARLIER = {"URLAUB.JPG": bytes(range(256)) * 3000, "Liste.txt": b"Milch, Brot", "leer.dat": b""}


def job_files():
    """What the job has to leave on a stick."""
    return {FIRMWARE_NAME: FIRMWARE, SETTINGS_NAME: SETTINGS,
            **{name: (SHIPPED / name).read_bytes() for name in ("autorun.inf", "orvantastick.ico")}}


def differences(found, wanted):
    """Names of the files that are missing, differ or should not be there."""
    return sorted(name for name in found.keys() | wanted.keys() if found.get(name) != wanted.get(name))


def expect_files(image, wanted, partitioned=False):
    expect_equal(differences(images.files(image, partitioned), wanted), [], "files of the stick that are wrong")


def expect_clean(image, partitioned=False):
    expect_equal(images.check(image, partitioned), "", "fsck.fat")


def expect_report(program, *numbers):
    """One report of one of these errors, then the end with status 1."""
    box = program.wait_message()
    lines = box["text"].splitlines()
    expect(any(f"Laufzeitfehler '{number}':" == lines[0] for number in numbers), f"not an error report: {box}")
    program.answer()
    expect_equal(program.exit_status(), 1, "exit status")
    return lines[0].split("'")[1]


def job_and_pull(ring, agent, who, partitioned):
    image = ring.stick("stick", "ORVANTA", files=EARLIER, partitioned=partitioned)
    name = ring.guest.plug(image)
    ring.wait_known()
    program = ring.loaded_program(agent)
    program.wait_stick("ORVANTA")
    program.confirm()
    program.wait_message(title=SUCCESS)
    ring.picture(program, f"success-{who}")
    ring.guest.pull(name)
    expect_clean(image, partitioned)
    expect_files(image, EARLIER | job_files(), partitioned)
    program.answer()
    program.wait_no_stick()
    program.end()
    return f"{len(job_files())} files identical, {len(EARLIER)} earlier ones intact, fsck.fat clean"


@scenario("6", "stick pulled while success is shown, user")
def job_as_user(ring):
    return job_and_pull(ring, ring.user, "user", partitioned=True)


@scenario("6r", "the same as root, a stick without a table")
def job_as_root(ring):
    return job_and_pull(ring, ring.root, "root", partitioned=False)


def pull_while_mounted(ring, program, name, image):
    """The stick goes while success is shown, and somebody else still has it mounted."""
    ring.guest.pull(name)
    expect_equal(images.check(image, mounted=True), "", "what fsck.fat finds besides the mark of a mounted stick")
    expect_files(image, EARLIER | job_files())
    program.answer()
    program.wait_no_stick()
    program.end()


@scenario("7", "the same with a stick that something else had mounted")
def job_on_a_mounted_stick(ring):
    image = ring.stick("stick", "ORVANTA", files=EARLIER)
    name = ring.guest.plug(image)
    ring.wait_known()
    ring.user.run("udisksctl mount --no-user-interaction -b /dev/disk/by-label/ORVANTA")
    program = ring.loaded_program()
    program.wait_stick("ORVANTA")
    program.confirm()
    program.wait_message(title=SUCCESS)
    expect(ring.mounts(), "a stick that the desktop had mounted is no longer mounted")
    pull_while_mounted(ring, program, name, image)
    return "all files identical and intact; nothing wrong but the mark that it was mounted"


@scenario("7a", "the same with an automounter")
def job_beside_an_automounter(ring):
    ring.start_automounter()
    program = ring.loaded_program()
    image = ring.stick("stick", "ORVANTA", files=EARLIER)
    name = ring.guest.plug(image)
    program.wait_stick("ORVANTA")
    program.confirm()
    program.wait_message(title=SUCCESS)
    pull_while_mounted(ring, program, name, image)
    return "all files identical and intact"


@scenario("9", "write-protected stick")
def write_protected(ring):
    image = ring.stick("stick", "SCHUTZ", files=EARLIER)
    before = images.fingerprint(image)
    ring.guest.plug(image, read_only=True)
    ring.wait_known()
    program = ring.loaded_program()
    program.wait_stick("SCHUTZ")
    program.confirm()
    number = expect_report(program, 70, 75, 57)
    expect_equal(images.fingerprint(image), before, "image")
    return f"report of error {number}; the image is byte-identical"


@scenario("10", "less than 5 MB free")
def too_little_space(ring):
    image = ring.stick("stick", "VOLL", size=64 * MIB)
    filler = bytes(free_bytes(image) - 4 * MIB)
    images.put(image, {"FILL.BIN": filler, **EARLIER})
    ring.guest.plug(image)
    ring.wait_known()
    program = ring.loaded_program()
    program.wait_stick("VOLL")
    program.click("cmdChoose")
    program.wait_message(title=TOO_LITTLE_SPACE)
    program.answer()
    program.end()
    expect_clean(image)
    expect_files(image, {"FILL.BIN": filler, **EARLIER})
    return "refused with the message; nothing written"


@scenario("10f", "stick full in the middle of a write")
def full_in_the_middle(ring):
    image = ring.stick("stick", "VOLL", size=64 * MIB)
    filler = bytes(free_bytes(image) - 8 * MIB)
    images.put(image, {"FILL.BIN": filler, **EARLIER})
    ring.server.set(FIRMWARE_NAME + ".txt", bytes(10 * MIB))
    ring.guest.plug(image)
    ring.wait_known()
    program = ring.loaded_program()
    program.wait_stick("VOLL")
    program.confirm()
    number = expect_report(program, 61)
    ring.wait(lambda: not ring.mounts(), "the stick unmounted by the program that ended")
    expect_clean(image)
    found = images.files(image)
    expect_equal(differences({name: found.get(name) for name in EARLIER}, EARLIER), [], "earlier files that changed")
    expect_equal(found["FILL.BIN"] == filler, True, "the largest earlier file")
    return f"report of error {number}; earlier files intact; fsck.fat clean"


def free_bytes(image):
    for line in images.run("mdir", "-i", image, "::/").splitlines():
        if "bytes free" in line:
            return int(line.split("bytes free")[0].replace(" ", ""))
    raise AssertionError("mdir tells no free space")


@scenario("12", "standard path saved, stick plugged again")
def standard_path(ring):
    image = ring.stick("stick", "PFAD")
    program = ring.loaded_program()
    name = ring.guest.plug(image)
    program.wait_stick("PFAD")
    program.enter_text("txtOpenPath", "Receiver\\Neu")
    program.click("cmdSaveOnStick")
    program.settle()
    ring.guest.pull(name)
    program.wait_no_stick()
    expect_equal(program.text("txtOpenPath"), "", "path without a stick")
    ring.guest.plug(image)
    program.wait_stick("PFAD")
    program.wait_for("txtOpenPath", "text", "Receiver\\Neu")
    program.end()
    expect_equal(images.files(image)["USB.ini"].split(), b"[Open]\r\nDir=Receiver\\Neu\r\n".split(), "USB.ini")
    return "read back as it was saved"
