"""Pictures that the catalog names: they come from the program's folder, and from there alone."""

import shutil
import struct
import unittest
import zlib

from case import SHIPPED, SLOWNESS, WindowCase
from server_files import NO_NAMES, catalog, row
from side_by_side import each, side_by_side


def png(width, height, lines=None):
    """A black picture; `lines` of it are there."""
    def chunk(name, data):
        body = name + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))

    pixels = zlib.compress(bytes(width * 4 + 1) * (lines or height), 9)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0))
            + chunk(b"IDAT", pixels) + chunk(b"IEND", b""))


def icon(pictures, times=1):
    """A file of [(side, bytes of the picture)]. Its directory names all of them so many times."""
    directory = b""
    start = 6 + 16 * len(pictures) * times
    for side, data in pictures:
        directory += struct.pack("<BBBBHHII", side, side, 0, 0, 1, 32, len(data), start)
        start += len(data)
    return (struct.pack("<HHH", 0, 1, len(pictures) * times) + directory * times
            + b"".join(data for _, data in pictures))


def jpeg(side, passes):
    """Each pass is over all pixels, and tells nothing of them."""
    size = struct.pack(">HH", side, side)
    tables = b"\xff\xdb\0\x43\0" + bytes([1]) * 64
    for kind in (0, 0x10):
        tables += b"\xff\xc4\0\x14" + bytes([kind, 1]) + bytes(16)
    first = b"\xff\xda\0\x08\1\1\0\0\0\0"
    return (b"\xff\xd8\xff" + tables[1:] + b"\xff\xc2\0\x0b\x08" + size + b"\1\1\x11\0" + first
            + b"\xff\xda\0\x08\1\1\0\1\x3f\0" * (passes - 1) + b"\xff\xd9")


class Pictures(WindowCase):
    def serve_picture(self, name):
        self.serve("usb-list.csv", catalog(changes={1: row("SR", name, "good.abs")}))

    def expect_refusal_of(self, name, number):
        self.serve_picture(name)
        self.expect_error(self.start(), number, "Installieren Sie das Programm neu")

    @each(NO_NAMES)
    def test_without_a_name(self, name):
        self.expect_refusal_of(name, 76)

    @each({"this": ".", "above": "..", "far above": "..\\..\\..", "no name": ""})
    def test_folder(self, name):
        self.expect_refusal_of(name, 75)

    @each({"above": "..\\picture.bmp", "with a slash": "../picture.bmp", "far": "..\\..\\..\\picture.bmp"})
    def test_beside_the_program(self, name):
        self.serve_picture(name)
        program = self.start(start=False)
        shutil.copy(SHIPPED / "sr100.bmp", program.home / "picture.bmp")
        program.start()
        self.expect_error(program, 53)

    @each({"etc": "..\\..\\..\\etc\\passwd", "root": "/etc/passwd", "root of dos": "\\etc\\passwd"})
    def test_of_the_system(self, name):
        self.expect_refusal_of(name, 76)

    # Each of these is a name of a picture and none inside.
    BROKEN = {
        "empty": b"",
        "text": b"<html>404</html>",
        "svg": b'<svg xmlns="http://www.w3.org/2000/svg" width="9" height="9"><rect width="9" height="9"/></svg>',
        "png": b"\x89PNG\r\n\x1a\n" + bytes(100),
        "head of a bitmap": b"BM",
        "bitmap of 60000 x 60000": b"BM" + bytes(8) + b"\x36\0\0\0\x28\0\0\0" + (60000).to_bytes(4, "little") * 2
                                   + b"\1\0\x18\0" + bytes(24),
        "bitmap of a negative width": b"BM" + bytes(8) + b"\x36\0\0\0\x28\0\0\0" + b"\xff" * 4 + b"\1\0\0\0"
                                      + b"\1\0\x18\0" + bytes(24) + bytes(64),
        "gif cut off": b"GIF89a\xff\xff\xff\xff\xf7\0\0",
        "jpeg cut off": b"\xff\xd8\xff\xe0\0\x10JFIF\0\1\1\0\0\1\0\1\0\0",
        "icon of 65535 pictures": b"\0\0\1\0\xff\xff" + b"\xff" * 400,
    }

    # Each of these is a picture, or would be one after a while.
    ENDLESS = {
        "icon of 2000 large pictures": icon([(0, png(2000, 2000))], 2000),
        "icon of a picture of 20000 x 20000": icon([(0, png(20000, 20000, lines=1))]),
        "jpeg of 3000 passes": jpeg(2048, 3000),
    }

    @each(ENDLESS)
    def test_endless(self, contents):
        self.serve_picture("endless.bmp")
        program = self.start(files={"endless.bmp": contents})
        before = program.processor_seconds()
        program.wait_message()
        self.assertLess(program.processor_seconds() - before, 1.5 * SLOWNESS)
        self.expect_error(program, 481)

    @each(BROKEN)
    def test_broken(self, contents):
        self.serve_picture("broken.bmp")
        self.expect_error(self.start(files={"broken.bmp": contents}), 481)


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
