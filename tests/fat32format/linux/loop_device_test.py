"""The companion program on loop devices: python3 loop_device_test.py PROGRAM. Only for root; else status 77."""

import collections
import ctypes
import fcntl
import hashlib
import os
import pathlib
import platform
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import time
import unittest

SKIPPED = 77
BLKPG, ADD, DELETE = 0x1269, 1, 2  # linux/blkpg.h
PROGRAM = None
MEBIBYTE = 1024 * 1024
SIZE = 260 * MEBIBYTE  # with clusters of 4 KiB hardly more than FAT32 has at least
TOOLS = ("losetup", "fsck.fat", "mkswap", "swapon", "unshare")
QUESTION = "Format drive E: (y/n)? "


def run(*command, **options):
    return subprocess.run([str(part) for part in command], capture_output=True, text=True, check=True, **options).stdout


def tell_partition(what, device, number, start=0, count=0):
    """The kernel has, or no longer has, a partition of a disk, in sectors; addpart and delpart are not everywhere."""
    partition = ctypes.create_string_buffer(struct.pack("=qqi132x", start * 512, count * 512, number))
    with open(device, "rb") as disk:
        fcntl.ioctl(disk, BLKPG, struct.pack("@iiiP", what, 0, len(partition), ctypes.addressof(partition)))


def pool_property(name, value):
    """A number among the properties of a ZFS pool, as XDR has it."""
    rest = struct.pack(">I", len(name)) + name.ljust(-(-len(name) // 4) * 4, b"\0") + struct.pack(">IIQ", 8, 1, value)
    return struct.pack(">II", len(rest) + 8, len(rest) + 28) + rest


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
        self.attach(SIZE)

    def attach(self, size):
        with open(self.image, "wb") as file:
            file.truncate(size)
        self.device = run("losetup", "--find", "--show", self.image).strip()
        self.addCleanup(subprocess.run, ["losetup", "--detach", self.device], capture_output=True, check=False)
        self.link(self.device)

    def link(self, target, disk=None):
        """The drive E:, and the disk that it is said to be: by default the one that it is."""
        for name, text in (("e:", target), ("e:.disk", disk or self.identity())):
            link = self.links / name
            link.unlink(missing_ok=True)
            link.symlink_to(text)

    def identity(self, serial=""):
        facts = pathlib.Path("/sys/class/block") / pathlib.Path(self.device).name
        sequence, sectors = ((facts / name).read_text().strip() for name in ("diskseq", "size"))
        return f"sequence={sequence},size={int(sectors) * 512},serial={serial}"

    def format(self, *options, drive="E:", answer="y\n"):
        return subprocess.run(
            [PROGRAM, *options, "-c8", drive], input=answer, capture_output=True, text=True, check=False,
            env={**os.environ, "XDG_RUNTIME_DIR": str(self.base)})

    def start(self):
        """Runs it up to its question."""
        process = subprocess.Popen([PROGRAM, "--any-bus", "-c8", "E:"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                   text=True, env={**os.environ, "XDG_RUNTIME_DIR": str(self.base)})
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        shown = ""
        while not shown.endswith(QUESTION):
            character = process.stdout.read(1)
            self.assertTrue(character, "no question: " + shown)
            shown += character
        return process

    def say_yes(self, process):
        output, _ = process.communicate("y\n")
        return subprocess.CompletedProcess(process.args, process.returncode, output, "")

    def put_signature(self, *pieces):
        """Marks as the tools leave them: pairs of an offset and bytes."""
        with open(self.image, "r+b") as file:
            for offset, content in pieces:
                file.seek(offset)
                file.write(content)
        run("blockdev", "--flushbufs", self.device)

    def mount_elsewhere(self, device):
        """Mounts it where only another process sees it; for reading, as the kernel writes to others by itself."""
        place = pathlib.Path(tempfile.mkdtemp(dir=self.base))
        script = f"mount -o ro {device} {place} && echo mounted && exec sleep infinity"
        process = subprocess.Popen(["unshare", "--mount", "--propagation", "private", "sh", "-c", script],
                                   stdout=subprocess.PIPE, text=True)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        self.assertEqual(process.stdout.readline(), "mounted\n")

    def fingerprint(self):
        run("blockdev", "--flushbufs", self.device)
        return hashlib.sha256(self.image.read_bytes()).hexdigest()

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
        tell_partition(ADD, self.device, 1, 2048, SIZE // 512 - 2048)
        self.addCleanup(tell_partition, DELETE, self.device, 1)
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
        self.assertEqual(struct.unpack_from("<I", boot, 32)[0], SIZE // 512 - 2048, "sectors")
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
        self.assertIn("the whole of " + self.device + ", 272.6 MB", result.stdout)
        table = self.read(0, 512)
        self.assertEqual(table[510:], b"\x55\xaa")
        self.assertEqual(table[446 + 4], 0x0C, "type")
        self.assertEqual(struct.unpack_from("<II", table, 446 + 8), (2048, SIZE // 512 - 2048))
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

    def test_help(self):
        for argument in ("--help", "-?", "/?"):
            told = subprocess.run([PROGRAM, argument], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                                  check=False)
            self.assertEqual(told.returncode, 0)
            self.assertIn("exit status", told.stdout)

    def test_letter_that_is_not_in_the_table(self):
        self.assert_refused(self.format("--any-bus", drive="F:"), 3, "There is no drive F:.")

    def test_folder(self):
        self.link(self.base)
        self.assert_refused(self.format("--any-bus"), 4, "is no disk")

    def test_system_volume(self):
        self.link("/")
        self.assert_refused(self.format("--any-bus"), 5, "The system uses")

    def test_behind_another_loop_device(self):
        other = run("losetup", "--find", "--show", self.device).strip()
        self.addCleanup(subprocess.run, ["losetup", "--detach", other], capture_output=True, check=False)
        self.assert_refused(self.format("--any-bus"), 5, "The system uses")
        run("losetup", "--detach", other)
        self.assertEqual(self.format("--any-bus").returncode, 0)

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

    def test_standard_file_that_is_closed(self):
        """The disk must not take its place: the question would be written to it, or the answer read from it."""
        for closed in range(3):
            with self.subTest(descriptor=closed):
                self.put_signature((0, b"y\n"))
                before = self.fingerprint()
                result = subprocess.run(
                    [PROGRAM, "--any-bus", "-c8", "E:"], input=b"n\n", capture_output=True, check=False,
                    preexec_fn=lambda number=closed: os.close(number),
                    env={**os.environ, "XDG_RUNTIME_DIR": str(self.base)})
                self.assertEqual(result.returncode, 8, result.stdout)
                self.assertEqual(self.fingerprint(), before)

    def test_write_protected(self):
        run("blockdev", "--setro", self.device)
        self.addCleanup(run, "blockdev", "--setrw", self.device)  # the mark outlives the image
        self.assert_refused(self.format("--any-bus"), 10, "write-protected")

    def test_whole_disk_with_partitions(self):
        self.add_partition()
        self.assert_refused(self.format("--any-bus"), 12, "has partitions")
        self.assertTrue(self.is_untouched())

    def test_identity_of_another_disk(self):
        sequence, size, _ = self.identity().split(",")
        number = int(sequence.removeprefix("sequence="))
        for disk in (f"sequence={number - 1},{size},serial=", f"{sequence},size=272630272,serial=",
                     f"{sequence},{size},serial=0815"):
            self.link(self.device, disk)
            self.assert_refused(self.format("--any-bus"), 14, "another disk than it was known for")
        self.assertTrue(self.is_untouched())

    def test_identity_that_is_missing(self):
        self.link(self.device, "sequence=1")
        self.assert_refused(self.format("--any-bus"), 14, "does not tell which disk drive E: is")
        (self.links / "e:.disk").unlink()
        self.assert_refused(self.format("--any-bus"), 14, "does not tell which disk drive E: is")
        self.assertTrue(self.is_untouched())

    def exchange_while_it_asks(self, place=None):
        """The disk is held open while it asks: its name does not pass on, and the new disk gets another one."""
        process = self.start()
        if place is not None:
            run("umount", place)
        subprocess.run(["losetup", "--detach", self.device], check=False)  # comes true when the formatter lets go
        first, device, identity = self.image, self.device, self.identity()
        before = hashlib.sha256(first.read_bytes()).hexdigest()
        self.image = self.base / "second"
        self.attach(SIZE)
        self.assertNotEqual(self.device, device)
        return process, first, before, identity

    def test_exchanged_while_it_asks(self):
        for knows, status in ((True, 13), (False, 14)):
            with self.subTest("the table of drives " + ("knows" if knows else "does not know")):
                self.image = self.base / "first"
                self.attach(SIZE)
                process, first, before, identity = self.exchange_while_it_asks()
                self.link(self.device, None if knows else identity)
                self.assert_refused(self.say_yes(process), status, "another disk")
                self.assertTrue(self.is_untouched())
                self.assertEqual(hashlib.sha256(first.read_bytes()).hexdigest(), before)

    def test_mounted_disk_exchanged_while_it_asks(self):
        run("mkfs.ext4", "-q", self.device)
        place = pathlib.Path(tempfile.mkdtemp(dir="/mnt"))
        self.addCleanup(place.rmdir)
        run("mount", self.device, place)
        process, first, before, _ = self.exchange_while_it_asks(place)
        self.assert_refused(self.say_yes(process), 13, "another disk by now")
        self.assertTrue(self.is_untouched())
        self.assertEqual(hashlib.sha256(first.read_bytes()).hexdigest(), before)

    def test_tools_of_the_user_are_not_run(self):
        """Nothing that lies on somebody's path becomes root, nor anything else."""
        tools = self.base / "bin"
        tools.mkdir()
        for name in ("mkfs.fat", "sfdisk", "umount", "pkexec", "blkid", "wipefs"):
            (tools / name).write_text(f"#!/bin/sh\ntouch {self.base}/planted\nexit 1\n", encoding="ascii")
            (tools / name).chmod(0o755)
        run("mkfs.ext4", "-q", self.device)
        place = pathlib.Path(tempfile.mkdtemp(dir="/mnt"))
        self.addCleanup(place.rmdir)
        run("mount", self.device, place)
        self.addCleanup(subprocess.run, ["umount", str(place)], capture_output=True, check=False)
        path = os.environ["PATH"]
        self.addCleanup(os.environ.__setitem__, "PATH", path)
        os.environ["PATH"] = f"{tools}:{path}"
        result = self.format("--any-bus")
        self.assertFalse((self.base / "planted").exists(), "a planted tool has been run")
        self.assertEqual(result.returncode, 0, result.stdout)

    def test_mounted_in_another_namespace(self):
        run("mkfs.ext4", "-q", self.device)
        self.mount_elsewhere(self.device)
        before = self.fingerprint()
        self.assert_refused(self.format("--any-bus"), 11, "Something else uses the disk")
        self.assertEqual(self.fingerprint(), before)

    def test_other_partition_mounted_in_another_namespace(self):
        self.image = self.base / "larger"
        self.attach(2 * SIZE)
        first = self.add_partition()
        tell_partition(DELETE, self.device, 1)
        tell_partition(ADD, self.device, 1, 2048, 100 * 2048)
        tell_partition(ADD, self.device, 2, 120 * 2048, SIZE // 512)
        self.addCleanup(tell_partition, DELETE, self.device, 2)
        run("mkfs.ext4", "-q", first)
        self.link(self.device + "p2")
        self.mount_elsewhere(first)
        before = self.fingerprint()
        self.assert_refused(self.format("--any-bus"), 11, "Something else uses the disk")
        self.assertEqual(self.fingerprint(), before)

    def test_contents_are_named_in_the_question(self):
        self.put_signature((0, b"LUKS\xba\xbe\0\1"))
        result = self.format("--any-bus", answer="n\n")
        self.assert_refused(result, 8, "\nenthält: LUKS\n")
        self.assertLess(result.stdout.index("enthält"), result.stdout.index(QUESTION))
        self.assertEqual(self.format("--any-bus").returncode, 0)
        self.assertNotIn("LUKS", self.format("--any-bus", answer="n\n").stdout)

    def test_members_of_a_set_are_left_alone(self):
        btrfs = [(65536 + 0x40, b"_BHRfS_M"), (65536 + 0x30, struct.pack("<Q", 65536)),
                 (65536 + 0x88, struct.pack("<Q", 2)), (65536 + 0x90, struct.pack("<I", 4096))]
        # Older releases of the library go by the blocks, newer ones by the list of properties.
        zfs = [(131072 + block * 1024, struct.pack("<Q", 0x00BAB10C)) for block in range(8)]
        zfs.append((16384, b"\x01\x01\0\0" + struct.pack(">II", 0, 1) + pool_property(b"state", 0) +
                    pool_property(b"txg", 4) + pool_property(b"guid", 5)))
        marks = {
            "LVM": [(512, b"LABELONE" + struct.pack("<QII", 1, 0, 32) + b"LVM2 001")],
            "RAID": [(4096, struct.pack("<II", 0xA92B4EFC, 1)), (4096 + 0x90, struct.pack("<Q", 8))],
            "btrfs": btrfs,
            "ZFS": zfs,
        }
        for name, pieces in marks.items():
            with self.subTest(name=name):
                self.attach(SIZE)
                self.put_signature(*pieces)
                before = self.fingerprint()
                result = self.format("--any-bus")
                self.assert_refused(result, 15, f"{self.device} belongs to a set of devices: {name}.")
                self.assertNotIn(QUESTION, result.stdout)
                self.assertEqual(self.fingerprint(), before)

    def test_user_whom_no_service_helps(self):
        """Nobody becomes root by another way."""
        nobody = 65534
        shower = subprocess.Popen(["sleep", "infinity"], user=nobody, group=nobody, extra_groups=[])
        self.addCleanup(shower.wait)
        self.addCleanup(shower.kill)
        self.links = self.links.rename(self.links.with_name(str(shower.pid)))
        for folder in (self.base, self.links.parent, self.links):
            os.chown(folder, nobody, nobody)
        program = self.base / "fat32format.exe"
        shutil.copy(PROGRAM, program)
        result = subprocess.run(
            [program, "--any-bus", "-c8", "E:"], input="y\n", capture_output=True, text=True, check=False, user=nobody,
            group=nobody, extra_groups=[], env={"XDG_RUNTIME_DIR": str(self.base), "PATH": os.environ["PATH"],
                                                "LC_ALL": "C.UTF-8", "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={self.base}/no-bus"})
        self.assert_refused(result, 1, "The service UDisks2 cannot be asked to open it")
        self.assertNotIn(QUESTION, result.stdout)
        self.assertTrue(self.is_untouched())

    def test_exchanged_between_the_look_and_the_opening(self):
        """As long as a password dialog may be open: whoever opens the path then gets another disk."""
        if platform.machine() != "x86_64":
            self.skipTest("the number of openat() is another one")
        self.use_small_disk()
        process = subprocess.Popen(
            ["strace", "-f", "-o", self.base / "calls", "-P", self.device, "-e", "trace=openat", "-e",
             "inject=openat:delay_enter=8000000", PROGRAM, "--any-bus", "-c1", "E:"], stdin=subprocess.PIPE,
            stdout=subprocess.PIPE, text=True, env={**os.environ, "XDG_RUNTIME_DIR": str(self.base)})
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        process.stdin.write("y\n")
        process.stdin.flush()
        self.wait_held_back(process.pid)
        run("losetup", "--detach", self.device)
        second = self.base / "second"
        with open(second, "wb") as file:
            file.truncate(40 * MEBIBYTE)
        run("losetup", self.device, second)
        if not self.stands_before_opening(process.pid):
            self.skipTest("the machine is too slow: the call went on before the disk was exchanged")
        output, _ = process.communicate()
        result = subprocess.CompletedProcess(process.args, process.returncode, output, "")
        self.assertFalse(any(second.read_bytes()), "the other disk has been written to")
        self.assert_refused(result, 13, "another disk by now")

    def wait_held_back(self, tracer):
        """Until a process that strace watches stands still before it opens the disk."""
        end = time.monotonic() + 60
        while not self.stands_before_opening(tracer):
            self.assertLess(time.monotonic(), end, "nobody opens the disk")
            time.sleep(0.02)

    def stands_before_opening(self, tracer):
        return any(self.opened_path(process) == self.device for process in self.descendants(tracer))

    def descendants(self, process):
        children = pathlib.Path(f"/proc/{process}/task/{process}/children").read_text(encoding="ascii").split()
        return [one for child in children for one in (child, *self.descendants(child))]

    def opened_path(self, process):
        """What a process that stands in openat() is about to open; else nothing."""
        openat = "257"
        try:
            call = pathlib.Path(f"/proc/{process}/syscall").read_text(encoding="ascii").split()
            if call[0] != openat:
                return ""
            with open(f"/proc/{process}/mem", "rb") as memory:
                memory.seek(int(call[2], 16))
                return memory.read(len(self.device) + 1).split(b"\0")[0].decode(errors="replace")
        except OSError:
            return ""

    def test_every_call_fails_once(self):
        """Of a disk that is free. What is called done is a good file system; what is not done is not called so."""
        self.use_small_disk()
        good = 0
        for call, number in self.calls():
            self.clear()
            result = self.format_with_fault(call, number)
            done = result.stdout.endswith("\nDone\n")
            self.assertEqual("Done" in result.stdout, done, (call, number))
            self.assertEqual(result.returncode == 0, done, (call, number, result))
            if done:
                good += 1
                self.check_volume()
        self.assertGreater(good, 0)

    def test_every_call_fails_once_on_a_mounted_disk(self):
        self.use_small_disk()
        run("mkfs.ext4", "-q", self.device)
        place = self.base / "place"
        place.mkdir()
        run("mount", "-o", "ro", self.device, place)
        self.addCleanup(run, "umount", place)
        before = self.fingerprint()
        for call, number in self.calls():
            result = self.format_with_fault(call, number)
            self.assertNotEqual(result.returncode, 0, (call, number))
            self.assertNotIn(QUESTION, result.stdout, (call, number))
            self.assertNotIn("Done", result.stdout, (call, number))
        self.assertEqual(self.fingerprint(), before)

    def use_small_disk(self):
        if not shutil.which("strace") or self.strace("-c").returncode not in (0, 14):
            self.skipTest("strace cannot be used")
        self.attach(40 * MEBIBYTE)

    def strace(self, *options):
        return subprocess.run(
            ["strace", "-o", self.base / "calls", *options, PROGRAM, "--any-bus", "-c1", "E:"], input="y\n",
            capture_output=True, text=True, check=False, env={**os.environ, "XDG_RUNTIME_DIR": str(self.base)})

    def calls(self):
        """Every call that looks at the system or changes it, of a run without a fault: its name and its number. What
        comes before the program asks for its parent is done by the loader."""
        names = ("openat,read,pread64,pwrite64,fsync,fadvise64,newfstatat,readlink,readlinkat,getdents64,ioctl,lseek,"
                 "fcntl")
        self.strace("-e", f"trace={names},getppid")
        lines = (self.base / "calls").read_text(errors="replace").splitlines()
        made = [line.split("(")[0] for line in lines if re.match(r"\w+\(", line)]
        counts, own = collections.Counter(), []
        for name in made:
            counts[name] += 1
            if "getppid" in counts and name != "getppid":
                own.append((name, counts[name]))
        self.assertGreater(len(own), 100)
        return own

    def format_with_fault(self, call, number):
        return self.strace("-e", "trace=" + call, "-e", f"inject={call}:error=EIO:when={number}")

    def clear(self):
        with open(self.device, "r+b", buffering=0) as file:
            file.write(bytes(8 * MEBIBYTE))
            os.fsync(file.fileno())

    def check_volume(self):
        volume = run("losetup", "--find", "--show", "--read-only", "--offset", MEBIBYTE, self.image).strip()
        try:
            run("fsck.fat", "-n", volume)
        finally:
            run("losetup", "--detach", volume)

    def test_disk_too_small(self):
        self.attach(MEBIBYTE)
        self.assert_refused(self.format("--any-bus"), 1, "Drive E: is too small for FAT32")
        self.attach(128 * MEBIBYTE)
        self.assert_refused(self.format("--any-bus"), 1, "too small for clusters of 8 sectors (-c8). What fits it: -c1, -c2")
        self.assertTrue(self.is_untouched())


if __name__ == "__main__":
    PROGRAM = sys.argv.pop(1)
    if not can_run():
        print("needs root, loop devices and " + ", ".join(TOOLS))
        sys.exit(SKIPPED)
    unittest.main()
