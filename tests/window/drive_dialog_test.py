"""The dialog that asks which one of several sticks is meant."""

import time
import unittest

from side_by_side import each, side_by_side
from sticks import SticksCase

QUESTION = ("Es wurden mehrere Laufwerke identifiziert.     "
            "Bitte wählen Sie ihr gewünschtes Laufwerk aus.")
DIALOG = "frmAuswahl"
COLUMNS = [120, 133]  # 1800 and 2000 twips at 96 dots per inch
LARGE = (2732, 1536)


class DialogCase(SticksCase):
    def start_asking(self, letters="EFG", **arguments):
        """The program asks already while it loads."""
        program = self.start(drives=self.table(letters), **arguments)
        program.wait_window(DIALOG)
        return program

    def gone(self, program):
        program.wait_until(lambda: DIALOG not in program.windows(), what="the dialog's end")
        program.wait_window("frmMain")

    def row(self, program):
        return program.get("ListView1", DIALOG)["row"]

    def expect_choice(self, program, letter):
        self.gone(program)
        self.wait_stick(program, letter)


class Appearance(DialogCase):
    def test_what_it_shows(self):
        program = self.start_asking()
        window = program.windows()[DIALOG]
        self.assertEqual((window["title"], window["modal"], window["hasIcon"]), ("USB Stick Tool", True, True))
        self.expect(program, {"Label1.text": QUESTION, "cmdOK.text": "Verwenden", "cmdCancel.text": "Abbruch",
                              "ListView1.headers": ["Laufwerksbuchstabe", "Laufwerksbezeichnung"],
                              "ListView1.rows": [["E:\\", "STICK E"], ["F:\\", "STICK F"], ["G:\\", "STICK G"]],
                              "ListView1.columnWidths": COLUMNS, "ListView1.row": 0, "ListView1.focus": True,
                              "ListView1.accessibleName": "Gefundene Laufwerke",
                              "cmdOK.shortcut": "Alt+V", "cmdCancel.shortcut": "Alt+A"})
        self.picture(program, "drive-dialog")

    def test_labels_are_shown_as_they_stand(self):
        labels = {"E": "<b>fett</b>", "F": "Müll & Co", "G": ""}
        program = self.start(drives=self.table("EFG", **labels))
        program.wait_window(DIALOG)
        self.assertEqual([cells[1] for cells in program.get("ListView1")["rows"]], list(labels.values()))

    def test_it_asks_in_the_middle_of_the_screen(self):
        x, y, width, height = self.start_asking().windows()[DIALOG]["geometry"]
        frame = 30  # which may be there or not
        self.assertLess(abs(2 * x + width - 1366) + abs(2 * y + height - 768), 2 * frame)

    def test_sticks_without_a_label_are_told_apart(self):
        drives = self.table("EF", E="", F="")
        drives[1].values |= {"FileSystem": "FAT32", "Total": 4 * 1024**3}
        drives[2].values |= {"FileSystem": "exFAT", "Total": 512 * 1024**2}
        program = self.start(drives=drives)
        program.wait_window(DIALOG)
        tips = [tip.replace("4,00", "4.00") for tip in program.get("ListView1", DIALOG)["rowToolTips"]]
        self.assertEqual(tips, ["Größe: 4.00 GB, Dateisystem: FAT32", "Größe: 512 MB, Dateisystem: exFAT"])

    def expect_whole(self, program):
        window = program.windows()[DIALOG]["geometry"]
        for name in ("Label1", "ListView1", "cmdOK", "cmdCancel"):
            part = program.get(name, DIALOG)
            x, y, width, height = part["geometry"]
            self.assertGreaterEqual(width, part["wantedSize"][0], name)
            self.assertGreaterEqual(height, part["wantedSize"][1], name)
            self.assertTrue(x >= 0 and y >= 0 and x + width <= window[2] and y + height <= window[3], name)

    def test_many_sticks_can_be_scrolled(self):
        program = self.start_asking("DEFGHIJKLMN")
        self.expect_whole(program)
        program.click_row("ListView1", 10, DIALOG)
        program.click("cmdOK", DIALOG)
        self.expect_choice(program, "N")

    @each({"usual": {}, "dark": {"dark": True}, "large": {"font_size": 18}, "large and dark":
           {"font_size": 18, "dark": True}})
    def test_every_look(self, look):
        program = self.start_asking(screen=LARGE)
        program.appearance(**look)
        program.wait_until(lambda: self._settled(program, look), what="the layout")
        self.expect_whole(program)
        self.picture(program, "drive-dialog-" + ("-".join(f"{k}-{v}" for k, v in look.items()) or "usual"), DIALOG)

    def _settled(self, program, look):
        """Columns grow with the letters; nothing else tells that the new ones are in use."""
        widths = program.get("ListView1", DIALOG)["columnWidths"]
        return widths == ([240, 267] if "font_size" in look else COLUMNS)

    def test_twice_the_resolution(self):
        program = self.start_asking(screen=LARGE, environment={"QT_SCALE_FACTOR": "2"})
        self.expect_whole(program)
        self.assertEqual(program.get("ListView1", DIALOG)["columnWidths"], COLUMNS)  # in logical pixels
        self.picture(program, "drive-dialog-200", DIALOG)


class Hesitation(DialogCase):
    """The user takes longer than the update check waits for after the start."""

    LONGER = 5.5  # seconds

    def test_the_check_comes_after_the_choice(self):
        program = self.start_asking()
        time.sleep(self.LONGER)
        self.assertEqual(self.downloads(), [])
        self.assertIsNone(program.message())
        chosen = time.monotonic()
        program.click("cmdOK", DIALOG)
        self.expect_choice(program, "E")
        self.expect(program, {"cmdChoose.text": "Suche Updates...", "StatusBar1_2.text": "Suche nach Updates..."})
        self.wait_loaded(program)
        self.assertGreater(time.monotonic() - chosen, 3.9)
        self.expect(program, {"cmdChoose.text": "Starte Update", "cmdChoose.enabled": True})

    def test_no_box_comes_before_there_is_a_window(self):
        program = self.start_asking(server="http://127.0.0.1:9")  # nobody listens there
        time.sleep(self.LONGER)
        self.assertIsNone(program.message())
        program.click("cmdCancel", DIALOG)
        self.gone(program)
        self.expect_no_connection(program)


class Ways(DialogCase):
    """Every way out of it."""

    def test_the_first_one_is_marked(self):
        program = self.start_asking()
        program.click("cmdOK", DIALOG)
        self.expect_choice(program, "E")

    def test_a_click_and_the_button(self):
        program = self.start_asking()
        program.click_row("ListView1", 1, DIALOG)
        program.wait_for("ListView1", "row", 1)
        self.assertIn(DIALOG, program.windows())
        program.click("cmdOK", DIALOG)
        self.expect_choice(program, "F")

    def test_a_double_click(self):
        program = self.start_asking()
        program.click_row("ListView1", 2, DIALOG, clicks=2)
        self.expect_choice(program, "G")

    @each({"down": (["Down"], "F"), "down and up": (["Down", "Down", "Up"], "F"), "end": (["End"], "G"),
           "home": (["End", "Home"], "E"), "beyond the end": (["Down"] * 5, "G"), "none": ([], "E")})
    def test_keys_and_enter(self, keys, letter):
        program = self.start_asking()
        program.type("", *keys, "Return")
        self.expect_choice(program, letter)

    def test_keys_and_the_button(self):
        program = self.start_asking()
        program.type("", "Down")
        program.wait_for("ListView1", "row", 1)
        program.click("cmdOK", DIALOG)
        self.expect_choice(program, "F")

    def test_letters_of_the_buttons(self):
        program = self.start_asking()
        program.type("", "Down", "Alt+V")
        self.expect_choice(program, "F")
        program.click("cmdSearch")
        program.wait_window(DIALOG)
        program.type("", "Down", "Alt+A")
        self.expect_choice(program, "E")

    def test_tab_order(self):
        program = self.start_asking()
        for name in ("ListView1", "cmdOK", "cmdCancel", "ListView1"):
            program.wait_for(name, "focus", True)
            program.type("", "Tab")

    @each({"button": lambda program: program.click("cmdCancel", DIALOG),
           "escape": lambda program: program.type("", "Escape"),
           "close box": lambda program: program.close(DIALOG),
           "enter on the button": lambda program: (program.focus("cmdCancel", DIALOG), program.type("", "Return"))})
    def test_cancelled(self, way):
        program = self.start_asking()
        program.click_row("ListView1", 2, DIALOG)
        way(program)
        self.expect_choice(program, "E")  # the search takes the first one then

    @each({"cancelled": "cmdCancel", "chosen": "cmdOK"})
    def test_sticks_that_go_while_it_asks(self, button):
        program = self.start_asking()
        program.click("cmdOK", DIALOG)
        self.gone(program)
        self.wait_loaded(program)
        program.click("cmdSearch")
        program.wait_window(DIALOG)
        program.set_drives(self.table())
        program.click(button, DIALOG)
        self.gone(program)
        program.wait_for("StatusBar1_1", "text", "No Stick")
        self.expect(program, {"cmdChoose.text": "USB Stick einstecken", "cmdChoose.enabled": False})

    def test_a_click_beside_the_rows_changes_nothing(self):
        program = self.start_asking()
        program.click_row("ListView1", 1, DIALOG)
        _, _, width, height = program.get("ListView1", DIALOG)["geometry"]
        point = (width - 20, height - 20)
        program.mouse("ListView1", ("press", *point), ("release", *point), ("press", *point), ("release", *point),
                      window=DIALOG)
        self.assertEqual(self.row(program), 1)
        program.click("cmdOK", DIALOG)
        self.expect_choice(program, "F")

    def test_the_second_time_another_one(self):
        program = self.start_asking("EF")
        program.click("cmdOK", DIALOG)
        self.expect_choice(program, "E")
        program.click("cmdSearch")
        program.wait_window(DIALOG)
        self.assertEqual(self.row(program), 0)
        program.click_row("ListView1", 1, DIALOG)
        program.click("cmdOK", DIALOG)
        self.expect_choice(program, "F")

    def test_nothing_else_works_meanwhile(self):
        program = self.start_asking()
        program.click("cmdOK", DIALOG)
        self.gone(program)
        program.click("cmdSearch")
        program.wait_window(DIALOG)
        program.click("chkAuto", "frmMain")
        program.click("cmdtest", "frmMain")
        self.assertEqual(set(program.windows()), {"frmMain", DIALOG})
        self.assertFalse(program.get("chkAuto", "frmMain")["checked"])
        self.picture(program, "drive-dialog-over-main")
        program.click("cmdOK", DIALOG)
        self.gone(program)
        self.close(program)

    def test_the_main_button_works_on_the_chosen_one(self):
        program = self.start_asking()
        program.click_row("ListView1", 1, DIALOG, clicks=2)
        self.gone(program)
        self.wait_loaded(program)
        self.run_job(program)
        self.assertTrue((self.folder("F") / "sr200.abs").exists())
        self.assertEqual(list(self.folder("E").iterdir()) + list(self.folder("G").iterdir()), [])


class Columns(DialogCase):
    """Nothing makes them wider or narrower."""

    def point(self, program, divider):
        """On the line behind that column, in the header."""
        self.assertEqual(program.get("ListView1", DIALOG)["columnWidths"], COLUMNS)
        return 1 + sum(COLUMNS[: divider + 1]) - 1, 10

    def expect_kept(self, program):
        part = program.get("ListView1", DIALOG)
        self.assertEqual(part["columnWidths"], COLUMNS)
        self.assertEqual(part["headers"], ["Laufwerksbuchstabe", "Laufwerksbezeichnung"])
        self.assertEqual(part["row"], 0)

    @each({"first": 0, "second": 1})
    def test_dragging_a_divider(self, divider):
        program = self.start_asking()
        x, y = self.point(program, divider)
        for offset in (-3, 0, 3):
            program.mouse("ListView1", ("move", x + offset, y), ("press", x + offset, y), ("move", x + 20, y),
                          ("move", x + 50, y), ("move", x + 80, y), ("release", x + 80, y), window=DIALOG)
        self.expect_kept(program)

    @each({"first": 0, "second": 1})
    def test_double_click_on_a_divider(self, divider):
        program = self.start_asking()
        x, y = self.point(program, divider)
        for offset in (-2, 0, 2):
            click = ("press", x + offset, y), ("release", x + offset, y)
            program.mouse("ListView1", ("move", x + offset, y), *click, *click, window=DIALOG)
        self.expect_kept(program)

    def test_dragging_a_column_elsewhere(self):
        program = self.start_asking()
        program.mouse("ListView1", ("press", 40, 10), ("move", 100, 10), ("move", 200, 10), ("release", 240, 10),
                      window=DIALOG)
        self.expect_kept(program)

    def test_keys(self):
        program = self.start_asking()
        program.type("", "Ctrl++", "Right", "Left", "Ctrl+Right")
        self.expect_kept(program)

    def test_a_wider_window(self):
        program = self.start_asking()
        program.resize(900, 500, DIALOG)
        program.wait_until(lambda: program.get("ListView1", DIALOG)["geometry"][2] > 600)
        self.expect_kept(program)


class Nested(DialogCase):
    """Sticks that come and go while it is open."""

    def start_nested(self):
        """One stick is shown first, so that the no-stick state tells of a pulled one."""
        program = self.start_detecting("E")
        self.wait_stick(program, "E")
        self.plug(program, "EF")
        program.wait_window(DIALOG)
        return program

    def dialogs(self, program):
        windows = program.request("windows")["windows"]
        return [w for w in windows if w["name"] == DIALOG and w["visible"]]

    def test_a_third_one_asks_again(self):
        program = self.start_nested()
        self.plug(program, "EFG")
        program.wait_until(lambda: len(self.dialogs(program)) == 2, what="the second dialog")
        self.picture(program, "drive-dialog-nested")
        self.assertEqual(len(program.get("ListView1")["rows"]), 3)  # the one in front
        program.click_row("ListView1", 2)
        program.click("cmdOK")
        program.wait_until(lambda: len(self.dialogs(program)) == 1, what="the end of the second dialog")
        self.wait_stick(program, "G")
        program.wait_until(lambda: len(program.get("ListView1")["rows"]) == 2)
        program.click_row("ListView1", 1)
        program.click("cmdOK")
        self.expect_choice(program, "F")
        self.close(program)

    def test_a_third_one_and_the_older_question_cancelled(self):
        program = self.start_nested()
        self.plug(program, "EFG")
        program.wait_until(lambda: len(self.dialogs(program)) == 2, what="the second dialog")
        program.click_row("ListView1", 2, clicks=2)
        program.wait_until(lambda: len(self.dialogs(program)) == 1, what="the end of the second dialog")
        program.type("", "Escape")
        self.expect_choice(program, "G")

    def test_the_window_before_it_is_in_front_again(self):
        program = self.start_detecting("E")
        self.wait_stick(program, "E")
        program.click("cmdtest")
        program.wait_until(lambda: program.wait_window("Form1")["active"], what="the assistant in front")
        self.plug(program, "EF")
        program.wait_until(lambda: program.wait_window(DIALOG)["active"], what="the dialog in front")
        program.type("", "Escape")
        program.wait_until(lambda: DIALOG not in program.windows(), what="the dialog's end")
        program.wait_until(lambda: program.windows()["Form1"]["active"], what="the assistant in front again")

    def test_one_goes(self):
        program = self.start_nested()
        self.plug(program, "F")
        self.wait_no_stick(program)
        self.assertIn(DIALOG, program.windows())
        program.click_row("ListView1", 1)
        program.click("cmdOK")
        self.expect_choice(program, "F")

    def test_the_chosen_one_is_gone(self):
        program = self.start_nested()
        self.plug(program, "F")
        self.wait_no_stick(program)
        program.click("cmdOK")
        self.gone(program)
        self.expect(program, {"lblLW.text": "E:\\", "txtDT_Cap.text": "", "lblHDSize.text": ""})
        self.close(program)

    def test_told_to_end(self):
        program = self.start_nested()
        self.plug(program, "EFG")
        program.wait_until(lambda: len(self.dialogs(program)) == 2, what="the second dialog")
        program.terminate()
        self.assertEqual(program.exit_status(), 0, program.output())

    def test_told_to_end_while_it_loads(self):
        program = self.start_asking()
        program.terminate()
        self.assertEqual(program.exit_status(), 0, program.output())


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
