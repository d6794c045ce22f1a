"""The assistant for hard disks, with real disks: the right one is formatted, and no other is touched."""

import json

import images
from channel import GuestError
from images import MIB
from scenario import expect, expect_equal, scenario
from guest_program import PATIENCE

SIZE = 3072 * MIB
FIRST = 2560 * MIB  # of two partitions
FIRST_START = MIB
FIRST_LABEL = "ERSTE"
QUESTION_TITLE = "Wollen Sie formatieren ?"
DONE = "Formatierung abgeschlossen."
CLUSTER = 32 * 1024
LABEL = "ALTEDATEN"  # of a disk that has been in use; it keeps it

# What a desktop asks its administrator for. Nobody sits here to type the password.
ALLOWED = b"""polkit.addRule(function(action, subject) {
  if (action.id == "org.freedesktop.udisks2.open-device" && subject.active && subject.isInGroup("sudo")) return "yes";
});
"""
RULE = "/etc/polkit-1/rules.d/10-nobody-types.rules"
# As udev does while it is at work on a disk: it does not see that one that was written to is closed.
UNSEEN = b'SUBSYSTEM=="block", OPTIONS+="nowatch"\n'
UNSEEN_RULE = "/run/udev/rules.d/99-unseen.rules"
# As when a disk is slow: it is known itself for more than one look of the assistant before its partitions are.
LATE = b'SUBSYSTEM=="block", ENV{DEVTYPE}=="partition", PROGRAM="/bin/sleep 10"\n'
LATE_RULE = "/run/udev/rules.d/99-late.rules"

# The formatter by hand: with a table of drives of its own, and an answer that comes when the test wants.
BY_HAND = b"""umask 077
folder=$XDG_RUNTIME_DIR/orvanta-usbtool/$$
mkdir -p "$folder"
ln -s "$folder" "$XDG_RUNTIME_DIR/by-hand"
ln -s "$1" "$folder/e:"
ln -s "$2" "$folder/e:.disk"
mkfifo "$XDG_RUNTIME_DIR/answer"
/srv/program/fat32format.exe -c64 E: <> "$XDG_RUNTIME_DIR/answer"
echo "status $?"
rm -r "$folder" "$XDG_RUNTIME_DIR/by-hand" "$XDG_RUNTIME_DIR/answer"
"""
QUESTION = "Format drive E: (y/n)?"


def fat_disk(path):
    return images.fat(path, LABEL, size=SIZE, files={"ALT.TXT": b"old"}, partitioned=True)


def blank_disk(path):
    return images.blank(path, SIZE)


def divided_disk(path):
    """Two partitions. The last one is found that is there at the moment the assistant looks; the other one is to be
    left alone."""
    images.blank(path, 2 * SIZE)
    images.divide(path, [f"start={FIRST_START // 512}, size={FIRST // 512}, type=c", "type=83"])
    images.run("mkfs.fat", "-F", 32, "-n", FIRST_LABEL, f"--offset={FIRST_START // 512}", path, FIRST // 1024)
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
    expect_mountable(ring, device if device[-1].isdigit() else f"{device}1")
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


def expect_mountable(ring, partition):
    """By the guest's kernel; the system may mount it meanwhile, too, but it is the same empty folder."""
    ring.wait(lambda: ring.root.succeeds(f"test -b {partition}"), f"the device {partition}")
    listing = ring.root.run(f"mount -t vfat -o ro {partition} /mnt && ls -A /mnt && umount /mnt")
    expect_equal(listing.strip(), "", f"what the kernel finds on {partition}")


def partition_fingerprints(path):
    return [images.fingerprint(path, start, start + size) for start, size, _ in partitions(path)]


def expect_formatted(ring, image, start, size, label=None):
    part = ring.image("part")
    images.run("dd", f"if={image}", f"of={part}", "bs=1M", f"skip={start // MIB}", f"count={size // MIB + 1}",
               "conv=sparse", "status=none")
    with open(part, "rb") as file:
        boot = file.read(512)
    expect_equal(boot[82:90], b"FAT32   ", "kind of file system in the boot sector")
    expect_equal(int.from_bytes(boot[28:32], "little"), start // images.SECTOR, "sectors in front of it")
    expect_equal(images.cluster_size(part), CLUSTER, "bytes a cluster")
    expect_equal(images.label(part), label and label.ljust(11).encode(), "label")
    expect_equal(images.check(part), "", "fsck.fat")
    expect_equal(images.files(part), {}, "files on the formatted disk")


def assistant(ring, agent, make, number=1):
    image, letter, (start, size, _) = format_disk(ring, agent, make, number)
    kept = {fat_disk: LABEL, divided_disk: FIRST_LABEL if start == FIRST_START else None}
    expect_formatted(ring, image, start, size, kept.get(make))
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
    ring.root.run(f"mkdir -p {UNSEEN_RULE.rsplit('/', 1)[0]}")
    ring.root.write(UNSEEN_RULE, UNSEEN)
    ring.root.run("udevadm control --reload")
    ring.start_automounter()
    try:
        return assistant(ring, ring.user, blank_disk)
    finally:
        ring.root.run(f"rm {RULE} {UNSEEN_RULE} && udevadm control --reload")


@scenario("13d", "assistant: a disk that is known before its partition is, root")
def partition_that_comes_late(ring):
    ring.root.run(f"mkdir -p {LATE_RULE.rsplit('/', 1)[0]}")
    ring.root.write(LATE_RULE, LATE)
    ring.root.run("udevadm control --reload")
    try:
        image = fat_disk(ring.image("disk"))
        program = ring.loaded_program(ring.root)
        open_assistant(program)
        name, disk = plug_disk(ring, image)
        program.wait_for("Label3", "text", "Schritt 3:", window="Form1")
        shown = program.text("lblDisk", "Form1")
        found = [device for device in program.letters().values() if device.startswith(f"/dev/{disk}")]
        expect_equal(found, [f"/dev/{disk}1"], "devices of it that have a letter")
        expect(LABEL in shown, f"not the partition, which has a label: {shown}")
        program.click("Command1", "Form1")
        program.wait_message(title=QUESTION_TITLE)
        program.answer("Abbrechen")
        program.end()
        ring.unmount_all()
        ring.guest.pull(name)
    finally:
        ring.root.run(f"rm {LATE_RULE} && udevadm control --reload")
    return "found once its partition is known, and asked about at once"


@scenario("13e", "assistant: the disk exchanged for a copy of it, before and behind the question, root")
def exchanged_in_the_assistant(ring):
    for asked in (False, True):
        first = fat_disk(ring.image("first"))
        second = images.copy(first, ring.image("second"))
        before = [images.fingerprint(image) for image in (first, second)]
        program = ring.loaded_program(ring.root)
        open_assistant(program)
        name, _ = plug_disk(ring, first, serial="COPIED")
        program.wait_for("Label3", "text", "Schritt 3:", window="Form1")
        if asked:
            program.click("Command1", "Form1")
            program.wait_message(title=QUESTION_TITLE)
        program.watch("Command1", "enabled", False, window="Form1")
        ring.guest.pull(name)
        name, _ = plug_disk(ring, second, serial="COPIED")
        if asked:
            program.answer("OK")
        # WEITER is switched off in the second step, which may end at once: the copy is a disk that has come, it is
        # found, and asked about like any other.
        program.wait_watched()
        program.wait_for("Label3", "text", "Schritt 3:", window="Form1")
        expect_equal(len(program.windows()), 2, "windows: the main one and the assistant")
        program.end()
        ring.unmount_all()
        ring.guest.pull(name)
        expect_equal([images.fingerprint(image) for image in (first, second)], before, "images of the disks")
    return "back in the second step both times, nothing formatted; both disks byte-identical"


class ByHand:
    """A run of the formatter without the program, with a table of drives that the test writes."""

    def __init__(self, ring, agent, disk, path=""):
        self._ring, self._agent = ring, agent
        self._runtime = "/run/usbtool-root" if agent is ring.root else "/run/user/1000"
        self._output = f"{self._runtime}/formatter"
        agent.run(f"rm -f {self._output}")
        agent.write(f"{self._runtime}/by-hand.sh", BY_HAND)
        environment = {"XDG_RUNTIME_DIR": self._runtime,
                       "PATH": f"{path}:/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin"}
        agent.request("start", command=["sh", f"{self._runtime}/by-hand.sh", f"/dev/{disk}", identity(ring, disk)],
                      environment=environment, output=self._output)

    def output(self):
        return self._agent.run(f"cat {self._output}")

    def wait_for_question(self):
        self._ring.wait(lambda: QUESTION in self.output() or "status" in self.output(), "the question")
        expect(QUESTION in self.output(), f"no question: {self.output()}")

    def pass_letter_on(self, disk):
        """As the program does when another disk gets the letter."""
        folder = f"{self._runtime}/by-hand"
        for name, target in (("e:.disk", identity(self._ring, disk)), ("e:", f"/dev/{disk}")):
            self._agent.run(f"ln -sfn '{target}' {folder}/{name}")

    def answer(self):
        self._agent.run(f"echo y > {self._runtime}/answer")

    def result(self):
        """The status, and all that it wrote."""
        self._ring.wait(lambda: "\nstatus " in self.output(), "the end of the formatter", timeout=PATIENCE)
        output, status = self.output().rsplit("\nstatus ", 1)
        return int(status), output


def identity(ring, disk):
    """As the desktop's disk service tells it."""
    serial = drive_property(ring, disk, "Serial").strip('"')
    facts = f"/sys/class/block/{disk.rstrip('0123456789')}"
    sequence, sectors = ring.user.run(f"cat {facts}/diskseq {facts}/size").split()
    return f"sequence={sequence},size={int(sectors) * 512},serial={serial}"


def drive_property(ring, disk, name):
    """Of the drive that a block device is on."""
    ask = "busctl get-property org.freedesktop.UDisks2"
    block = f"/org/freedesktop/UDisks2/block_devices/{disk}"
    drive = ring.user.run(f"{ask} {block} org.freedesktop.UDisks2.Block Drive").split('"')[1]
    return ring.user.run(f"{ask} {drive} org.freedesktop.UDisks2.Drive {name}").split(" ", 1)[1].strip()


def plug_disk(ring, image, **arguments):
    """A fixed disk; its name for pull(), and the kernel's one, once UDisks2 knows it. That name may have been another
    one's until a moment ago."""
    before, since = disks(ring), int(ring.user.run("date +%s%6N"))
    name = ring.guest.plug(image, removable=False, **arguments)
    ring.wait(lambda: disks(ring).keys() - before.keys(), "the new disk")
    after = disks(ring)
    disk = after[(after.keys() - before.keys()).pop()]
    ring.wait(lambda: detected(ring, disk) >= since, f"{disk} known to UDisks2")
    return name, disk


def disks(ring):
    """{sequence number: name} of USB disks. A number is given once."""
    lines = ring.user.run("grep -H . /sys/block/sd*/diskseq || true").splitlines()
    return {line.split(":")[1]: line.split("/")[3] for line in lines}


def detected(ring, disk):
    """When UDisks2 first saw the drive, in microseconds of the guest's clock; 0 when it knows none."""
    try:
        return int(drive_property(ring, disk, "TimeDetected"))
    except GuestError:
        return 0


@scenario("13x", "formatter: a disk exchanged between the question and the answer, user and root")
def exchanged_disk(ring):
    ring.root.write(RULE, ALLOWED)
    try:
        for agent in (ring.user, ring.root):
            first, second = (blank_disk(ring.image(name)) for name in ("first", "second"))
            before = [images.fingerprint(image) for image in (first, second)]
            name, disk = plug_disk(ring, first, serial="SAME")
            formatter = ByHand(ring, agent, disk)
            formatter.wait_for_question()
            ring.guest.pull(name)
            name, disk = plug_disk(ring, second, serial="SAME")
            formatter.pass_letter_on(disk)
            formatter.answer()
            status, output = formatter.result()
            ring.guest.pull(name)
            expect_equal([images.fingerprint(image) for image in (first, second)], before, "images of the disks")
            expect_equal(status, 13, f"status of the formatter, which said {output}")
    finally:
        ring.root.run(f"rm {RULE}")
    return "refused, both disks byte-identical"


@scenario("13n", "formatter: a disk that is mounted where the user cannot see it")
def disk_mounted_elsewhere(ring):
    ring.root.write(RULE, ALLOWED)
    image = fat_disk(ring.image("disk"))
    before = images.fingerprint(image)
    name, disk = plug_disk(ring, image)
    ring.wait(lambda: f"{disk}1" in ring.user.run("ls /dev"), "its partition")
    mounter = ring.root.request("start", command=[
        "unshare", "--mount", "--propagation", "private", "sh", "-c",
        f"mount -o ro /dev/{disk}1 /mnt && echo mounted && exec sleep 600"], output="/run/mounter")["process"]
    try:
        ring.wait(lambda: "mounted" in ring.root.run("cat /run/mounter"), "the mount")
        for agent in (ring.user, ring.root):
            status, output = ByHand(ring, agent, f"{disk}1").result()
            expect_equal(status, 11, f"status of the formatter, which said {output}")
            expect(QUESTION not in output, f"it has asked: {output}")
    finally:
        ring.root.request("kill", process=mounter)
        ring.root.request("status", process=mounter, timeout=PATIENCE)
        ring.root.run(f"rm -f {RULE} /run/mounter")
    ring.guest.pull(name)
    expect_equal(images.fingerprint(image), before, "image of the disk")
    return "refused, the disk byte-identical"


@scenario("13m", "formatter: a disk that the user has mounted, user who is asked by polkit")
def disk_mounted_by_the_user(ring):
    ring.root.write(RULE, ALLOWED)
    try:
        image = fat_disk(ring.image("disk"))
        name, disk = plug_disk(ring, image)
        ring.wait(lambda: ring.user.succeeds(f"udisksctl info -b /dev/{disk}1"), "its partition known to UDisks2")
        ring.user.run(f"udisksctl mount --no-user-interaction -b /dev/{disk}1")
        formatter = ByHand(ring, ring.user, f"{disk}1")
        formatter.wait_for_question()
        place = ring.mounts()[f"/dev/{disk}1"]
        for wanted in (f"in use at {place} and will be unmounted", f"\n  Label:  {LABEL}\n"):
            expect(wanted in formatter.output(), f"what it says: {formatter.output()}")
        formatter.answer()
        status, output = formatter.result()
        expect_equal((status, output.endswith("Done")), (0, True), f"end of the formatter, which said {output}")
        ring.guest.pull(name)
    finally:
        ring.root.run(f"rm -f {RULE}")
    [(start, size, _)] = partitions(image)
    expect_formatted(ring, image, start, size, LABEL)
    return "unmounted and formatted through UDisks2"


@scenario("13r", "formatter: a user whom polkit refuses")
def refused_authorisation(ring):
    image = blank_disk(ring.image("disk"))
    before = images.fingerprint(image)
    name, disk = plug_disk(ring, image)
    status, output = ByHand(ring, ring.user, disk).result()
    expect_equal(status, 9, f"status of the formatter, which said {output}")
    expect(QUESTION not in output, f"it has asked: {output}")
    ring.guest.pull(name)
    expect_equal(images.fingerprint(image), before, "image of the disk")
    return "refused, the disk byte-identical"


@scenario("13p", "formatter: a user's own mkfs.fat on the path, user who is asked by polkit")
def planted_tools(ring):
    ring.root.write(RULE, ALLOWED)
    try:
        ring.user.run("mkdir -p /home/stick/.local/bin")
        for tool in ("mkfs.fat", "sfdisk", "umount", "pkexec"):
            ring.user.write(f"/home/stick/.local/bin/{tool}", b"#!/bin/sh\ntouch /tmp/planted\n", 0o755)
        image = blank_disk(ring.image("disk"))
        name, disk = plug_disk(ring, image)
        formatter = ByHand(ring, ring.user, disk, "/home/stick/.local/bin")
        formatter.wait_for_question()
        formatter.answer()
        status, output = formatter.result()
        expect(not ring.user.succeeds("test -e /tmp/planted"), "a planted tool has been run")
        expect_equal((status, output.endswith("Done")), (0, True), f"end of the formatter, which said {output}")
        ring.wait(lambda: f"{disk}1" in ring.user.run("ls /dev"), "the new partition")
        ring.guest.pull(name)
    finally:
        ring.root.run(f"rm -rf {RULE} /tmp/planted /home/stick/.local")
    [(start, size, _)] = partitions(image)
    expect_formatted(ring, image, start, size)
    return "formatted through UDisks2, nothing of the user's run as root"
