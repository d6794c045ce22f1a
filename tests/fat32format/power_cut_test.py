"""The power goes behind each piece that the formatter writes: python3 power_cut_test.py IMAGE_FORMATTER

An image with an old file system is formatted, with a record of all that is written. Then the image is made as it is
when the disk has got a part of that: all up to some piece; of those between two flushes any others, since a disk may
write them in any order; or half of a piece. Whatever then looks like a file system has to be the old one or the new
one, byte for byte.
"""

import dataclasses
import os
import pathlib
import random
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest

os.environ["PATH"] += ":/usr/sbin:/sbin"  # not everybody has them on the path
FORMATTER = None
MEBIBYTE = 1024 * 1024
SIZE = 128 * MEBIBYTE  # with clusters of a sector each table has more than one piece
LARGE = 1024 * MEBIBYTE  # several pieces are written between two flushes
SECTOR = 512
TOOLS = ("blkid", "fsck.fat", "mkfs.fat", "mcopy")
SKIPPED = 77
CONTENT = random.Random(1).randbytes(5 * MEBIBYTE)


def status(*command, **options):
    return subprocess.run([str(part) for part in command], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                          check=False, **options).returncode


def run(*command, **options):
    subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=True, **options)


@dataclasses.dataclass
class Piece:
    offset: int
    new: bytes
    old: bytes = b""

    def __len__(self):
        return len(self.new)


def groups_of(record):
    """The pieces between two flushes, group by group."""
    groups = [[]]
    with open(record, "rb") as file:
        while line := file.readline():
            kind, *numbers = line.decode().split()
            if kind == "flush":
                groups.append([])
                continue
            offset, count = map(int, numbers)
            groups[-1].append(Piece(offset, file.read(count) if kind == "write" else bytes(count)))
    return [group for group in groups if group]


class PowerCut(unittest.TestCase):
    def setUp(self):
        folder = "/dev/shm" if shutil.disk_usage("/dev/shm").free > 1024 * MEBIBYTE else None
        self.base = pathlib.Path(tempfile.mkdtemp(dir=folder))
        self.addCleanup(shutil.rmtree, self.base)
        self.image, self.old, self.new = (self.base / name for name in ("image", "old", "new"))
        # Its mark is not in the first sector: a torn piece may leave it and take more, and then only its check says so.
        self.is_marked_late = False
        self.checks = []  # of the old kind of file system: commands, without the image

    def blank(self, size=SIZE):
        with open(self.old, "wb") as file:
            file.truncate(size)

    def fill(self):
        """So that its first clusters and its tables are in use."""
        file = self.base / "file"
        file.write_bytes(CONTENT)
        run("mcopy", "-i", self.old, file, "::/OLD.BIN", env={**os.environ, "MTOOLS_SKIP_CHECK": "1"})
        self.assertEqual(status("fsck.fat", "-n", self.old), 0)

    def make(self, tool, *options, check, size=SIZE):
        if not shutil.which(tool) or not shutil.which(check[0]):
            self.skipTest(f"{tool} or {check[0]} is missing")
        self.blank(size)
        run(tool, *options, self.old)
        self.checks.append(check)
        self.assertEqual(self.looks_right(self.old), True, "the old file system")

    # What is where the power has gone.

    def looks_right(self, image, offset=0):
        """Whether any system would take it for a file system, or a check calls it good."""
        if status("blkid", "-p", "-O", offset, "-u", "filesystem", image) == 0:
            return True
        if offset:
            with open(image, "rb") as file:
                if not any(os.pread(file.fileno(), SECTOR, offset)):
                    return False
            part = self.base / "part"
            run("dd", f"if={image}", f"of={part}", "bs=1M", f"skip={offset // MEBIBYTE}", "conv=sparse")
            return status("fsck.fat", "-n", part) == 0
        return self.is_called_good(image)

    def is_called_good(self, image):
        return any(status(*check, image) == 0 for check in [["fsck.fat", "-n"], *self.checks])

    def same(self, one, other, offset=0):
        return status("cmp", "--quiet", "-i", offset, one, other) == 0

    def expect_old_new_or_nothing(self, what, torn=False):
        """On the whole image, and where a partition begins or is to begin."""
        self.states += 1
        looks_right = self.is_called_good if torn and self.is_marked_late else self.looks_right
        if looks_right(self.image) and not self.same(self.image, self.old) and not self.same(self.image, self.new):
            self.fail(f"{what}: it looks right, and is neither the old file system nor the new one")
        if self.whole and self.looks_right(self.image, MEBIBYTE) and not self.same(self.image, self.new, MEBIBYTE):
            self.fail(f"{what}: the partition looks right, and is not the new file system")
        if self.whole and self.has_table() and not self.same(self.image, self.new):
            self.fail(f"{what}: there is a table of partitions before all of the file system is")

    def has_table(self):
        with open(self.image, "rb") as file:
            table = file.read(SECTOR)
        return table[450] == 0x0C and table[510:] == b"\x55\xaa"

    def put(self, pieces, old=False):
        for piece in pieces:
            os.pwrite(self.file.fileno(), piece.old if old else piece.new, piece.offset)

    def judge(self, *options, whole=False):
        """Formats the old image, and plays each state in between."""
        self.states, self.whole = 0, whole
        shutil.copyfile(self.old, self.new)
        record = self.base / "record"
        run(FORMATTER, self.new, f"record={record}", f"whole={int(whole)}", *(options or ("cluster=1",)))
        groups = groups_of(record)
        self.assertGreater(sum(map(len, groups)), 8, "pieces")
        run("cp", "--sparse=always", self.old, self.image)
        with open(self.image, "r+b", buffering=0) as self.file:
            for number, group in enumerate(groups):
                self.play(f"group {number} of {len(groups)}", group)
        self.assertTrue(self.same(self.image, self.new), "the record is not what has been written")
        view = self.base / "view"
        run("dd", f"if={self.image}", f"of={view}", "bs=1M", f"skip={int(whole)}", "conv=sparse")
        self.assertEqual(status("fsck.fat", "-n", view), 0, "the new file system")
        self.assertGreater(self.states, 20)

    def play(self, name, group):
        """From the state in which all of the groups before are on the disk; leaves it with this one."""
        for piece in group:  # none of them covers another
            piece.old = os.pread(self.file.fileno(), len(piece), piece.offset)
        for end in range(1, len(group) + 1):
            self.put(group[end - 1:end])
            self.expect_old_new_or_nothing(f"{name}, up to piece {end}")
        self.put(group, old=True)
        for begin in range(len(group) - 1, 0, -1):  # the last ones first
            self.put(group[begin:begin + 1])
            self.expect_old_new_or_nothing(f"{name}, from piece {begin + 1} on")
        self.put(group, old=True)
        for piece in group:
            self.tear(name, piece)
        self.put(group)

    def tear(self, name, piece):
        """One half of it, then only the other one."""
        middle = len(piece) // 2 // SECTOR * SECTOR
        if middle == 0:
            return
        halves = [Piece(piece.offset, piece.new[:middle], piece.old[:middle]),
                  Piece(piece.offset + middle, piece.new[middle:], piece.old[middle:])]
        for half in halves:
            self.put([half])
            self.expect_old_new_or_nothing(f"{name}, the half at {half.offset}", torn=True)
            self.put([half], old=True)

    # What there may be before.

    def test_fat32(self):
        self.make("mkfs.fat", "-F", "32", "-s", "1", "-n", "OLD", check=["fsck.fat", "-n"])
        self.fill()
        self.judge()

    def test_own_file_system(self):
        """The tables and the boot sectors of both lie in the same places."""
        self.blank(LARGE)
        run(FORMATTER, self.old, "cluster=1", "label=OLD")
        self.fill()
        self.judge("cluster=1", "label=NEW")

    def test_fat32_with_other_clusters(self):
        self.make("mkfs.fat", "-F", "32", "-s", "2", check=["fsck.fat", "-n"])
        self.fill()
        self.judge("cluster=1", "label=NEW")

    def test_sectors_of_4096_bytes(self):
        self.make("mkfs.fat", "-F", "32", "-S", "4096", "-s", "1", check=["fsck.fat", "-n"], size=LARGE)
        self.fill()
        self.judge("cluster=8", "sector=4096")

    def test_fat16(self):
        self.make("mkfs.fat", "-F", "16", check=["fsck.fat", "-n"])
        self.fill()
        self.judge()

    def test_exfat(self):
        self.make("mkfs.exfat", check=["fsck.exfat", "-n"])
        self.judge()

    def test_ntfs(self):
        self.make("mkfs.ntfs", "-q", "-F", "-Q", check=["ntfsinfo", "-m"])
        self.judge()

    def test_ext4(self):
        self.is_marked_late = True
        self.make("mkfs.ext4", "-q", check=["e2fsck", "-f", "-n"])
        self.judge()

    def test_disk_with_an_empty_table(self):
        self.blank()
        with open(self.old, "r+b") as file:
            file.seek(440)
            file.write(struct.pack("<I", 0x12345678) + bytes(66) + b"\x55\xaa")
        self.judge(whole=True)

    def test_disk_with_fat32_and_no_table(self):
        """Its second table lies where the partition begins."""
        self.make("mkfs.fat", "-F", "32", "-s", "8", check=["fsck.fat", "-n"], size=LARGE)
        self.fill()
        self.judge(whole=True)


if __name__ == "__main__":
    FORMATTER = sys.argv.pop(1)
    if not all(shutil.which(tool) for tool in TOOLS):
        print("needs " + ", ".join(TOOLS))
        sys.exit(SKIPPED)
    unittest.main()
