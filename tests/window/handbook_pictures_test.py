"""The pictures of the user guide: they show the windows as they are today."""

import sys
import tempfile
import unittest
import zlib
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))

from case import BUILD  # noqa: E402
import handbook_pictures  # noqa: E402
from handbook_pictures import DRAWN_BY, chunk, chunks, different_pixels, size_of, texts_of, told_by  # noqa: E402

PICTURES = ROOT / "docs" / "pictures"
NAMES = ("main-window.png", "assistant.png")
STRAY = 50  # pixels that may differ: less than a letter, or the sign on a button
UNLIKE = 0.1  # of the width or the height, when another version of Qt draws


class Pictures(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.today = Path(folder.name)
        handbook_pictures.make(BUILD, cls.today)

    def test_the_windows_say_the_same_today(self):
        for name in NAMES:
            texts = texts_of(PICTURES / name)
            self.assertGreater(len(texts), 5, name)
            self.assertEqual(texts_of(self.today / name), texts, name)

    def test_they_look_the_same_today(self):
        """To the pixel where the same Qt draws; each version has distances and edges of its own."""
        for name in NAMES:
            kept, made = PICTURES / name, self.today / name
            self.assertTrue(told_by(kept, DRAWN_BY), f"{name} was not made by scripts/handbook_pictures.py")
            if told_by(kept, DRAWN_BY) == told_by(made, DRAWN_BY):
                self.assertEqual(size_of(made), size_of(kept), name)
                self.assertLess(different_pixels(made, kept), STRAY, name)
            else:
                for now, then in zip(size_of(made), size_of(kept)):
                    self.assertLess(abs(now - then), UNLIKE * then, name)

    def test_what_looks_otherwise_is_found(self):
        """Even where the only difference is a patch of eight pixels each way, in another colour."""
        for name in NAMES:
            lines = [bytearray(line) for line in handbook_pictures.lines_of(self.today / name)]
            for line in lines[40:48]:
                line[90:114] = bytes(255 - value if abs(255 - 2 * value) > 64 else 0 for value in line[90:114])
            other = self.today / "other.png"
            header = dict(chunks((self.today / name).read_bytes()))[b"IHDR"]
            data = zlib.compress(b"".join(b"\0" + line for line in lines))
            other.write_bytes(handbook_pictures.SIGNATURE + chunk(b"IHDR", header) + chunk(b"IDAT", data) + chunk(b"IEND", b""))
            self.assertEqual(different_pixels(self.today / name, other), 64)
            self.assertEqual(different_pixels(self.today / name, self.today / name), 0)

    def test_they_are_made_from_the_pixels_alone(self):
        """So that the same window makes the same bytes, apart from what draws its letters."""
        for name in NAMES:
            kinds = {kind for kind, _ in chunks((PICTURES / name).read_bytes())}
            self.assertEqual(kinds, {b"IHDR", b"tEXt", b"IDAT", b"IEND"}, name)


if __name__ == "__main__":
    unittest.main()
