"""Pictures that the catalog names: they come from the program's folder, and from there alone."""

import shutil
import unittest

from case import SHIPPED, WindowCase
from server_files import NO_NAMES, catalog, row
from side_by_side import each, side_by_side


class Pictures(WindowCase):
    def serve_picture(self, name):
        self.serve("usb-list.csv", catalog(changes={1: row("SR", name, "good.abs")}))

    def expect_refusal_of(self, name, number):
        self.serve_picture(name)
        self.expect_error(self.start(), number)

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

    @each(BROKEN)
    def test_broken(self, contents):
        self.serve_picture("broken.bmp")
        self.expect_error(self.start(files={"broken.bmp": contents}), 481)


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
