"""The main window by keyboard, its menu, its place on the screen; what has no name on a stick."""

import unittest

from windows_case import WindowsCase, only

import hostile_names_test
import presentation_test as shared
from case import CONFIRMATION
from server_files import NO_NAMES
from side_by_side import each, side_by_side

SMALL = (1366, 768)


class Keyboard(WindowsCase, only(shared.Presentation, "test_every_button", "test_enter", "test_the_arrow")):
    def test_the_tab_key_leads_from_the_stick_to_the_start(self):
        program = self.start_loaded()
        program.focus("cmdSearch")
        order = []
        while len(order) < 30:
            focus = program.wait_until(lambda: self.focus(program, order), what="the next part")
            if focus in order:
                break
            order.append(focus)
            program.type("", "Tab")
        self.assertEqual(order, shared.STICK + ["Firm_Option_1", "Sett_Option_0", "cmdChoose"])

    def focus(self, program, order):
        """The part that has the focus, once it has moved on."""
        found = [name for name, part in program.all("frmMain").items() if part["focus"]]
        return found[0] if found and found[0] not in order[-1:] else None

    def test_the_tab_key_leads_back(self):
        program = self.start_loaded()
        program.focus("cmdSearch")
        for name in ("cmdChoose", "Sett_Option_0", "Firm_Option_1", "cmdtest"):
            program.type("", "Shift+Tab")
            program.wait_for(name, "focus", True)

    def test_the_blank_key_presses(self):
        program = self.start_loaded()
        program.focus("chkAuto")
        program.type("", "Space")
        program.wait_for("chkAuto", "checked", True)
        program.focus("cmdChoose")
        program.type("", "Space")
        program.wait_message(title=CONFIRMATION)

    def test_a_disabled_option_is_deaf(self):
        program = self.start_loaded()
        program.click("Firm_Option_0")
        program.type("", "Alt+1")
        self.mark_of_input(program)
        self.expect(program, {"Firm_Option_0.checked": False, "Firm_Option_1.checked": True})

    def test_the_read_only_box(self):
        program = self.start_loaded()
        self.assertTrue(program.get("txtFAT")["readOnly"])
        program.focus("txtFAT")
        program.type("x", "Delete", "Backspace")
        self.mark_of_input(program)
        self.assertEqual(program.text("txtFAT"), "NTFS")


class Menu(WindowsCase):
    """Of the tray icon; nothing opens it, so its commands come from outside."""

    def test_restoring(self):
        program = self.start()
        program.minimize()
        program.wait_until(lambda: program.windows()["frmMain"]["minimized"])
        program.menu("mnuPopup_0")
        program.wait_until(lambda: not program.windows()["frmMain"]["minimized"])
        self.assertTrue(program.windows()["frmMain"]["visible"])

    def test_opening_the_stick(self):
        program = self.start()
        program.menu("mnuPopup_1")
        program.wait_until(lambda: any(kind == "ExplorerWClass" for kind, _ in program.other_windows()))

    def test_opening_one_of_two_does_nothing(self):
        other = self.home / "F"
        other.mkdir()
        drives = self.drives()
        drives.insert(2, type(drives[1])("F", 2, other, label="OTHER"))
        program = self.start(drives=drives)
        program.wait_window("frmAuswahl")
        program.click("cmdOK", "frmAuswahl")
        program.wait_window("frmMain")
        program.menu("mnuPopup_1")
        self.mark_of_input(program)
        self.assertEqual([kind for kind, _ in program.other_windows() if kind == "ExplorerWClass"], [])

    def test_the_end_is_none(self):
        program = self.start()
        program.menu("mnuPopup_3")
        program.menu("mnuPopup_2")
        self.mark_of_input(program)
        self.assertTrue(program.running())
        self.close(program)


class Place(WindowsCase):
    def test_it_fits_a_small_screen(self):
        program = self.start_loaded()
        x, y, width, height = program.windows()["frmMain"]["geometry"]
        self.assertTrue(x >= 0 and y >= 0 and x + width <= SMALL[0] and y + height <= SMALL[1])
        outside = {name: part["geometry"] for name, part in program.all("frmMain").items()
                   if part["geometry"][0] < 0 or part["geometry"][1] < 0
                   or part["geometry"][0] + part["geometry"][2] > width
                   or part["geometry"][1] + part["geometry"][3] > height}
        self.assertEqual(outside, {})


class Names(WindowsCase, only(hostile_names_test.Names, "test_file_of_the_programs_own", "test_list_called")):
    CHOSEN = ("device", "port with a raised digit", "path on a drive", "path on the stick", "stream",
              "folder that is not there", "question mark", "quote", "line feed", "dots")

    def drives(self, **stick):
        return super().drives(label=None, **stick)

    def expect_untouched(self):
        self.assertEqual(self.stick_files(), {})

    @each({name: NO_NAMES[name] for name in CHOSEN})
    def test_firmware_without_a_name(self, name):
        self.serve_row("SR", "sr100.bmp", name)
        self.expect_name_refused(name)
        self.expect_untouched()


LONG = "Diese Meldung braucht mehrere Zeilen, weil sie alles erzählt, was es zu erzählen gibt. "


class LongTexts(WindowsCase):
    """What has no room can be scrolled to, by keys and by mouse; a long text gets the room that short ones leave."""

    def start_with(self, *news):
        self.serve("usb-news.csv", ";".join(news).encode("cp1252"))
        program = self.start_loaded()
        return program

    def look(self):
        """What the screen shows."""
        path = self.home / "look.png"
        self.machine.screenshot(path)
        return path.read_bytes()

    def heights(self, program):
        return [program.get(f"lbl_news_{i}")["geometry"][3] for i in range(4)]

    def test_short_ones_leave_their_room(self):
        program = self.start_with("Kurz", LONG, "Kurz", "Kurz")
        short, long, other, _ = self.heights(program)
        self.assertEqual(short, other)
        self.assertGreaterEqual(long, 2 * short)
        self.assertEqual(program.get("lbl_news_1")["toolTip"], "")  # nothing is cut

    def test_one_too_long_is_scrolled(self):
        program = self.start_with("Kurz", LONG * 9, "Kurz", "Kurz")
        for _ in range(30):
            if program.get("lbl_news_1")["focus"]:
                break
            program.type("", "Tab")
        self.assertTrue(program.get("lbl_news_1")["focus"], "the tab key does not stop there")
        looks = [self.look()]
        _, _, width, height = program.get("lbl_news_1")["geometry"]
        arrow = (width - 8, height - 8)
        for scroll in (lambda: program.type("", "End"), lambda: program.type("", "Home"),
                       lambda: program.mouse("lbl_news_1", ("move", *arrow), ("press", *arrow), ("release", *arrow))):
            scroll()
            program.wait_until(lambda: self.look() != looks[-1], what="another part of the text")
            looks.append(self.look())


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
