"""What an update server can do wrong. Nothing of it may hang or crash the program, or leave the stick half tended."""

import socket
import unittest

from case import (CONFIRMATION, CONNECTION_ERROR, FIRMWARE, SETTINGS, SUCCESS, WindowCase, catalog, row, side_by_side)
from fault_server import RefusedPort, body, chunked, generated, missing, redirect, reset, slow, truncated

NO_CONNECTION = ("Es konnte keine Internet-Verbindung hergestellt werden!\n\n"
                 "Die Internet Updatefunktion kann nicht verwendet werden!\n"
                 "Prüfen Sie Ihren Internetanschluss und starten Sie das Programm später nochmal.")
NO_CONNECTION_IN_JOB = ("Es konnte keine Verbindung hergestellt werden!\n"
                        "Prüfen Sie Ihre Internetverbindung oder versuchen es später nochmal.")
OUTDATED = ("Eine neue Version des Programmes ist verfügbar!\n\n"
            "Installieren Sie die akutelle Version des Programmes.\n"
            "Die Updateseite wird automatisch geöffnet.")
ERROR_PAGE = b"<html><body>404: there is no such file here</body></html>"
SHIPPED = {"autorun.inf": None, "orvantastick.ico": None}
TOO_LARGE = 300 * 1024**2


class Faults(WindowCase):
    def expect_no_connection(self, program):
        self.drop_message(program, CONNECTION_ERROR, NO_CONNECTION, 16)
        program.wait_for("cmdChoose", "text", "Keine Verbindung")
        self.assertFalse(program.get("cmdChoose")["enabled"])
        panel = program.get("StatusBar1_2")
        self.assertEqual((panel["text"], panel["enabled"], panel["toolTip"]),
                         ("Keine Internetverbindung", True, "Überprüfen Sie Ihren Internetanschluss."))
        self.assertNotIn("usb-news.csv", self.downloads())

    def expect_outdated(self, program):
        self.drop_message(program, "Version abgelaufen.", OUTDATED, 16)
        self.assertEqual(program.exit_status(), 0)
        self.assertFalse((program.folder / "Settings.ini").exists())  # it ended at once
        program._until(self.opened, 20, lambda: "no browser was started")
        self.assertEqual(self.opened(), [self.server.url()])
        self.assertNotIn("usb-news.csv", self.downloads())


class Unreachable(Faults):
    def test_a_host_that_nobody_knows(self):
        self.expect_no_connection(self.start(server="http://nowhere.invalid"))

    def test_a_refused_connection(self):
        refused = RefusedPort()
        self.addCleanup(refused.close)
        program = self.start(server=f"http://127.0.0.1:{refused.port}")
        self.expect_no_connection(program)
        # Everything else goes on.
        program.click("cmdSearch")
        program.wait_for("cmdChoose", "text", "Starte Update")
        self.assertTrue(program.get("cmdChoose")["enabled"])
        self.assertFalse(any(program.get(f"Firm_Option_{i}")["enabled"] for i in range(9)))
        program.click("cmdChoose")  # there is no catalog to look into
        self.expect_error(program, 9)
        self.expect_stick({})

    def test_a_server_that_hangs_up(self):
        self.serve("usb-version.txt", lambda handler: handler.connection.shutdown(socket.SHUT_RDWR))
        self.expect_no_connection(self.start())

    def test_a_server_that_goes_before_the_job(self):
        program = self.start_loaded()
        self.server.stop()
        self.confirm(program)
        self.drop_message(program, CONNECTION_ERROR, NO_CONNECTION_IN_JOB, 16)
        self.expect_stick({})
        self.assertTrue(program.get("cmdChoose")["enabled"])
        self.close(program)

    def test_redirects_without_end(self):
        self.serve("usb-version.txt", redirect("/orvanta/download/usb-version.txt"))
        self.expect_no_connection(self.start())

    def test_a_redirect_to_a_file_of_this_machine(self):
        version = self.home / "version"
        version.write_bytes(b"1.5")
        self.serve("usb-version.txt", redirect(version.as_uri()))
        self.expect_no_connection(self.start())

    def test_an_address_that_is_a_file_of_this_machine(self):
        self.expect_no_connection(self.start(server="file:///etc"))


class Version(Faults):
    def expect_outdated_with(self, version):
        self.serve("usb-version.txt", version)
        self.expect_outdated(self.start())

    def test_a_line_end_behind_it(self):
        self.expect_outdated_with(b"1.5\r\n")

    def test_another_digit(self):
        self.expect_outdated_with(b"1.50")

    def test_an_error_page(self):
        self.expect_outdated_with(missing())

    def test_cut_off(self):
        self.expect_outdated_with(truncated(b"1.", 3))

    def test_reset(self):
        self.expect_outdated_with(reset(b"1.", 3))

    def test_nothing(self):
        self.serve("usb-version.txt", b"")
        self.expect_no_connection(self.start())

    def test_complete_before_the_connection_breaks(self):
        self.serve("usb-version.txt", reset(b"1.5", 100))
        self.start_loaded()

    def test_in_pieces(self):
        self.serve("usb-version.txt", slow(b"1.5", 1, 0.2))
        self.start_loaded()

    def test_without_end(self):
        self.serve("usb-version.txt", generated(TOO_LARGE))
        self.expect_error(self.start(), 6)


class News(Faults):
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


class Catalog(Faults):
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

    def test_cut_off(self):
        self.expect_error_with(9, truncated(catalog()[:300], len(catalog())))

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
        self.expect_stick({"sr200.abs": FIRMWARE, "sr200_at.sdx": SETTINGS} | SHIPPED)

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


class LongFields(Faults):
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
        self.assertEqual(program.text("lbl_news_3"), self.LONG)
        self.expect_window_whole(program)

    def test_catalog(self):
        self.serve("usb-list.csv", catalog(changes={
            1: row(self.LONG, "sr100.bmp", "sr200.abs", self.LONG, self.LONG, {0: ("sr200_at.sdx", self.LONG)})}))
        program = self.start_loaded()
        self.assertEqual(program.text("lbl_settstand"), "Stand: " + self.LONG)
        self.expect_window_whole(program)
        program.click("cmdChoose")
        program.wait_message(title=CONFIRMATION)
        self.expect_window_whole(program)
        program.answer("OK")
        program.wait_message(title=SUCCESS)
        program.answer("OK")
        self.expect_stick({"sr200.abs": FIRMWARE, "sr200_at.sdx": SETTINGS} | SHIPPED)


class Download(Faults):
    """The job's own downloads are not tested: what came is what is written."""

    def expect_written(self, firmware, settings, firmware_bytes, settings_bytes):
        self.serve("sr200.abs.txt", firmware)
        self.serve("sr200_at.sdx.txt", settings)
        self.run_job(self.start_loaded())
        self.expect_stick({"sr200.abs": firmware_bytes, "sr200_at.sdx": settings_bytes} | SHIPPED)

    def test_reset_in_the_middle(self):
        self.expect_written(reset(FIRMWARE[:5000], 9000), reset(SETTINGS[:100], 9000), FIRMWARE[:5000], SETTINGS[:100])

    def test_cut_off(self):
        self.expect_written(truncated(FIRMWARE[:5000], 9000), truncated(b"", 9000), FIRMWARE[:5000], b"")

    def test_chunks_cut_off(self):
        self.expect_written(chunked(FIRMWARE), chunked(SETTINGS, cut=True), FIRMWARE, SETTINGS + b"half")

    def test_error_pages(self):
        self.expect_written(missing(), missing(), ERROR_PAGE, ERROR_PAGE)

    def test_redirects(self):
        secret = self.home / "secret"
        secret.write_bytes(b"not for anybody")
        self.expect_written(redirect(secret.as_uri()), redirect("/orvanta/download/sr200_at.sdx.txt"), b"", b"")

    def test_a_redirect_that_leads_somewhere(self):
        self.server.set("/elsewhere", FIRMWARE)
        self.expect_written(redirect("/elsewhere", 301), redirect(self.server.url("/elsewhere")), FIRMWARE, FIRMWARE)

    def test_nothing(self):
        self.expect_written(b"", b"", b"", b"")

    def test_large(self):
        large = bytes(range(256)) * (40 * 1024**2 // 256)
        self.expect_written(large, b"small", large, b"small")

    def test_a_list_without_end_as_connection_test(self):
        program = self.start_loaded()
        self.serve("usb-list.csv", generated(TOO_LARGE))
        self.confirm(program)
        self.expect_error(program, 6)
        self.expect_stick({})

    def test_an_error_page_as_connection_test(self):
        program = self.start_loaded()
        self.serve("usb-list.csv", body(b"503", 503))
        self.run_job(program)


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
