#!/usr/bin/env python3
"""The formatter for Windows under Wine, on image files: on_images_test.py PROGRAM

The program is fat32format_on_images.exe, whose stick is the image that the link e:: of a Wine prefix leads to; what
Windows' drivers would say of it stands in a text file, see stick.h. Takes dosfstools and mtools, besides Wine.
"""

import os
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

PROGRAM = Path(sys.argv.pop(1)) if len(sys.argv) > 1 else None
PREFIX = Path(os.environ["WINEPREFIX"])
WINE = Path(__file__).resolve().parents[2] / "wine" / "start"
START = 1_048_576
SIZE = 41_943_040
SECTORS = (SIZE - START) // 512
QUESTION = b"Format drive E: (y/n)? "
BITLOCKER_TO_GO = bytes.fromhex("3BD66749292ED84A8399F6A339E3D001")


def disk(mark=b"NTFS    ", place=3, kind=7):
    """A disk with one partition, which begins with a mark of its file system."""
    data = bytearray(b"\xA5" * SIZE)
    data[:512] = bytes(512)
    data[446:462] = struct.pack("<B3sB3sII", 0, b"\0\0\0", kind, b"\0\0\0", START // 512, SECTORS)
    data[510:512] = b"\x55\xAA"
    data[START:START + 512] = bytes(512)
    data[START + place:START + place + len(mark)] = mark
    return bytes(data)


OLD = disk()


class Run:
    """The formatter, started, and what it has said so far."""

    def __init__(self, folder, arguments):
        self.process = subprocess.Popen([WINE, "fat32format_on_images.exe", *arguments], cwd=folder,
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        self.said = b""

    def read_to(self, end):
        while not self.said.endswith(end):
            one = self.process.stdout.read(1)
            if not one:
                return False
            self.said += one
        return True

    def finish(self, answer):
        rest, _ = self.process.communicate(answer.encode(), timeout=60)
        return self.process.returncode, (self.said + rest).decode().replace("\r", "")


class OnImages(unittest.TestCase):
    def setUp(self):
        self.folder = Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)
        shutil.copy(PROGRAM, self.folder)
        self.image = self.folder / "image"
        self.link = PREFIX / "dosdevices/e::"
        self.plug(OLD)
        self.addCleanup(self.link.unlink, missing_ok=True)

    def plug(self, data):
        self.data = data
        self.image.write_bytes(data)
        self.link.unlink(missing_ok=True)
        self.link.symlink_to(self.image)

    def tell(self, *lines):
        (self.folder / "stick.txt").write_text("\n".join(lines))

    def log(self):
        path = self.folder / "stick.log"
        return path.read_text().splitlines() if path.exists() else []

    def steps(self):
        """What was done, each once when it was done several times in a row."""
        log = self.log()
        return [step for i, step in enumerate(log) if i == 0 or log[i - 1] != step]

    def run_formatter(self, *arguments, answer="y\n", at_question=None):
        run = Run(self.folder, arguments or ["-c1", "E:"])
        if run.read_to(QUESTION) and at_question:
            at_question()
        return run.finish(answer)

    def expect_refusal(self, status, text, *arguments, **more):
        found, output = self.run_formatter(*arguments, **more)
        self.assertEqual(found, status, output)
        self.assertIn(text, output)
        self.assertNotIn("Done", output)
        self.assertEqual(self.image.read_bytes(), self.data, "nothing has been written")
        for step in ("dismount", "settype", "announce E"):
            self.assertNotIn(step, self.log())
        return output

    def volume(self, start=START):
        path = self.folder / "volume"
        path.write_bytes(self.image.read_bytes()[start:])
        return path

    def expect_file_system(self, start=START):
        volume = self.volume(start)
        check = subprocess.run(["fsck.fat", "-n", "-v", volume], capture_output=True, text=True)
        self.assertEqual(check.returncode, 0, check.stdout)
        files = subprocess.run(["mdir", "-b", "-i", volume, "::"], capture_output=True, text=True)
        self.assertEqual(files.stdout, "", files.stderr)
        return check.stdout


class Formats(OnImages):
    def test_a_partition(self):
        status, output = self.run_formatter()
        self.assertEqual(status, 0, output)
        self.assertTrue(output.startswith("Drive E: is partition 1 of disk 2, 40.8 MB, of this disk:\n"
                                          "  Model:  ACME Mobile Disk\n  Serial: 0123456789\n  Size:   41.9 MB\n"
                                          "  Label:  ALT\n"), output)
        self.assertTrue(output.endswith("100 percent completed.\nDone\n"), output)
        check = self.expect_file_system()
        self.assertIn("2048 hidden sectors", check)
        self.assertIn(f"{SECTORS} sectors total", check)
        found, old = self.image.read_bytes(), bytearray(OLD)
        old[450] = 0x0C
        self.assertEqual(found[:START], old[:START], "nothing but the type in front of the partition")
        self.assertEqual(self.steps(), ["lock", "extended", "dismount", "write", "settype", "unlock", "announce E"])
        self.assertEqual(self.log().count("settype"), 1)
        label = subprocess.run(["mlabel", "-s", "-i", self.volume(), "::"], capture_output=True, text=True)
        self.assertIn("ALT", label.stdout)

    def test_a_type_that_is_right_is_left_alone(self):
        self.plug(disk(kind=0x0C))
        status, output = self.run_formatter()
        self.assertEqual(status, 0, output)
        self.assertNotIn("settype", self.log())
        self.expect_file_system()

    def test_gpt(self):
        for kind, settings in (("basic", 0), ("other", 1)):
            (self.folder / "stick.log").unlink(missing_ok=True)
            self.plug(OLD)
            self.tell("style=gpt", f"gpttype={kind}")
            status, output = self.run_formatter()
            self.assertEqual(status, 0, output)
            self.assertEqual(self.log().count("settype"), settings)
            self.expect_file_system()
            self.assertEqual(self.image.read_bytes()[:START], OLD[:START])

    def test_a_disk_without_partitions(self):
        self.tell("start=0", f"bytes={SIZE}", "style=raw")
        status, output = self.run_formatter()
        self.assertEqual(status, 0, output)
        self.assertIn("is the whole of disk 2, ", output)
        self.assertEqual(self.image.read_bytes()[446:462][4], 0x0C)
        self.expect_file_system()
        self.assertEqual(self.steps(), ["lock", "extended", "dismount", "write", "update", "unlock", "announce E"])

    def test_a_disk_that_is_not_on_usb_when_that_is_allowed(self):
        self.tell("bus=11")
        status, output = self.run_formatter("--any-bus", "-c1", "E:")
        self.assertEqual(status, 0, output)


class Refuses(OnImages):
    def test_by_what_the_drivers_say(self):
        for status, text, *lines in (
                (4, "Drive E: is no disk.", "drivetype=4"),
                (4, "Drive E: is no disk.", "drivetype=5"),
                (4, "Drive E: is no disk.", r"target=\??\C:\folder"),
                (4, "Drive E: has no medium.", "fail=verify 21"),
                (4, "Drive E: has no medium.", "fail=verify 1112"),
                (5, "The system uses the disk of drive E:. The disks that Windows", "systemdisk=2"),
                (5, "The system uses the disk of drive E:.", r"system=\\.\E:"),
                (5, "cannot be told: which volumes Windows uses cannot be read.", "system=unknown"),
                (6, "The option --any-bus allows it.", "bus=11"),
                (9, "The authorisation to write to the disk was refused.", "openerror=5"),
                (9, "The authorisation to write to the disk was refused.", "diskerror=5"),
                (10, "Drive E: is write-protected.", "fail=writable 19"),
                (10, "Drive E: is write-protected.", "style=gpt", "gptattributes=0x1000000000000000"),
                (11, "Please close: Writer, Explorer.", "fail=lock 5", "users=Writer,Explorer"),
                (11, "Please close all windows and programs that use drive E:.", "fail=lock 5"),
                (15, "a volume on several disks. It is not touched.", "extents=2"),
                (15, "a dynamic disk", "style=gpt", "gpttype=dynamic"),
                (15, "a dynamic disk", "dynamic=1"),
                (15, "a storage space", "bus=16")):
            with self.subTest(lines):
                self.tell(*lines)
                self.expect_refusal(status, text)

    def test_the_letter(self):
        self.expect_refusal(3, "There is no drive F:.", "-c1", "F:")

    def test_bitlocker(self):
        for mark, place in ((b"-FVE-FS-", 3), (BITLOCKER_TO_GO, 424)):
            with self.subTest(place):
                self.plug(disk(mark, place))
                self.expect_refusal(16, "Drive E: is encrypted with BitLocker.")
                self.assertNotIn("lock", self.log())

    def test_a_dynamic_disk(self):
        self.plug(disk(kind=0x42))
        self.expect_refusal(15, "a dynamic disk")

    def test_anything_but_yes(self):
        for answer in ("n\n", "Y\n", "yes\n", "\n", ""):
            with self.subTest(answer):
                self.expect_refusal(8, "Nothing has been changed.", answer=answer)
                self.assertEqual(self.steps()[-3:], ["lock", "extended", "unlock"])

    def test_the_volumes_of_windows_themselves(self):
        self.tell("system=real")
        key = r"HKLM\SYSTEM\Setup"
        delete = [WINE, "reg", "delete", key, "/v", "SystemPartition", "/f"]
        subprocess.run(delete, capture_output=True)
        self.addCleanup(subprocess.run, delete, capture_output=True)
        self.expect_refusal(5, "which volumes Windows uses cannot be read.")
        subprocess.run([WINE, "reg", "add", key, "/v", "SystemPartition", "/d", r"\Device\HarddiskVolume5", "/f"],
                       capture_output=True, check=True)
        self.expect_refusal(5, "The system uses the disk of drive E:.")


class While(OnImages):
    def expect_change(self, status, text, *lines, before=()):
        self.tell(*before)
        self.expect_refusal(status, text, at_question=lambda: self.tell(*before, *lines))

    def test_the_question_is_open(self):
        for lines in (["disk=3"], ["serial=another"], ["exchanges=1"], ["diskbytes=41942528"],
                      ["bytes=40893952"], ["model=another"], ["start=1049088"]):
            with self.subTest(lines):
                self.expect_change(13, "Drive E: is another disk by now.", *lines)

    def test_the_stick_is_pulled(self):
        self.expect_change(4, "Drive E: is no disk.", "lookerror=2")
        self.expect_change(4, "Drive E: has no medium.", "fail=verify 21")
        self.expect_change(13, "Drive E: is another disk by now.", "fail=extents 433")

    def test_the_system_takes_it(self):
        self.expect_change(5, "The system uses", "systemdisk=2")

    def test_it_is_written(self):
        """No write after one that failed makes a file system, whichever fails."""
        for failing in (1, 4, 8, 9, 10, 11, 12):
            with self.subTest(failing):
                self.plug(OLD)
                self.tell(f"failingwrite={failing}")
                status, output = self.run_formatter()
                self.assertEqual(status, 1, output)
                self.assertIn("cannot be written to.", output)
                self.assertNotIn("settype", self.log())
                if failing == 1:
                    self.assertEqual(self.image.read_bytes(), OLD)
                else:
                    check = subprocess.run(["fsck.fat", "-n", self.volume()], capture_output=True)
                    self.assertNotEqual(check.returncode, 0)

    def test_it_cannot_be_dismounted(self):
        self.tell("fail=dismount 5")
        status, output = self.run_formatter()
        self.assertEqual(status, 1, output)
        self.assertEqual(self.image.read_bytes(), OLD)

    def test_the_type_is_not_taken(self):
        self.tell("fail=settype 5")
        status, output = self.run_formatter()
        self.assertEqual(status, 1, output)
        self.assertIn("does not take the type of the new partition.", output)
        self.assertEqual(self.image.read_bytes()[:START], OLD[:START])
        self.assertNotEqual(subprocess.run(["fsck.fat", "-n", self.volume()], capture_output=True).returncode, 0)


if __name__ == "__main__":
    unittest.main()
