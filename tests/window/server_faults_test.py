"""What an update server can do wrong. Nothing of it may hang or crash the program, or leave the stick half tended."""

import socket
import unittest

from case import CONNECTION_ERROR, COPIED, GIB, MIB, WindowCase
from fault_server import RefusedPort, body, chunked, generated, missing, redirect, reset, truncated
from server_files import FIRMWARE, SETTINGS, VERSION, catalog
from side_by_side import side_by_side

NO_CONNECTION_IN_JOB = ("Es konnte keine Verbindung hergestellt werden!\n"
                        "Prüfen Sie Ihre Internetverbindung oder versuchen es später nochmal.")
ERROR_PAGE = b"<html><body>404: there is no such file here</body></html>"
TOO_LARGE = 300 * 1024**2


class Unreachable(WindowCase):
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
        program.wait_message(title=CONNECTION_ERROR)
        self.assertEqual(program.text("prgUpdate"), "", "nothing goes on any more")
        self.drop_message(program, CONNECTION_ERROR, NO_CONNECTION_IN_JOB, 16)
        self.expect_stick({})
        self.assertTrue(program.get("cmdChoose")["enabled"])
        self.close(program)

    def test_redirects_without_end(self):
        self.serve("usb-version.txt", redirect("/orvanta/download/usb-version.txt"))
        self.expect_no_connection(self.start())

    def test_a_redirect_to_a_file_of_this_machine(self):
        version = self.home / "version"
        version.write_bytes(VERSION)
        self.serve("usb-version.txt", redirect(version.as_uri()))
        self.expect_no_connection(self.start())

    def test_an_address_that_is_a_file_of_this_machine(self):
        self.expect_no_connection(self.start(server="file:///etc"))


class Download(WindowCase):
    """The job's own downloads are not tested: what came is what is written."""

    def expect_written(self, firmware, settings, firmware_bytes, settings_bytes):
        self.serve("sr200.abs.txt", firmware)
        self.serve("sr200_at.sdx.txt", settings)
        self.run_job(self.start_loaded())
        self.expect_stick({"sr200.abs": firmware_bytes, "sr200_at.sdx": settings_bytes} | COPIED)

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

    def test_a_cut_list_as_connection_test(self):
        program = self.start_loaded()
        self.serve("usb-list.csv", truncated(catalog()[:300], len(catalog())))
        self.confirm(program)
        self.drop_message(program, CONNECTION_ERROR, NO_CONNECTION_IN_JOB, 16)
        self.expect_stick({})
        self.close(program)

    def test_an_error_page_as_connection_test(self):
        program = self.start_loaded()
        self.serve("usb-list.csv", body(b"503", 503))
        self.run_job(program)


class TooLarge(WindowCase):
    """What the stick cannot hold is not fetched to its end, and nothing of it is written."""

    def expect_full(self, free=None):
        program = self.start_loaded(drives=self.drives(free=free))
        self.confirm(program)
        self.expect_error(program, 61)
        self.expect_stick({})

    def test_an_announced_length_of_five_gigabytes(self):
        self.serve("sr200.abs.txt", generated(5 * GIB))
        self.expect_full()

    def test_an_announced_length_beyond_the_free_space(self):
        self.serve("sr200.abs.txt", truncated(FIRMWARE, 6 * MIB + 1))
        self.expect_full(6 * MIB)

    def test_chunks_beyond_the_free_space(self):
        self.serve("sr200.abs.txt", chunked(bytes(7 * MIB), piece=MIB))
        self.expect_full(6 * MIB)

    def test_a_list_beyond_the_free_space(self):
        self.serve("sr200_at.sdx.txt", truncated(SETTINGS, 6 * MIB + 1))
        program = self.start_loaded(drives=self.drives(free=6 * MIB))
        self.confirm(program)
        self.expect_error(program, 61)
        self.expect_stick({"sr200.abs": FIRMWARE})

    def test_a_file_that_just_fits_with_the_one_it_replaces(self):
        (self.stick / "sr200.abs").write_bytes(b"old" * 1000)
        firmware = bytes(6 * MIB + 3000)
        self.serve("sr200.abs.txt", firmware)
        self.run_job(self.start_loaded(drives=self.drives(free=6 * MIB)))
        self.expect_stick({"sr200.abs": firmware, "sr200_at.sdx": SETTINGS} | COPIED)


class Addresses(WindowCase):
    """Server.ini is read when the program starts, and not again."""

    def test_a_file_that_goes_meanwhile(self):
        program = self.start_loaded()
        (program.folder / "Server.ini").unlink()
        self.run_job(program)
        self.expect_stick({"sr200.abs": FIRMWARE, "sr200_at.sdx": SETTINGS} | COPIED)

    def test_a_file_that_cannot_be_read(self):
        program = self.start(start=False)
        (program.folder / "Server.ini").unlink()
        (program.folder / "Server.ini").mkdir()
        program.start()
        self.expect_error(program, 75, self.program_path(program, "Server.ini") + "\n")
        self.assertEqual(self.downloads(), [])


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
