"""The companion program on loop devices: python3 loop_device_test.py PROGRAM. Only for root; else status 77."""

import os
import pathlib
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest

SKIPPED = 77
PROGRAM = None
MEBIBYTE = 1024 * 1024
TOOLS = ("losetup", "mkfs.fat", "sfdisk", "fsck.fat", "mkswap", "swapon")


def run(*command, **options):
    return subprocess.run([str(part) for part in command], capture_output=True, text=True, check=True, **options).stdout


def can_run():
    if os.geteuid() != 0 or not all(shutil.which(tool) for tool in TOOLS):
        return False
    return subprocess.run(["losetup", "--find"], capture_output=True, check=False).returncode == 0


class LoopDevice(unittest.TestCase):
    def setUp(self):
        self.base = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.base)
        self.image = self.base / "image"
        self.links = self.base / "orvanta-usbtool" / str(os.getpid())
        self.links.parent.mkdir(mode=0o700)
        self.links.mkdir(mode=0o700)
        self.attach(256 * MEBIBYTE)

    def attach(self, size):
        with open(self.image, "wb") as file:
            file.truncate(size)
        self.device = run("losetup", "--find", "--show", self.image).strip()
        self.addCleanup(run, "losetup", "--detach", self.device)
        self.link(self.device)

    def link(self, target):
        link = self.links / "e:"
        link.unlink(missing_ok=True)
        link.symlink_to(target)

    def format(self, *options, drive="E:", answer="y\n"):
        return subprocess.run(
            [PROGRAM, *options, "-c8", drive], input=answer, capture_output=True, text=True, check=False,
            env={**os.environ, "XDG_RUNTIME_DIR": str(self.base)})

    def is_untouched(self):
        with open(self.image, "rb") as file:
            return not any(file.read(4 * MEBIBYTE))

    def assert_refused(self, result, status, text):
        self.assertEqual(result.returncode, status, result.stdout)
        self.assertIn(text, result.stdout)
        self.assertNotIn("Done", result.stdout)
        self.assertEqual(result.stderr, "")

    def add_partition(self):
        """Lets the kernel have a partition from the first mebibyte on, as if it had read it from the disk."""
        run("addpart", self.device, 1, 2048, 256 * 2048 - 2048)
        self.addCleanup(run, "delpart", self.device, 1)
        return self.device + "p1"

    def read(self, offset, count):
        with open(self.image, "rb") as file:
            file.seek(offset)
            return file.read(count)

    def check_file_system(self, hidden):
        boot = self.read(MEBIBYTE, 512)
        self.assertEqual(struct.unpack_from("<H", boot, 11)[0], 512, "bytes a sector")
        self.assertEqual(boot[13], 8, "sectors a cluster")
        self.assertEqual(struct.unpack_from("<I", boot, 28)[0], hidden, "sectors in front of it")
        self.assertEqual(struct.unpack_from("<I", boot, 32)[0], 256 * 2048 - 2048, "sectors")
        self.assertEqual(boot[82:90], b"FAT32   ")
        volume = self.base / "volume"
        with open(self.image, "rb") as source, open(volume, "wb") as target:
            source.seek(MEBIBYTE)
            shutil.copyfileobj(source, target)
        run("fsck.fat", "-n", volume)

    def test_blank_disk(self):
        result = self.format("--any-bus")
        self.assertEqual(result.returncode, 0, result.stdout)
        self.assertTrue(result.stdout.endswith("\n100 percent completed.\nDone\n"), result.stdout)
        self.assertIn("the whole of " + self.device + ", 268.4 MB", result.stdout)
        table = self.read(0, 512)
        self.assertEqual(table[510:], b"\x55\xaa")
        self.assertEqual(table[446 + 4], 0x0C, "type")
        self.assertEqual(struct.unpack_from("<II", table, 446 + 8), (2048, 256 * 2048 - 2048))
        self.assertFalse(any(table[462:510]), "no other partition")
        self.check_file_system(hidden=2048)

    def test_partition(self):
        self.link(self.add_partition())
        result = self.format("--any-bus")
        self.assertEqual(result.returncode, 0, result.stdout)
        self.assertIn("partition " + self.device + "p1", result.stdout)
        self.assertFalse(any(self.read(0, MEBIBYTE)), "what is in front of the partition is left alone")
        self.check_file_system(hidden=2048)

    def test_formatting_again(self):
        self.link(self.add_partition())
        for _ in range(2):
            self.assertEqual(self.format("--any-bus").returncode, 0)

    def test_wrong_arguments(self):
        self.assert_refused(self.format("--force"), 2, "usage:")

    def test_letter_that_is_not_in_the_table(self):
        self.assert_refused(self.format("--any-bus", drive="F:"), 3, "There is no drive F:.")

    def test_folder(self):
        self.link(self.base)
        self.assert_refused(self.format("--any-bus"), 4, "is no disk")

    def test_system_volume(self):
        self.link("/")
        self.assert_refused(self.format("--any-bus"), 5, "The system uses")

    def test_swap_space(self):
        run("mkswap", self.device)
        if subprocess.run(["swapon", self.device], capture_output=True, check=False).returncode != 0:
            self.skipTest("the kernel takes no swap space")
        self.addCleanup(run, "swapoff", self.device)
        self.assert_refused(self.format("--any-bus"), 5, "The system uses")

    def test_mounted_by_the_system(self):
        run("mkfs.ext4", "-q", self.device)
        place = self.base / "place"
        place.mkdir()
        run("mount", self.device, place)
        self.addCleanup(run, "umount", place)
        self.assert_refused(self.format("--any-bus"), 5, "The system uses")

    def test_mounted_by_the_user(self):
        run("mkfs.ext4", "-q", self.device)
        place = pathlib.Path(tempfile.mkdtemp(dir="/mnt"))
        self.addCleanup(place.rmdir)
        run("mount", self.device, place)
        self.addCleanup(subprocess.run, ["umount", str(place)], capture_output=True, check=False)
        with open(place / "file", "wb"):
            self.assert_refused(self.format("--any-bus"), 11, "Some program uses files in " + str(place))
        result = self.format("--any-bus")
        self.assertEqual(result.returncode, 0, result.stdout)
        self.assertIn("Unmounting " + str(place), result.stdout)
        self.assertFalse(os.path.ismount(place))
        self.check_file_system(hidden=2048)

    def test_other_bus(self):
        self.assert_refused(self.format(), 6, "not connected by USB")
        self.assertTrue(self.is_untouched())

    def test_declined(self):
        for answer in ("", "n\n", "Y\n", "yes\n", "\n"):
            self.assert_refused(self.format("--any-bus", answer=answer), 8, "Nothing has been changed.")
        self.assertTrue(self.is_untouched())

    def test_write_protected(self):
        run("blockdev", "--setro", self.device)
        self.addCleanup(run, "blockdev", "--setrw", self.device)  # the mark outlives the image
        self.assert_refused(self.format("--any-bus"), 10, "write-protected")

    def test_whole_disk_with_partitions(self):
        self.add_partition()
        self.assert_refused(self.format("--any-bus"), 12, "has partitions")
        self.assertTrue(self.is_untouched())

    def test_disk_too_small(self):
        self.attach(MEBIBYTE)
        self.assert_refused(self.format("--any-bus"), 1, "too small")


if __name__ == "__main__":
    PROGRAM = sys.argv.pop(1)
    if not can_run():
        print("needs root, loop devices and " + ", ".join(TOOLS))
        sys.exit(SKIPPED)
    unittest.main()
