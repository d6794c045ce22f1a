"""The formatter for Windows, under Wine, with a real disk.

Wine reads and writes a device through the link e:: of its prefix, but answers none of the questions about it. So the
formatter is the one of its tests, which is told the answers; here they are what the guest's kernel says.
"""

import images
from scenario import expect, expect_equal, scenario
from scenarios_disks import LABEL, MIB, expect_formatted, expect_mountable, identity, partitions, plug_disk

SIZE = 3072 * MIB
NTFS, FAT32_LBA = "7", "c"
FORMATTER = "fat32format_on_images.exe"
PLACE = "/run/formatter"
PREFIX = "/srv/wine"  # see guest/build
USB = 7  # STORAGE_BUS_TYPE, https://learn.microsoft.com/windows/win32/api/winioctl/ne-winioctl-storage_bus_type
LONGEST = 300  # seconds, on an emulated processor
WINE = f"cd {PLACE} && env HOME=/root WINEPREFIX={PREFIX} WINEDEBUG=-all setarch -R /usr/lib/wine/wine64"


def disk_of_another_type(path):
    """With FAT32 in a partition whose type promises NTFS."""
    images.blank(path, SIZE)
    images.divide(path, [f"type={NTFS}"])
    images.run("mkfs.fat", "-F", 32, "-n", LABEL, f"--offset={images.PARTITION // images.SECTOR}", path,
               (SIZE - images.PARTITION) // 1024)
    images.put(path, {"ALT.TXT": b"old"}, partitioned=True)
    return path


def facts(ring, disk):
    """What Windows' drivers would say of the disk and its first partition."""
    serial = identity(ring, disk).rsplit("=", 1)[1]
    block = f"/sys/class/block/{disk}"
    model = ring.root.run(f"cat {block}/device/model").strip()
    sectors, start, length = ring.root.run(f"cat {block}/size {block}/{disk}1/start {block}/{disk}1/size").split()
    on_usb = "ID_BUS=usb\n" in ring.root.run(f"udevadm info --query=property --name=/dev/{disk}")
    sector = ring.root.run(f"cat {block}/queue/logical_block_size").strip()
    values = {"model": model, "serial": serial, "bus": USB if on_usb else 0, "sectorsize": sector, "label": LABEL,
              "diskbytes": int(sectors) * images.SECTOR, "start": int(start) * images.SECTOR,
              "bytes": int(length) * images.SECTOR, "drivetype": 3}
    return "".join(f"{name}={value}\n" for name, value in values.items())


@scenario("13w", "formatter for Windows, under Wine: a disk whose partition is of another type", long=True)
def formatter_for_windows(ring):
    image = disk_of_another_type(ring.image("disk"))
    name, disk = plug_disk(ring, image)
    ring.wait(lambda: ring.root.succeeds(f"test -b /dev/{disk}1"), "its partition")
    ring.root.run(f"mkdir -p {PLACE} && cp /payload/windows/{FORMATTER} {PLACE}")
    ring.root.write(f"{PLACE}/stick.txt", facts(ring, disk).encode())
    ring.root.run(f"ln -sfn /dev/{disk} {PREFIX}/dosdevices/e::")
    try:
        done = ring.root.request("run", command=f"{WINE} {FORMATTER} -c64 E:; echo status $?", input="y\r\n",
                                 timeout=LONGEST)
        output = done["output"].replace("\r", "")
        serial = identity(ring, disk).rsplit("=", 1)[1]
        for wanted in (f"  Serial: {serial}\n", f"  Label:  {LABEL}\n", "\nDone\nstatus 0\n"):
            expect(wanted in output, f"what it says: {output}")
        ring.root.run(f"blockdev --rereadpt /dev/{disk}", check=False)
        expect_mountable(ring, f"/dev/{disk}1")
    finally:
        ring.root.run(f"rm -rf {PLACE} {PREFIX}/dosdevices/e::; env WINEPREFIX={PREFIX} /usr/lib/wine/wineserver64 -k",
                      check=False)
    ring.unmount_all()
    ring.guest.pull(name)
    [(start, size, kind)] = partitions(image)
    expect_equal(kind, FAT32_LBA, "type of the partition")
    expect_formatted(ring, image, start, size, LABEL)
    return f"formatted, of type 0x0C now; {done['seconds']:.0f} s"
