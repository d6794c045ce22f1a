"""Stick images, made and judged on this machine, never by the system that is under test."""

import hashlib
import os
import re
import struct
import subprocess
import sys
import tempfile
from pathlib import Path

MIB = 1024**2
PARTITION = MIB  # where a first partition begins
SECTOR = 512
BLOCK = 64 * 1024
MARK = 65  # byte of a FAT32 boot sector whose lowest bit says that it is mounted


def run(*command, input=None):
    done = subprocess.run([str(part) for part in command], input=input, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, check=False, env={**os.environ, "LC_ALL": "C.UTF-8"})
    if done.returncode != 0:
        raise AssertionError(f"{' '.join(map(str, command))}: status {done.returncode}\n{done.stdout}")
    return done.stdout


def blank(path, size):
    with open(path, "wb") as file:
        file.truncate(size)
    return path


def fat(path, label="", size=256 * MIB, bits=32, files=None, partitioned=False, cluster=None):
    """A stick with a FAT file system, with a partition table or without one; `files` are {name: bytes}."""
    blank(path, size)
    options = ["-F", bits, "-n", label or "NO NAME"]
    if cluster:
        options += ["-s", cluster]
    if partitioned:
        divide(path, ["type=c"])
        options += [f"--offset={PARTITION // SECTOR}", path, (size - PARTITION) // 1024]
        run("mkfs.fat", *options)
    else:
        run("mkfs.fat", "-I", *options, path)
    put(path, files or {}, partitioned)
    return path


def copy(image, path):
    """Its holes stay holes."""
    run("cp", "--sparse=always", image, path)
    return path


def divide(path, partitions, table="dos"):
    """Writes a partition table: lines as sfdisk reads them, the first partition at 1 MiB."""
    run("sfdisk", "--quiet", path, input=f"label: {table}\n" + "\n".join(partitions) + "\n")


def other(path, kind, label, size=256 * MIB):
    """A stick with another file system."""
    blank(path, size)
    commands = {"exfat": ["mkfs.exfat", "-L", label], "ntfs": ["mkntfs", "-q", "-F", "-Q", "-L", label],
                "ext4": ["mke2fs", "-q", "-t", "ext4", "-E", "root_owner=1000:1000", "-L", label]}
    run(*commands[kind], path)
    return path


def _at(path, partitioned):
    return f"{path}@@{PARTITION}" if partitioned else str(path)


def put(path, files, partitioned=False):
    for name, contents in files.items():
        with tempfile.NamedTemporaryFile() as file:
            file.write(contents)
            file.flush()
            run("mcopy", "-i", _at(path, partitioned), file.name, f"::/{name}")


def files(path, partitioned=False):
    """{name: bytes} of the root directory's files, as mtools read them."""
    with tempfile.TemporaryDirectory() as folder:
        run("mcopy", "-s", "-n", "-Q", "-i", _at(path, partitioned), "::/", folder)
        return {file.relative_to(folder).as_posix(): file.read_bytes()
                for file in Path(folder).rglob("*") if file.is_file()}


def names(path):
    """Names in the root directory."""
    return [line.strip().removeprefix("::/") for line in run("mdir", "-b", "-i", path, "::/").splitlines() if line]


def read(path, name):
    """Contents of one file; None when it is not there or cannot be read to its end."""
    with tempfile.TemporaryDirectory() as folder:
        copy = Path(folder) / "copy"
        done = subprocess.run(["mcopy", "-n", "-Q", "-i", str(path), f"::/{name}", copy], capture_output=True,
                              check=False)
        return copy.read_bytes() if done.returncode == 0 else None


def attributes(path, name):
    """Those of a file, by their letters in the order of the alphabet: "AR" for a read-only one."""
    return "".join(sorted(run("mattrib", "-i", path, f"::/{name}")[:11].replace(" ", "")))


def label(path, partitioned=False):
    """The label in the root directory as it stands there, in the bytes of code page 850; None without one."""
    with open(path, "rb") as image:
        base = PARTITION if partitioned else 0
        image.seek(base)
        boot = image.read(SECTOR)
        bytes_per_sector, cluster, reserved, copies = struct.unpack_from("<HBHB", boot, 11)
        root_entries, = struct.unpack_from("<H", boot, 17)
        size16, = struct.unpack_from("<H", boot, 22)
        size32, = struct.unpack_from("<I", boot, 36)
        start = reserved + copies * (size16 or size32)
        length = root_entries * 32 or cluster * bytes_per_sector
        image.seek(base + start * bytes_per_sector)
        directory = image.read(length)
    for place in range(0, len(directory), 32):
        entry = directory[place:place + 32]
        if entry[0] == 0:
            return None
        if entry[0] != 0xE5 and entry[11] & 0x3F == 8:
            return entry[:11]
    return None


def check(path, partitioned=False, mounted=False):
    """What fsck.fat finds wrong, as text; empty when the file system is clean and was unmounted in good order.

    With `mounted` the mark in the boot sector that says it was not is overlooked, and nothing else.
    """
    with _file_system(path, partitioned or mounted, 0 if not partitioned else PARTITION) as image:
        if mounted:
            clear_mark(image)
        done = subprocess.run(["fsck.fat", "-n", image], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                              errors="replace", check=False)
    findings = [line for line in done.stdout.splitlines()
                if not re.match(r"^fsck\.fat \d|.*: \d+ files, \d+/\d+ clusters$|^$", line)]
    return "\n".join(findings) if findings else ("" if done.returncode == 0 else f"status {done.returncode}")


def clear_mark(image):
    """The kernel's mark of a FAT32 file system that is mounted."""
    with open(image, "r+b") as file:
        file.seek(MARK)
        mark = file.read(1)[0]
        file.seek(MARK)
        file.write(bytes([mark & ~1]))


class _file_system:
    """The file system as a file of its own; fsck.fat knows no partitions."""

    def __init__(self, path, copied, start):
        self._path, self._copied, self._start = path, copied, start
        self._copy = None

    def __enter__(self):
        if not self._copied:
            return self._path
        self._copy = tempfile.NamedTemporaryFile(dir=Path(self._path).parent)
        run("dd", f"if={self._path}", f"of={self._copy.name}", "bs=1M", f"skip={self._start // MIB}", "conv=sparse",
            "status=none")
        return self._copy.name

    def __exit__(self, *_):
        if self._copy is not None:
            self._copy.close()


def fingerprint(path, start=0, end=None):
    """Of every byte of the image, or of a part of it. Zeros count by where they are not: most of it are holes."""
    digest = hashlib.sha256()
    with open(path, "rb") as file:
        size = os.fstat(file.fileno()).st_size
        end = min(end or size, size)
        digest.update(f"{start}-{end}".encode())
        place = start
        while (place := _data_from(file, place)) < end:
            place -= place % BLOCK
            block = os.pread(file.fileno(), min(BLOCK, end - place), place)
            if block != bytes(len(block)):
                digest.update(f"{place}:".encode() + block)
            place += BLOCK
    return digest.hexdigest()


def _data_from(file, place):
    try:
        return os.lseek(file.fileno(), place, os.SEEK_DATA)
    except OSError:  # nothing but a hole up to the end
        return sys.maxsize


def cluster_size(path, partitioned=False):
    with open(path, "rb") as file:
        file.seek(PARTITION if partitioned else 0)
        boot = file.read(SECTOR)
    return struct.unpack_from("<H", boot, 11)[0] * boot[13]
