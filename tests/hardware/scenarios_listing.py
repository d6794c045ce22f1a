"""Sticks of every kind are shown as what they are."""

import images
from images import MIB
from scenario import expect, expect_equal, new_letters, scenario

SIZE = 128 * MIB


def make_sticks(ring):
    """(image, label, file system as shown, smallest plausible share of the size)."""
    fat16 = images.fat(ring.image("fat16"), "FATSECHZEHN", size=SIZE, bits=16)
    whole = images.fat(ring.image("whole"), "OHNE TAB", size=SIZE)
    divided = images.fat(ring.image("divided"), "MIT TAB", size=SIZE, partitioned=True)
    yield fat16, "FATSECHZEHN", "FAT"
    yield whole, "OHNE TAB", "FAT32"
    yield divided, "MIT TAB", "FAT32"
    yield images.other(ring.image("exfat"), "exfat", "exFAT Stick", SIZE), "exFAT Stick", "exFAT"
    yield images.other(ring.image("ntfs"), "ntfs", "NTFS Größe", SIZE), "NTFS Größe", "NTFS"
    yield images.other(ring.image("ext4"), "ext4", "ext4-stick", SIZE), "ext4-stick", "ext4"


@scenario("14", "FAT16, exFAT, NTFS, ext4, with a partition table and without")
def kinds(ring):
    program = ring.loaded_program()
    told = []
    for letter, (image, label, kind) in zip(new_letters(), make_sticks(ring)):
        name = ring.guest.plug(image)
        program.wait_stick(label)
        facts = program.facts()
        expect_equal((facts["txtFAT"], facts["lblLW"], facts["txtDT_Cap"]), (kind, f"{letter}:\\", label),
                     f"facts of {label}")
        total, free = float(facts["lblHDSize"]), float(facts["lblHDFree"])
        expect(0.8 * SIZE <= total * MIB <= SIZE and 0 < free <= total, f"{kind}: {free} of {total} MB free")
        told.append(f"{kind} {total:.0f}")
        ring.guest.pull(name)
        program.wait_no_stick()
    program.end()
    return ", ".join(told) + " (MB of 128)"
