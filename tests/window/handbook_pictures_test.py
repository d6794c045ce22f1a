"""The pictures of the user guide: they show the windows as they are today."""

import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))

from case import BUILD  # noqa: E402
import handbook_pictures  # noqa: E402

PICTURES = ROOT / "docs" / "pictures"
NAMES = ("main-window.png", "assistant.png")


class Pictures(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.today = Path(folder.name)
        handbook_pictures.make(BUILD, cls.today)

    def test_the_windows_say_the_same_today(self):
        for name in NAMES:
            texts = handbook_pictures.texts_of(PICTURES / name)
            self.assertGreater(len(texts), 5, name)
            self.assertEqual(handbook_pictures.texts_of(self.today / name), texts, name)

    def test_they_are_as_large(self):
        for name in NAMES:
            size = handbook_pictures.size_of(self.today / name)
            self.assertEqual(handbook_pictures.size_of(PICTURES / name), size, name)

    def test_they_are_made_from_the_pixels_alone(self):
        """So that the same window makes the same bytes, apart from what draws its letters."""
        for name in NAMES:
            kinds = {kind for kind, _ in handbook_pictures.chunks((PICTURES / name).read_bytes())}
            self.assertEqual(kinds, {b"IHDR", b"tEXt", b"IDAT", b"IEND"}, name)


if __name__ == "__main__":
    unittest.main()
