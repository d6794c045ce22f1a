"""A handful of what an update server can do wrong."""

import unittest

from windows_case import WindowsCase, only

import server_faults_test
import server_texts_test
from case import COPIED
from fault_server import reset
from server_files import FIRMWARE, SETTINGS
from side_by_side import side_by_side


class Unreachable(WindowsCase, only(server_faults_test.Unreachable, "test_a_refused", "test_a_server_that_hangs_up",
                                    "test_a_server_that_goes", "test_redirects_without_end",
                                    "test_an_address_that_is_a_file")):
    pass


class Download(WindowsCase, only(server_faults_test.Download, "test_cut_off", "test_chunks",
                                 "test_error_pages", "test_a_redirect_that", "test_nothing", "test_large",
                                 "test_a_cut_list")):
    def test_reset_in_the_middle(self):
        """What had come may be lost with the connection; nothing else is written."""
        self.serve("sr200.abs.txt", reset(FIRMWARE[:5000], 9000))
        self.serve("sr200_at.sdx.txt", reset(SETTINGS[:100], 9000))
        self.run_job(self.start_loaded())
        files = self.stick_files()
        self.assertEqual(set(files), {"sr200.abs", "sr200_at.sdx", *COPIED})
        self.assertTrue(FIRMWARE[:5000].startswith(files["sr200.abs"]))
        self.assertTrue(SETTINGS[:100].startswith(files["sr200_at.sdx"]))


class Version(WindowsCase, only(server_texts_test.Version, "test_another_digit", "test_an_error_page", "test_nothing",
                                "test_in_pieces", "test_cut_off", "test_complete", "test_chunks")):
    def opened(self):
        """The shell writes the slash of the root behind an address without a path."""
        return [address.rstrip("/") for address in super().opened()]


class TooLarge(WindowsCase, only(server_faults_test.TooLarge, "test_an_announced_length_of")):
    pass


class Addresses(WindowsCase, server_faults_test.Addresses):
    pass


class News(WindowsCase, only(server_texts_test.News, "test_three_fields", "test_cut_off", "test_empty_fields",
                             "test_characters_that_are_not", "test_bytes_without", "test_markup")):
    pass


class Catalog(WindowsCase, only(server_texts_test.Catalog, "test_eight_lines", "test_cut_off")):
    pass


class LongFields(WindowsCase, only(server_texts_test.LongFields, "test_news", "test_what")):
    def show_anew(self, program, width):
        """Its border is fixed."""
        program.minimize()
        program.wait_until(lambda: program.windows()["frmMain"]["minimized"], what="the icon")
        program.menu("mnuPopup_0")
        program.wait_until(lambda: not program.windows()["frmMain"]["minimized"], what="the window")


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
