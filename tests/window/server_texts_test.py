"""What can be wrong with the three text files of the update server."""

import unittest

from case import CONFIRMATION, COPIED, SLOWNESS, SUCCESS, WindowCase
from fault_server import chunked, generated, missing, redirect, reset, slow, truncated
from server_files import FIRMWARE, SETTINGS, VERSION, catalog, row
from side_by_side import each, side_by_side

OUTDATED = ("Eine neue Version des Programmes ist verfügbar!\n\n"
            "Installieren Sie die akutelle Version des Programmes.\n"
            "Die Updateseite wird automatisch geöffnet.")
TOO_LARGE = 300 * 1024**2
SHOWN = 4000  # characters of a text


class Version(WindowCase):
    def expect_outdated(self, program):
        self.drop_message(program, "Version abgelaufen.", OUTDATED, 16)
        self.assertEqual(program.exit_status(), 0)
        self.assertFalse((program.folder / "Settings.ini").exists())  # it ended at once
        program._until(self.opened, 20, lambda: "no browser was started")
        self.assertEqual(self.opened(), [self.server.url()])
        self.assertNotIn("usb-news.csv", self.downloads())

    def expect_outdated_with(self, version):
        self.serve("usb-version.txt", version)
        self.expect_outdated(self.start())

    def test_a_line_end_behind_it(self):
        self.expect_outdated_with(VERSION + b"\r\n")

    def test_another_digit(self):
        self.expect_outdated_with(VERSION + b"0")

    def test_an_error_page(self):
        self.expect_outdated_with(missing())

    def expect_no_connection_with(self, version):
        self.serve("usb-version.txt", version)
        self.expect_no_connection(self.start())

    def test_cut_off(self):
        self.expect_no_connection_with(truncated(b"1.", 3))

    def test_cut_off_behind_what_would_do(self):
        self.expect_no_connection_with(truncated(VERSION, 100))

    def test_reset(self):
        self.expect_no_connection_with(reset(b"1.", 3))

    def test_a_chunk_that_is_cut(self):
        self.expect_no_connection_with(chunked(b"1.", cut=True))

    def test_chunks(self):
        self.serve("usb-version.txt", chunked(VERSION, piece=1))
        self.start_loaded()

    def test_nothing(self):
        self.serve("usb-version.txt", b"")
        self.expect_no_connection(self.start())

    def test_complete_before_the_connection_breaks(self):
        self.serve("usb-version.txt", reset(VERSION, 3))
        self.start_loaded()

    def test_in_pieces(self):
        self.serve("usb-version.txt", slow(VERSION, 1, 0.2))
        self.start_loaded()

    def test_without_end(self):
        self.serve("usb-version.txt", generated(TOO_LARGE))
        self.expect_error(self.start(), 6)


class News(WindowCase):
    def expect_error_with(self, number, news):
        self.serve("usb-news.csv", news)
        self.expect_error(self.start(), number)

    def expect_shown(self, news, fields):
        self.serve("usb-news.csv", news)
        program = self.start_loaded()
        self.assertEqual([program.text(f"lbl_news_{i}") for i in range(4)], fields)
        return program

    def test_three_fields(self):
        self.expect_error_with(9, b"a;b;c\r\nd;e;f;g")

    def test_nothing(self):
        self.expect_error_with(9, b"")

    def test_an_error_page(self):
        self.expect_error_with(9, missing())

    def test_redirects_without_end(self):
        self.expect_error_with(9, redirect("/orvanta/download/usb-news.csv"))

    def test_cut_off(self):
        self.serve("usb-news.csv", truncated(b"a;b;c;d\r\n", 100))
        program = self.start()
        self.expect_lost_connection(program)
        self.assertNotIn("usb-list.csv", self.downloads())
        self.close(program)

    def test_without_end(self):
        self.expect_error_with(6, generated(TOO_LARGE))

    def test_five_fields_and_two_lines(self):
        self.expect_shown(b"a;b;c;d;e\r\nf;g;h;i", ["a", "b", "c", "d"])

    def test_empty_fields(self):
        self.expect_shown(b";;;", [""] * 4)

    def test_a_bare_line_feed_ends_no_line(self):
        self.expect_shown(b"a;b;c;d\ne;f", ["a", "b", "c", "d\ne"])

    def test_characters_that_are_not_ascii(self):
        self.expect_shown(b"\x80\x85\x99;\xe4\xf6\xfc\xdf;\x84q\x93;\xa0x", ["€…™", "äöüß", "„q“", "\u00a0x"])

    def test_bytes_without_a_character(self):
        self.serve("usb-news.csv", b"a\0b;\x81\x8d\x8f\x90\x9d;\x01\x02\x1b;\xff")
        program = self.start_loaded()
        self.assertEqual(program.text("lbl_news_3"), "ÿ")

    def test_markup_is_only_text(self):
        fields = ["<b>fett</b>", '<img src="file:///etc/passwd">', "<h1>A & O</h1>", '<a href="x">y</a>']
        program = self.expect_shown(";".join(fields).encode(), fields)
        for i in range(4):
            self.assertTrue(program.get(f"lbl_news_{i}")["plainText"], i)


class Catalog(WindowCase):
    def expect_error_with(self, number, text):
        self.serve("usb-list.csv", text)
        self.expect_error(self.start(), number)

    def test_eight_lines(self):
        self.expect_error_with(9, catalog().rpartition(b"\r\n")[0])

    def test_eight_lines_and_a_line_end(self):
        self.expect_error_with(9, catalog().rpartition(b"\r\n")[0] + b"\r\n")

    def test_fourteen_fields(self):
        self.expect_error_with(9, catalog(changes={8: ";" * 13}))

    def test_bare_line_feeds(self):
        self.expect_error_with(9, catalog().replace(b"\r\n", b"\n"))

    def test_nothing(self):
        self.expect_error_with(9, b"")

    def test_an_error_page(self):
        self.expect_error_with(9, missing())

    def expect_lost_connection_with(self, text):
        self.serve("usb-list.csv", text)
        program = self.start()
        self.expect_lost_connection(program)
        self.assertFalse(any(program.get(f"Firm_Option_{i}")["enabled"] for i in range(9)))
        self.close(program)

    def test_cut_off(self):
        self.expect_lost_connection_with(truncated(catalog()[:300], len(catalog())))

    def test_cut_off_behind_nine_lines(self):
        self.expect_lost_connection_with(truncated(catalog(), len(catalog()) + 1))

    def test_without_end(self):
        self.expect_error_with(6, generated(TOO_LARGE))

    def test_a_picture_that_is_not_there(self):
        self.expect_error_with(53, catalog(changes={1: row("SR 200 CI", "none.bmp", "sr200.abs")}))

    def test_a_picture_that_is_none(self):
        self.expect_error_with(481, catalog(changes={1: row("SR 200 CI", "autorun.inf", "sr200.abs")}))

    def test_a_picture_that_is_missing_only_when_it_is_chosen(self):
        self.serve("usb-list.csv", catalog(changes={2: row("SR 300 PVR", "none.bmp", "sr300.abs")}))
        program = self.start_loaded()
        program.click("Firm_Option_2")
        self.expect_error(program, 53)

    def test_a_tenth_line_is_not_read(self):
        self.serve("usb-list.csv", catalog() + b"\r\nnot;enough")
        self.start_loaded()

    def test_a_sixteenth_field_is_not_read(self):
        self.serve("usb-list.csv", catalog().replace(b"\r\n", b";more;and more\r\n"))
        self.run_job(self.start_loaded())
        self.expect_stick({"sr200.abs": FIRMWARE, "sr200_at.sdx": SETTINGS} | COPIED)

    def test_markup_is_only_text(self):
        self.serve("usb-list.csv", catalog(changes={
            1: row("<b>SR</b>", "sr100.bmp", "sr200.abs", "<i>1</i>", '<img src="x">', {0: ("s.sdx", "<u>2</u>")})}))
        self.serve("s.sdx.txt", SETTINGS)
        program = self.start_loaded()
        for name, text in (("lbl_firmstand", "Stand: <i>1</i>"), ("lbl_Aenderung", '<img src="x">'),
                           ("lbl_settstand", "Stand: <u>2</u>")):
            part = program.get(name)
            self.assertEqual((part["text"], part["plainText"]), (text, True))
        program.click("cmdChoose")
        box = program.wait_message(title=CONFIRMATION)
        self.assertIn("Receiver: Orvanta <b>SR</b>\n", box["text"])
        self.assertTrue(box["plainText"])


class LongFields(WindowCase):
    LONG = "Wort " * 1000 + "W" * 5000

    def expect_window_whole(self, program):
        for name, window in program.windows().items():
            self.assertLessEqual(window["geometry"][2], 1366, name)
            self.assertLessEqual(window["geometry"][3], 768, name)
        x, y, width, height = program.get("cmdChoose")["geometry"]
        window = program.windows()["frmMain"]["geometry"]
        self.assertGreater(height, 15)
        self.assertLessEqual(y + height, window[3])
        self.assertLessEqual(x + width, window[2])

    def test_news(self):
        self.serve("usb-news.csv", ";".join([self.LONG] * 4).encode())
        program = self.start_loaded()
        self.assertEqual(program.text("lbl_news_3"), self.LONG[:SHOWN])
        self.expect_window_whole(program)

    def test_catalog(self):
        self.serve("usb-list.csv", catalog(changes={
            1: row(self.LONG, "sr100.bmp", "sr200.abs", self.LONG, self.LONG, {0: ("sr200_at.sdx", self.LONG)})}))
        program = self.start_loaded()
        self.assertEqual(program.text("lbl_settstand"), ("Stand: " + self.LONG)[:SHOWN])
        self.expect_window_whole(program)
        program.click("cmdChoose")
        program.wait_message(title=CONFIRMATION)
        self.expect_window_whole(program)
        program.answer("OK")
        program.wait_message(title=SUCCESS)
        program.answer("OK")
        self.expect_stick({"sr200.abs": FIRMWARE, "sr200_at.sdx": SETTINGS} | COPIED)

    # What 100 KB of text can be: fields of the news, of a receiver in the catalog.
    SHAPES = {"one word": "W" * 100_000, "words": "Wort " * 20_000, "lines": "a\n" * 50_000,
              "accents": "Ü" * 100_000, "invisible": "\u00ad" * 100_000}
    DEAREST = 4 * SLOWNESS  # times what ordinary texts take of the processor, on this machine at this time

    def cost(self):
        """Seconds of the processor for loading the texts, and for showing them anew at two widths."""
        program = self.start()
        before = program.processor_seconds()
        self.wait_loaded(program)
        for width in (1100, 1300):
            self.show_anew(program, width)
        found = program.processor_seconds() - before
        self.close(program)
        return found

    @each(SHAPES)
    def test_what_it_costs(self, text):
        ordinary = self.cost()
        encoded = text.encode("cp1252")
        self.serve("usb-news.csv", b";".join([encoded] * 4))
        self.serve("usb-list.csv", catalog(changes={1: row("SR", "sr100.bmp", "sr200.abs", text, text,
                                                           {0: ("sr200_at.sdx", text)})}))
        long = self.cost()
        self.assertLess(long, self.DEAREST * ordinary)

    def show_anew(self, program, width):
        program.resize(width, 700)
        program.get("cmdChoose")
        program.screenshot(self.home / "picture.png")

    @each({name: text for name, text in SHAPES.items() if name != "lines"})
    def test_what_a_question_costs(self, name):
        ordinary = self.cost()
        self.serve("usb-list.csv", catalog(changes={1: row(name, "sr100.bmp", "sr200.abs")}))
        program = self.start_loaded()
        before = program.processor_seconds()
        program.click("cmdChoose")
        program.wait_message(title=CONFIRMATION)
        self.assertLess(program.processor_seconds() - before, ordinary)
        lines = program.message()["text"].split("\n")
        self.assertEqual((lines[0], lines[-1]), ("Sie haben folgende Update Optionen gewählt:", "Updaten mit OK ?"))
        self.assertLess(len(lines[1]), 300)
        self.assertLess(max(window["geometry"][2] for window in program.windows().values()), 1000)
        self.expect_window_whole(program)
        program.answer("Abbrechen")


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
