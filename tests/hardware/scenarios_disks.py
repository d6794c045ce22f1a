"""The assistant for hard disks, with real disks: the right one is formatted, and no other is touched."""

import json

import images
from images import MIB
from scenario import expect, expect_equal, scenario
from guest_program import PATIENCE

SIZE = 3072 * MIB
FIRST = 2560 * MIB  # of two partitions
QUESTION_TITLE = "Wollen Sie formatieren ?"
DONE = "Formatierung abgeschlossen."
CLUSTER = 32 * 1024

# What a desktop asks its administrator for. Nobody sits here to type the password.
ALLOWED = b"""polkit.addRule(function(action, subject) {
  if (action.id == "org.freedesktop.policykit.exec" && subject.active && subject.isInGroup("sudo")) return "yes";
});
"""
RULE = "/etc/polkit-1/rules.d/10-nobody-types.rules"


def fat_disk(path):
    return images.fat(path, "ALTEDATEN", size=SIZE, files={"ALT.TXT": b"old"}, partitioned=True)


def blank_disk(path):
    return images.blank(path, SIZE)


def divided_disk(path):
    """Two partitions. The last one is found that is there at the moment the assistant looks; the other one is to be
    left alone."""
    images.blank(path, 2 * SIZE)
    images.divide(path, [f"start=2048, size={FIRST // 512}, type=c", "type=83"])
    images.run("mkfs.fat", "-F", 32, "-n", "ERSTE", "--offset=2048", path, FIRST // 1024)
    images.put(path, {"BLEIBT.TXT": b"stays"}, partitioned=True)
    return path


def partitions(path):
    table = json.loads(images.run("sfdisk", "-J", path))["partitiontable"]
    return [(part["start"] * 512, part["size"] * 512, part["type"]) for part in table["partitions"]]


def open_assistant(program):
    program.click("cmdtest", "frmMain")
    program.wait_window("Form1")
    program.click("Command1", "Form1")
    program.wait_for("Label3", "text", "Schritt 2:", window="Form1")


def format_found_disk(program):
    """From the third step to the end; the letter that was found, and the device it stands for."""
    program.wait_for("Label3", "text", "Schritt 3:", window="Form1")
    letter = program.text("Label2", "Form1").rsplit(" ", 1)[1]
    device = program.letters()[letter[0]]
    program.click("Command1", "Form1")
    box = program.wait_message(title=QUESTION_TITLE)
    expect(f"die Festplatte {letter} formatieren?" in box["text"], f"the question is about another disk: {box}")
    program.answer()
    box = program.wait_message(timeout=PATIENCE)
    expect_equal(box["text"], DONE, "result")
    program.answer()
    return letter, device


def format_disk(ring, agent, make, number):
    """Formats one new disk among others; returns its image, its letter and the partition that was formatted."""
    others = [ring.stick("stick", "STICK", files={"DATA.BIN": b"stick"}), fat_disk(ring.image("disk"))]
    before = [images.fingerprint(image) for image in others]
    ring.guest.plug(others[0])
    ring.guest.plug(others[1], removable=False)
    ring.wait_known(2)
    program = ring.loaded_program(agent)
    open_assistant(program)
    new = make(ring.image("new"))
    old = partition_fingerprints(new) if number > 1 else None
    name = ring.guest.plug(new, removable=False)
    letter, device = format_found_disk(program)
    ring.picture(program, f"formatted-{make.__name__}")
    program.end()
    ring.stop_automounter()
    ring.unmount_all()  # what it has mounted; the mark of a mounted file system is no change of the program's
    ring.guest.pull(name)
    expect_equal([images.fingerprint(image) for image in others], before, "images of the other disks")
    found = partitions(new)
    expect_equal(len(found), number, f"partitions {found}")
    index = int(device[-1]) - 1 if device[-1].isdigit() else 0  # a blank disk gets one partition
    if old is not None:
        new_ones = partition_fingerprints(new)
        changed = [i for i, (before, after) in enumerate(zip(old, new_ones)) if before != after]
        expect_equal(changed, [index], f"partitions that changed when {device} was formatted")
    return new, letter, found[index]


def partition_fingerprints(path):
    return [images.fingerprint(path, start, start + size) for start, size, _ in partitions(path)]


def expect_formatted(ring, image, start, size):
    part = ring.image("part")
    images.run("dd", f"if={image}", f"of={part}", "bs=1M", f"skip={start // MIB}", f"count={size // MIB + 1}",
               "conv=sparse", "status=none")
    with open(part, "rb") as file:
        boot = file.read(512)
    expect_equal(boot[82:90], b"FAT32   ", "kind of file system in the boot sector")
    expect_equal(images.cluster_size(part), CLUSTER, "bytes a cluster")
    expect_equal(images.check(part), "", "fsck.fat")
    expect_equal(images.files(part), {}, "files on the formatted disk")


def assistant(ring, agent, make, number=1):
    image, letter, (start, size, _) = format_disk(ring, agent, make, number)
    expect_formatted(ring, image, start, size)
    return f"drive {letter} formatted, 32 KB a cluster; the other disks byte-identical"


@scenario("13", "assistant: a disk with FAT32, root")
def fat_disk_as_root(ring):
    return assistant(ring, ring.root, fat_disk)


@scenario("13b", "assistant: a blank disk, root")
def blank_disk_as_root(ring):
    return assistant(ring, ring.root, blank_disk)


@scenario("13c", "assistant: a disk with two partitions, root")
def divided_disk_as_root(ring):
    return assistant(ring, ring.root, divided_disk, 2)


@scenario("13u", "assistant: a blank disk beside an automounter, user who is asked by polkit")
def blank_disk_as_user(ring):
    ring.root.write(RULE, ALLOWED)
    ring.start_automounter()
    try:
        return assistant(ring, ring.user, blank_disk)
    finally:
        ring.root.run(f"rm {RULE}")
