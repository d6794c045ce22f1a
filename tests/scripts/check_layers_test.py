"""The check of who includes whom, on small trees of its own: what is forbidden is found, and nothing else."""

import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))
import check_layers as layers  # noqa: E402


def wrong(**texts):
    """The complaints about sources, which are given by path with "__" for "/" and "_h", "_cpp" for their ends."""
    named = {}
    for name, text in texts.items():
        path, _, end = name.replace("__", "/").rpartition("_")
        named[f"{path}.{end}"] = text
    return list(layers.wrong_includes(named)), layers.circles(layers.graph_of(named))


class Includes(unittest.TestCase):
    def test_down_is_allowed(self):
        found, circles = wrong(app__a_cpp='#include "drive/b.h"\n#include "base/c.h"\n#include <string>\n',
                               drive__b_h='#include "window/d.h"\n', base__c_h="", window__d_h="")
        self.assertEqual((found, circles), ([], []))

    def test_up_is_found(self):
        found, _ = wrong(drive__b_h='#pragma once\n#include "app/a.h"\n', app__a_h="")
        self.assertEqual(found, ["drive/b.h includes app/a.h: drive is not above app"])

    def test_sideways_is_found(self):
        self.assertEqual(len(wrong(online__a_cpp='#include "widgets/b.h"\n')[0]), 1)
        self.assertEqual(len(wrong(toolkit__a_cpp='#include "platform/b.h"\n')[0]), 1)
        self.assertEqual(len(wrong(platform__a_cpp='#include "toolkit/b.h"\n')[0]), 1)

    def test_the_core_and_a_seam_know_no_backend(self):
        for top in ("app", "window", "toolkit", "platform"):
            self.assertEqual(len(wrong(**{f"{top}__a_cpp": '#include "platform/linux/files/path.h"\n'})[0]), 1, top)

    def test_a_backend_knows_its_seam_and_not_the_core(self):
        self.assertEqual(wrong(toolkit__qt__a_cpp='#include "toolkit/b.h"\n#include "platform/c.h"\n')[0], [])
        self.assertEqual(len(wrong(toolkit__qt__a_cpp='#include "window/b.h"\n')[0]), 1)
        self.assertEqual(len(wrong(toolkit__qt__a_cpp='#include "toolkit/win32/b.h"\n')[0]), 1)
        self.assertEqual(len(wrong(platform__windows__a_cpp='#include "toolkit/b.h"\n')[0]), 1)

    def test_a_tool_takes_one_room_of_a_backend_only(self):
        self.assertEqual(wrong(tools__fat32format__linux__a_cpp='#include "platform/linux/base/b.h"\n')[0], [])
        self.assertEqual(len(wrong(tools__fat32format__linux__a_cpp='#include "platform/linux/drives/b.h"\n')[0]), 1)
        self.assertEqual(len(wrong(tools__fat32format__linux__a_cpp='#include "platform/files.h"\n')[0]), 1)

    def test_the_core_knows_no_system(self):
        for header in ("QString", "windows.h", "unistd.h", "curl/curl.h", "sys/stat.h"):
            self.assertEqual(len(wrong(drive__a_cpp=f"#include <{header}>\n")[0]), 1, header)
            self.assertEqual(wrong(platform__linux__a_cpp=f"#include <{header}>\n")[0], [], header)
        self.assertEqual(wrong(drive__a_cpp="#include <string_view>\n#include <cmath>\n")[0], [])
        self.assertEqual(len(wrong(drive__a_cpp="#ifdef _WIN32\n#endif\n")[0]), 1)

    def test_everybody_may_include_what_the_build_makes_for_all(self):
        for path in ("base__a_cpp", "window__a_h", "platform__linux__a_cpp", "toolkit__win32__a_cpp"):
            self.assertEqual(wrong(**{path: '#include "build_choices.h"\n'})[0], [], path)
        self.assertEqual(len(wrong(window__a_cpp='#include "other_made.h"\n')[0]), 1)

    def test_nobody_includes_a_test(self):
        for path in ("drive__a_cpp", "platform__linux__a_cpp", "tests__fake__a_cpp"):
            self.assertEqual(len(wrong(**{path: '#include "tests/unit/main_window.h"\n'})[0]), 1, path)

    def test_what_the_build_makes_is_a_backend_s(self):
        self.assertEqual(wrong(toolkit__qt__a_cpp='#include "ui_frmMain.h"\n')[0], [])
        self.assertEqual(len(wrong(window__a_cpp='#include "ui_frmMain.h"\n')[0]), 1)


class Circles(unittest.TestCase):
    def test_a_header_and_its_source_are_one_unit(self):
        _, circles = wrong(drive__a_h="", drive__a_cpp='#include "drive/b.h"\n', drive__b_h="",
                           drive__b_cpp='#include "drive/a.h"\n')
        self.assertEqual(circles, [["drive/a", "drive/b"]])

    def test_by_way_of_others(self):
        _, circles = wrong(base__a_h='#include "base/b.h"\n', base__b_h='#include "base/c.h"\n',
                           base__c_cpp='#include "base/a.h"\n', base__c_h="", base__d_h='#include "base/a.h"\n')
        self.assertEqual(circles, [["base/a", "base/b", "base/c"]])

    def test_two_ways_to_one_are_none(self):
        _, circles = wrong(base__a_h='#include "base/b.h"\n#include "base/c.h"\n', base__b_h='#include "base/d.h"\n',
                           base__c_h='#include "base/d.h"\n', base__d_h="")
        self.assertEqual(circles, [])


class Table(unittest.TestCase):
    DOCUMENT = (ROOT / "docs/architecture.md").read_text(encoding="utf-8")

    def test_the_document_has_the_same(self):
        self.assertEqual(list(layers.wrong_table(self.DOCUMENT)), [])

    def test_another_row_is_found(self):
        changed = self.DOCUMENT.replace("| `base` |  |", "| `base` | `toolkit` |")
        self.assertNotEqual(changed, self.DOCUMENT)
        self.assertEqual(len(list(layers.wrong_table(changed))), 1)

    def test_a_row_too_many_and_one_too_few_are_found(self):
        more = self.DOCUMENT.replace("| `base` |  |", "| `base` |  |\n| `other` | `base` |")
        self.assertEqual(len(list(layers.wrong_table(more))), 1)
        fewer = "\n".join(line for line in self.DOCUMENT.splitlines() if not line.startswith("| `window` |"))
        self.assertEqual(len(list(layers.wrong_table(fewer))), 1)


class Whole(unittest.TestCase):
    def test_a_forbidden_include_or_a_circle_fails_the_check(self):
        with tempfile.TemporaryDirectory() as folder:
            root = Path(folder)
            (root / "docs").mkdir()
            (root / "docs/architecture.md").write_text(Table.DOCUMENT, encoding="utf-8")
            (root / "base").mkdir()
            source = root / "base/a.h"
            source.write_text("", encoding="utf-8")
            self.assertEqual(layers.main(root), 0)
            source.write_text('#include "app/frmMain.h"\n', encoding="utf-8")
            self.assertEqual(layers.main(root), 1)
            source.write_text('#include "base/b.h"\n', encoding="utf-8")
            (root / "base/b.cpp").write_text('#include "base/a.h"\n', encoding="utf-8")
            (root / "base/b.h").write_text("", encoding="utf-8")
            self.assertEqual(layers.main(root), 1)

    def test_this_repository_passes(self):
        self.assertEqual(layers.main(ROOT), 0)


if __name__ == "__main__":
    unittest.main()
