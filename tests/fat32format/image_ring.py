#!/usr/bin/env python3
"""The formatter on sparse images of every size: image_ring.py [--sizes N] [--seed N] [--jobs N] [--patient]

Each file system is judged by fsck.fat, by mtools, and field by field against what mkfs.fat makes of the same disk. Some
sizes are always there: those at which FAT32 begins and ends, 2 TiB and 16 TB, with each size of clusters. The others
are random ones from 33 MB to 16 TB; the seed is shown, and gives the same ones again.

Of more than four million clusters fsck.fat sees the boot sector alone, and that everything else of the tables is zeros
is seen from the holes of the image. It reads them all with --patient, which takes ten times as long.
"""

import argparse
import concurrent.futures
import dataclasses
import os
import pathlib
import random
import shutil
import struct
import subprocess
import sys
import tempfile
import time

os.environ["PATH"] += ":/usr/sbin:/sbin"  # not everybody has them on the path
SKIPPED = 77
ROOT = pathlib.Path(__file__).resolve().parents[2]
TOOLS = ("fsck.fat", "mkfs.fat", "minfo", "mlabel", "mcopy", "prlimit")

MIB = 1024**2
GIB = 1024**3
SMALLEST, LARGEST = 33 * 10**6, 16 * 10**12  # bytes of a random disk
OPTIONS = (1, 2, 4, 8, 16, 32, 64, 128)  # N of -cN
FEWEST, MOST = 65_525, 0x0FFFFFF4  # clusters
MOST_SECTORS = 2**32 - 1
ALIGNMENT = MIB  # of a partition
# fsck.fat 4.2 counts the bits of a table in 32 bits: of more clusters it reads too little, and ends with a signal.
MOST_OF_FSCK = 2**27 - 2
MOST_AT_ONCE = 4_000_000  # clusters whose entries it reads in no time
CHEAP_TO_FILL = 2_000_000  # clusters: up to so many a file is copied in and back

LABELS = {"": "", "BACKUP": "BACKUP", "Mixed Case1": "MIXED CASE1", "ELEVENCHARS": "ELEVENCHARS",
          "too long for FAT": "", "\u00c4PFEL": "", "a.b": "", "R&D (1)": "R&D (1)"}

# name: (offset, length) in the boot sector
FIELDS = {
    "jump": (0, 3), "maker": (3, 8), "bytes a sector": (11, 2), "sectors a cluster": (13, 1), "reserved": (14, 2),
    "tables": (16, 1), "root entries": (17, 2), "sectors in 16 bits": (19, 2), "medium": (21, 1),
    "table in 16 bits": (22, 2), "sectors a track": (24, 2), "heads": (26, 2), "hidden": (28, 4), "sectors": (32, 4),
    "table": (36, 4), "flags": (40, 2), "version": (42, 2), "root": (44, 4), "information": (48, 2), "copy": (50, 2),
    "unused": (52, 12), "disk": (64, 1), "unused by others": (65, 1), "mark of the next three": (66, 1),
    "serial": (67, 4), "label": (71, 11), "kind": (82, 8), "code": (90, 420), "mark": (510, 2),
}


class Wrong(Exception):
    pass


def expect(condition, what):
    if not condition:
        raise Wrong(what)


def expect_equal(found, wanted, what):
    expect(found == wanted, f"{what}: {found!r} instead of {wanted!r}")


def run(*command, status=0):
    done = subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False,
                          env={**os.environ, "LC_ALL": "C.UTF-8", "MTOOLS_SKIP_CHECK": "1"})
    text = done.stdout.decode(errors="replace")
    expect(done.returncode == status, f"{' '.join(map(str, command))}: status {done.returncode}\n{text}")
    return text


def data_of(file, begin, end):
    """Where something has been written: pairs of offsets."""
    while begin < end:
        try:
            begin = os.lseek(file, begin, os.SEEK_DATA)
        except OSError:
            return  # nothing more
        until = min(os.lseek(file, begin, os.SEEK_HOLE), end)
        if begin < until:
            yield begin, until
        begin = until


@dataclasses.dataclass(frozen=True)
class Disk:
    """What is formatted: a partition, or a whole disk that gets one."""
    sectors: int
    sector: int  # bytes
    option: int  # N of -cN
    start: int = 2048  # sector of its disk
    label: str = ""
    serial: int = 0x1234ABCD
    whole: bool = False

    @property
    def base(self):
        return ALIGNMENT if self.whole else 0

    @property
    def hidden(self):
        return self.base // self.sector if self.whole else self.start

    @property
    def cluster(self):
        """In sectors."""
        return max(1, self.option * 512 // self.sector)

    @property
    def used(self):
        """Sectors of the file system."""
        before = self.base // self.sector
        return max(0, min(self.sectors - before, MOST_SECTORS - before))


def smallest_table(sectors, reserved, disk):
    """By its definition: the smallest number whose entries reach for all clusters behind two of them, and two more."""
    def reaches(table):
        return table * disk.sector * disk.cluster >= 4 * (sectors - reserved - 2 * table) + 8 * disk.cluster
    low, high = 0, sectors
    while low < high:
        middle = (low + high) // 2
        low, high = (low, middle) if reaches(middle) else (middle + 1, high)
    return low


def layout(disk):
    """Reserved sectors, sectors of a table, clusters; the last is 0 where there is no room at all."""
    if disk.used <= 32:
        return 32, 0, 0
    table = smallest_table(disk.used, 32, disk)
    reserved = 32 + -(32 + 2 * table) % disk.cluster
    return reserved, table, max(0, (disk.used - reserved - 2 * table) // disk.cluster)


def fits(disk):
    return FEWEST <= layout(disk)[2] <= MOST


def fitting_options(disk):
    return [option for option in OPTIONS if fits(dataclasses.replace(disk, option=option))]


def with_clusters(count, sector, option):
    """The smallest disk with so many clusters or more."""
    low, high = 33, MOST_SECTORS
    while low < high:
        middle = (low + high) // 2
        enough = layout(Disk(middle, sector, option))[2] >= count
        low, high = (low, middle) if enough else (middle + 1, high)
    return Disk(low, sector, option)


def edges():
    for sector in (512, 4096):
        for option in OPTIONS:
            if option * 512 < sector:
                continue  # the same as with one sector
            for count in (FEWEST - 1, FEWEST, FEWEST + 1):
                disk = with_clusters(count, sector, option)
                yield dataclasses.replace(disk, label="EDGE", start=2048 + option)
            # The most that FAT32 can number, where the sectors can be counted at all.
            most = with_clusters(MOST, sector, option)
            if layout(most)[2] == MOST:
                yield most
                yield with_clusters(MOST + 1, sector, option)
        for sectors in (2**32 - 2, 2**32 - 1, 2**32, 2**32 + 1):  # 2 TiB, or 16 TiB
            yield Disk(sectors, sector, 128, whole=sectors % 2 == 0, label="BACKUP")
    for sectors in (2**29 - 1, 2**29, 2**29 + 1):  # 2 TiB
        yield Disk(sectors, 4096, 64)
    yield Disk(LARGEST // 4096, 4096, 128, whole=True)
    yield Disk(LARGEST // 512, 512, 128, whole=True)
    yield Disk(100_000_000, 512, 8, start=2**33)  # a start that the boot sector cannot count


def random_disk(numbers):
    size = int(SMALLEST * (LARGEST / SMALLEST) ** numbers.random())
    sector = numbers.choice((512, 4096)) if size < 2 * 1024 * GIB else numbers.choice((512, 4096, 4096, 4096))
    disk = Disk(size // sector, sector, 1, start=numbers.choice((0, 63, 2048, numbers.randrange(2**32))),
                label=numbers.choice(list(LABELS)), serial=numbers.randrange(2**32), whole=numbers.random() < 0.2)
    options = fitting_options(disk)
    return dataclasses.replace(disk, option=numbers.choice(options or OPTIONS))


class Check:
    """One disk, formatted and judged in a folder of its own."""

    def __init__(self, arguments, folder, disk):
        self.formatter, self.is_patient = arguments.formatter, arguments.patient
        self.folder, self.disk = folder, disk
        self.image = folder / "image"
        self.reserved, self.table, self.clusters = layout(disk)
        self.label = LABELS.get(disk.label, disk.label)

    def format(self, disk, status):
        with open(self.image, "wb") as file:
            file.truncate(disk.sectors * disk.sector)
        return run(self.formatter, self.image, f"cluster={disk.option}", f"sector={disk.sector}",
                   f"start={0 if disk.whole else disk.start * disk.sector}", f"label={disk.label}",
                   f"serial={disk.serial}", f"whole={int(disk.whole)}", status=status)

    def refused(self, option):
        """With a sentence that names what fits, and nothing written."""
        text = self.format(dataclasses.replace(self.disk, option=option), status=1)
        options = ", ".join(f"-c{one}" for one in fitting_options(self.disk))
        wanted = f"(-c{option}). What fits it: {options}.\n" if options else "No size of clusters fits it.\n"
        expect(wanted in text, f"{wanted!r} is missing in {text!r}")
        expect_equal(os.stat(self.image).st_blocks, 0, "blocks that have been written")

    def made(self):
        text = self.format(self.disk, status=0)
        expect(text.endswith("\nDone\n"), text)
        expect(("  Label:  " + self.disk.label in text) == bool(self.disk.label), text)
        if self.disk.whole:
            self.judge_partition_table()
            self.cut_out_the_volume()
        parts = self.read_parts(self.image)
        self.judge_own(parts)
        self.judge_rest(parts)
        self.judge_by_mkfs(parts)
        self.judge_by_fsck()
        self.judge_by_mtools()

    def judge_partition_table(self):
        disk = self.disk
        with open(self.image, "rb") as file:
            sector = file.read(disk.sector)
        expect_equal(sector[510:512], b"\x55\xaa", "mark of the partition table")
        expect_equal(sector[450], 0x0C, "type of the partition")
        expect_equal(struct.unpack_from("<II", sector, 454), (disk.base // disk.sector, disk.used), "partition")
        expect(not any(sector[:440]) and not any(sector[462:510]) and not any(sector[512:]), "more in the table")

    def cut_out_the_volume(self):
        """Only what is no hole is copied."""
        volume, disk = self.folder / "volume", self.disk
        with open(self.image, "rb") as source, open(volume, "wb") as target:
            target.truncate(disk.used * disk.sector)
            for begin, end in data_of(source.fileno(), disk.base, disk.base + disk.used * disk.sector):
                os.pwrite(target.fileno(), os.pread(source.fileno(), end - begin, begin), begin - disk.base)
        os.replace(volume, self.image)

    def read_parts(self, image, has_root=True):
        """The sectors that are not all zeros, and the fields of the boot sector."""
        size = self.disk.sector
        with open(image, "rb") as file:
            def sector(number):
                return os.pread(file.fileno(), size, number * size)
            boot = sector(0)
            fields = {name: boot[at:at + length] for name, (at, length) in FIELDS.items()}
            if size > 512:
                fields["behind the mark"] = boot[512:]
            reserved, table = (int.from_bytes(fields[name], "little") for name in ("reserved", "table"))
            parts = {"fields": fields, "boot": boot, "information": sector(1), "third": sector(2), "copy": sector(6),
                     "copy of the information": sector(7), "third copy": sector(8), "first table": sector(reserved)}
            if has_root:
                parts["second table"] = sector(reserved + table)
                parts["root"] = sector(reserved + 2 * table)
        return parts

    def judge_own(self, parts):
        """What every FAT32 has in common, and that the numbers are the ones that were worked out for this disk."""
        fields = parts["fields"]

        def number(name):
            return int.from_bytes(fields[name], "little")

        expect_equal(number("reserved"), self.reserved, "reserved sectors")
        expect_equal(number("table"), self.table, "sectors of a table")
        expect_equal(number("sectors"), self.disk.used, "sectors")
        expect_equal(number("hidden"), self.disk.hidden if self.disk.hidden < 2**32 else 0, "hidden sectors")
        data = number("sectors") - number("reserved") - number("tables") * number("table")
        expect_equal(data // number("sectors a cluster"), self.clusters, "clusters as a driver counts them")
        expect(FEWEST <= self.clusters <= MOST, "the kind of FAT that a driver takes it for")
        expect(number("table") * self.disk.sector >= 4 * (self.clusters + 2), "tables that are too short")
        first_data = number("reserved") + 2 * number("table")
        expect_equal(first_data % number("sectors a cluster"), 0, "clusters do not begin where the disk's units do")
        expect_equal(parts["copy"], parts["boot"], "copy of the boot sector")
        expect_equal(parts["copy of the information"], parts["information"], "copy of the information")
        expect_equal(parts["second table"], parts["first table"], "second table")
        expect(not any(parts["third"]) and not any(parts["third copy"]), "something behind the information")

    def judge_rest(self, parts):
        """There is nothing but these sectors."""
        places = {"boot": 0, "information": 1, "copy": 6, "copy of the information": 7, "first table": self.reserved,
                  "second table": self.reserved + self.table, "root": self.reserved + 2 * self.table}
        known = {place * self.disk.sector: parts[name] for name, place in places.items()}
        with open(self.image, "rb") as file:
            for begin, end in data_of(file.fileno(), 0, os.fstat(file.fileno()).st_size):
                for at in range(begin, end, self.disk.sector):
                    found = os.pread(file.fileno(), self.disk.sector, at)
                    expect(found == known.get(at, bytes(len(found))), f"something at {at}: {found!r}")

    def judge_by_mkfs(self, parts):
        """Once with the same number of reserved sectors, once as it aligns by itself."""
        self.judge_like_mkfs(parts, self.mkfs("-a", "-R", self.reserved), aligned=False)
        self.judge_like_mkfs(parts, self.mkfs(), aligned=True)

    def mkfs(self, *options):
        """Long tables are written in vain: it is ended when it comes to them."""
        disk, other = self.disk, self.folder / "other"
        with open(other, "wb") as file:
            file.truncate(disk.used * disk.sector)
        is_long = self.table * disk.sector > MIB
        limit = ["prlimit", "--core=0", f"--fsize={2 * MIB}"] if is_long else []
        hidden = disk.hidden if disk.hidden < 2**32 else 0
        label = ["-n", self.label] if self.label else []
        run(*limit, "mkfs.fat", "-F", 32, "-f", 2, "-s", disk.cluster, "-S", disk.sector, "-h", hidden, "-i",
            f"{disk.serial:08x}", "-g", "255/63", *label, *options, other, status=-25 if is_long else 0)
        parts = self.read_parts(other, has_root=not is_long)
        other.unlink()
        return parts

    def judge_like_mkfs(self, own, others, aligned):
        """Every field is equal, but for those named here, each with the reason for which it differs."""
        mine, its = dict(own["fields"]), dict(others["fields"])

        def take(name):
            return mine.pop(name), its.pop(name)

        def numbers(name):
            return [int.from_bytes(field, "little") for field in take(name)]

        # The name of the maker: some devices take only that of Windows.
        expect_equal(take("maker"), (b"MSWIN4.1", b"mkfs.fat"), "makers")
        # What a computer runs that starts from it: it goes on with the next disk, or shows a sentence.
        code, its_code = take("code")
        expect_equal(code, b"\xcd\x18\xeb\xfe" + bytes(416), "code")
        expect(b"This is not a bootable disk" in its_code, "code of mkfs.fat")
        reserved, its_reserved = numbers("reserved")
        table, its_table = numbers("table")
        sectors, its_sectors = numbers("sectors")
        if aligned:
            # It gives up the rest of the last track, and makes the reserved sectors and each table whole clusters.
            expect_equal(its_sectors, sectors - sectors % 63, "sectors of mkfs.fat")
            for name, value in (("reserved", its_reserved), ("table", its_table)):
                expect_equal(value % self.disk.cluster, 0, f"{name} of mkfs.fat")
            longest = smallest_table(its_sectors, its_reserved, self.disk) + self.disk.cluster
            expect(its_table <= longest, "table of mkfs.fat")
        else:
            expect_equal((reserved, sectors), (its_reserved, its_sectors), "reserved sectors and sectors")
            # The length of a table is counted before the reserved sectors are made more, so that the first cluster is
            # aligned: then its last sector may not be needed. It counts whole clusters only, which may save one, too.
            needed = -(-4 * (self.clusters + 2) // self.disk.sector)
            expect(needed <= its_table <= table <= its_table + 1, f"tables of {table} and {its_table} sectors")
        its_clusters = (its_sectors - its_reserved - 2 * its_table) // self.disk.cluster
        expect_equal(mine, its, "fields of the boot sector")
        self.judge_information(own["information"], others["information"], its_clusters)
        self.judge_table(own["first table"], others["first table"])
        if "root" in others:
            self.judge_root(own["root"], others["root"])

    def judge_information(self, own, its, its_clusters):
        """Only the number of free clusters differs, as far as there are more or fewer of them."""
        expect_equal(struct.unpack_from("<I", own, 488)[0], self.clusters - 1, "free clusters")
        expect_equal(struct.unpack_from("<I", its, 488)[0], its_clusters - 1, "free clusters of mkfs.fat")
        expect_equal(own[:488] + own[492:], its[:488] + its[492:], "sector of information")

    def judge_table(self, own, its):
        """The end of the root folder: any number from 0x0FFFFFF8 on is one."""
        expect_equal((own[8:12], its[8:12]), (b"\xff\xff\xff\x0f", b"\xf8\xff\xff\x0f"), "ends of the root folder")
        expect_equal(own[:8] + own[12:], its[:8] + its[12:], "first sector of a table")

    def judge_root(self, own, its):
        """The time: it is of now, and mkfs.fat gives the label also times that only files have."""
        expect_equal(own[:12] + own[26:], its[:12] + its[26:], "root folder")
        expect_equal(own[12:22], bytes(10), "times that only files have")
        date = (46 << 9) + (1 << 5) + 2, 3 << 11  # as the clock of the images has it
        expect_equal(struct.unpack_from("<HH", own, 22), date[::-1] if self.label else (0, 0), "time of the label")

    def judge_by_fsck(self):
        if self.clusters > (MOST_OF_FSCK if self.is_patient else MOST_AT_ONCE):
            run("fsck.fat", "-n", "-b", self.image)
            return
        text = run("fsck.fat", "-n", "-v", self.image)
        files = 1 if self.label else 0  # it counts the label as one
        expect(f"\n{self.image}: {files} files, 1/{self.clusters} clusters" in text, text)
        for complaint in ("differences", "Dirty", "wrong", "unclean", "label"):
            expect(complaint not in text, text)

    def judge_by_mtools(self):
        end = self.reserved + 2 * self.table + self.clusters * self.disk.cluster
        if end + self.disk.cluster > MOST_SECTORS:
            return  # mtools 4.0.32 adds these up in 32 bits, and ends with a signal
        text = run("minfo", "-i", self.image, "::")
        hidden = self.disk.hidden if self.disk.hidden < 2**32 else 0
        for wanted in (f"hidden sectors: {hidden - 2**32 if hidden >= 2**31 else hidden}\n",  # as it shows them
                       f"big size: {self.disk.used} sectors\n", f"Big fatlen={self.table}\n",
                       f"cluster size: {self.disk.cluster} sectors\n", f"free clusters={self.clusters - 1}\n"):
            expect(wanted in text, f"{wanted!r} is missing in {text}")
        text = run("mlabel", "-s", "-i", self.image, "::")
        expect_equal(text.strip(), f"Volume label is {self.label}" if self.label else "Volume has no label", "mlabel")
        if self.clusters > CHEAP_TO_FILL:
            return
        file, back = self.folder / "file", self.folder / "back"
        content = random.Random(self.disk.serial).randbytes(3 * self.disk.cluster * self.disk.sector + 1)
        file.write_bytes(content)
        run("mcopy", "-i", self.image, file, "::/FILE.BIN")
        run("mcopy", "-n", "-i", self.image, "::/FILE.BIN", back)
        expect_equal(back.read_bytes() == content, True, "the file as it comes back")
        text = run("fsck.fat", "-n", self.image)
        expect(f"{2 if self.label else 1} files, 5/{self.clusters} clusters" in text, text)


def check(arguments, base, disk):
    """Returns how many file systems and how many refusals have been judged."""
    with tempfile.TemporaryDirectory(dir=base) as folder:
        one = Check(arguments, pathlib.Path(folder), disk)
        refused = [option for option in OPTIONS if option not in fitting_options(disk)]
        try:
            if disk.option in refused:
                one.refused(disk.option)
                return 0, 1
            one.made()
            if refused:
                one.refused(refused[disk.serial % len(refused)])
            return 1, int(bool(refused))
        except Wrong as wrong:
            raise Wrong(f"{disk}\n{wrong}") from None


def folder_for_images():
    """Where there can be sparse files of 16 TB; best in memory, when it has some room."""
    for folder in ("/dev/shm", tempfile.gettempdir(), "/var/tmp"):
        if not os.access(folder, os.W_OK) or shutil.disk_usage(folder).free < GIB // 2:
            continue
        with tempfile.TemporaryFile(dir=folder) as file:
            try:
                file.truncate((MOST_SECTORS + 2) * 4096)
                return folder
            except OSError:
                continue
    return None


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--sizes", type=int, default=2000, help="how many random sizes")
    parser.add_argument("--seed", type=int, default=random.randrange(2**32))
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="how many at a time")
    parser.add_argument("--patient", action="store_true", help="let fsck.fat read tables of every size")
    parser.add_argument("--formatter", type=pathlib.Path, default=ROOT / "build/tests/fat32format/image_formatter")
    arguments = parser.parse_args()
    missing = [tool for tool in TOOLS if not shutil.which(tool)]
    folder = folder_for_images()
    if missing or folder is None:
        print("needs a folder that takes sparse files of 16 TB, and " + ", ".join(TOOLS))
        return SKIPPED
    print(f"seed {arguments.seed}", flush=True)
    numbers = random.Random(arguments.seed)
    disks = [*edges(), *(random_disk(numbers) for _ in range(arguments.sizes))]
    begin, made, refused, failures = time.monotonic(), 0, 0, 0
    with tempfile.TemporaryDirectory(prefix="image_ring_", dir=folder) as base, \
            concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
        for work in [pool.submit(check, arguments, base, disk) for disk in disks]:
            try:
                made, refused = map(sum, zip((made, refused), work.result()))
            except Wrong as wrong:
                failures += 1
                print(wrong, file=sys.stderr, flush=True)
    print(f"{arguments.sizes} random sizes and {len(disks) - arguments.sizes} edges: {made} file systems good, {refused} "
          f"disks refused, {failures} wrong, {time.monotonic() - begin:.1f} s")
    return int(failures > 0)


if __name__ == "__main__":
    sys.exit(main())
