"""The pages of the installer for Windows, by clicks, with letters of the ordinary size and twice as large."""

import unittest

from windows_setup import FOLDER, NEW, OLD, PATIENCE, PROGRAM, TITLE, UNINSTALLER, InstallerCase, setup

CLOSE = "Beenden"  # the last page's button
LARGE = {TITLE, "Das Programm ist installiert"}  # titles, in 12 points
BOLD = {"Programm entfernen", "Entfernt", "Wird installiert"}  # those above a line, in 9
BOX = 20  # what a check box takes beside its text, at 96 dots an inch


class Pages(InstallerCase):
    def expect_fits(self, shown):
        """No text is larger than its place."""
        texts = [control for control in shown["controls"]
                 if control["class"] in ("Static", "Button") and control["text"] and control["height"] > 2]
        self.assertNotEqual(texts, [])
        for control in texts:
            beside = BOX * self.letters // 96 if control["class"] == "Button" else 0
            needed = self.needed(control["text"].replace("&", ""), control["width"] - beside)
            self.assertLessEqual(needed["width"], control["width"] - beside, control)
            self.assertLessEqual(needed["height"], control["height"], control)

    def needed(self, text, width):
        style = {"bold": 1} if text in LARGE | BOLD else {}
        return self.machine.request("textSize", text=text, width=width, points=12 if text in LARGE else 9, **style)

    def page(self, text, name):
        shown = self.machine.wait_dialog(text)
        self.picture(f"{name}-{self.letters}")
        self.expect_fits(shown)
        return shown

    def box(self, text):
        """Whether the check box with that caption is checked."""
        return next(control["checked"] for control in self.machine.dialog()["controls"]
                    if control["text"].replace("&", "") == text)

    def test_in_started_and_out(self):
        process = self.start(setup(OLD))
        shown = self.page("Es wird nur für Sie installiert", "1-welcome")
        self.assertTrue(any(FOLDER in control["text"] for control in shown["controls"]))
        self.machine.press("Installieren")
        self.page("Das Programm ist installiert", "2-finish")
        self.expect_installed()
        self.assertTrue(self.box("Programm jetzt starten"))
        self.machine.press("Fertig")
        self.assertEqual(process.wait(PATIENCE), 0)
        self.machine.wait_program()
        self.picture(f"3-program-{self.letters}")
        self.machine.end_program()
        self.assertIn("Settings.ini", self.machine.installed())

        self.start(self.machine.folder / UNINSTALLER)
        self.page("Meine &Einstellungen behalten", "4-remove")
        self.assertFalse(self.box("Meine Einstellungen behalten"))
        self.machine.press("Entfernen")
        self.page("nicht mehr auf diesem Computer", "5-removed")
        self.machine.press(CLOSE)
        self.machine.wait_no_dialog()
        self.wait_tidy()
        self.expect_gone()

    def test_an_update_says_so(self):
        self.install()
        self.start(setup(NEW))
        self.page(f"Die Version {OLD} ist installiert. Sie wird durch die Version {NEW} ersetzt.", "6-update")
        self.machine.press("Installieren")
        self.machine.wait_dialog("Das Programm ist installiert")
        self.machine.press("Programm jetzt starten")
        self.assertFalse(self.box("Programm jetzt starten"))
        self.machine.press("Fertig")
        self.machine.wait_no_dialog()
        self.assertNotIn(PROGRAM, self.machine.processes())
        self.expect_installed(NEW)


class LargePages(Pages):
    letters = 192
    screen = (2560, 1440)


class Ways(InstallerCase):
    """What a person may do instead."""

    def test_cancelled_nothing_is_installed(self):
        process = self.start(setup(OLD))
        self.machine.wait_dialog("Es wird nur für Sie installiert")
        self.machine.press("Abbrechen")
        self.assertEqual(process.wait(PATIENCE), 1)
        self.assertFalse(self.machine.folder.exists())
        self.assertEqual(self.machine.entry(), {})

    def test_the_settings_are_kept(self):
        self.install()
        (self.machine.folder / "Settings.ini").write_bytes(b"[USB Tool]\r\n")
        self.start(self.machine.folder / UNINSTALLER)
        self.machine.press("Meine Einstellungen behalten")
        self.machine.press("Entfernen")
        self.machine.wait_dialog("nicht mehr auf diesem Computer")
        self.machine.press(CLOSE)
        self.machine.wait_no_dialog()
        self.assertEqual(self.machine.installed(), {"Settings.ini": b"[USB Tool]\r\n"})

    def test_the_same_version_once_more(self):
        self.install()
        self.start(setup(OLD))
        self.machine.wait_dialog(f"Die Version {OLD} ist schon installiert.")
        self.machine.press("Installieren")
        self.machine.wait_dialog("Das Programm ist installiert")
        self.expect_installed()

    def test_only_one_at_a_time(self):
        process = self.start(setup(OLD))
        self.machine.wait_dialog("Es wird nur für Sie installiert")
        self.assertEqual(self.install(NEW), 2)
        self.assertFalse(self.machine.folder.exists())
        self.machine.press("Installieren")
        self.machine.wait_dialog("Das Programm ist installiert")
        self.assertEqual(self.uninstall(), 2)
        self.expect_installed()
        self.machine.press("Programm jetzt starten")
        self.machine.press("Fertig")
        self.assertEqual(process.wait(PATIENCE), 0)
        self.start(self.machine.folder / UNINSTALLER)
        self.machine.wait_dialog("Meine &Einstellungen behalten")
        self.assertEqual(self.install(NEW), 2)
        self.assertEqual(self.uninstall(), 2)
        self.expect_installed()

    def test_removing_while_somebody_waits(self):
        """The page may stay for as long as it likes: only after it the uninstaller is deleted."""
        self.install()
        process = self.start(self.machine.folder / UNINSTALLER, *f"_?={FOLDER}".split(" "))
        self.machine.press("Entfernen")
        self.machine.wait_dialog("nicht mehr auf diesem Computer")
        self.assertNotIn("cmd.exe", self.machine.processes())
        self.assertEqual(sorted(self.machine.installed()), [UNINSTALLER])
        self.machine.press(CLOSE)
        self.assertEqual(process.wait(PATIENCE), 0)
        self.wait_tidy()
        self.expect_gone()

    def test_removing_cancelled(self):
        """The copy that the pages are those of goes all the same."""
        self.install()
        self.start(self.machine.folder / UNINSTALLER)
        self.machine.wait_dialog("Meine &Einstellungen behalten")
        self.assertNotEqual(self.machine.temporary(), self.temporary)
        self.machine.press("Abbrechen")
        self.machine.wait_no_dialog()
        self.wait_tidy()
        self.expect_installed()

    def test_a_plain_user_clicks(self):
        self.machine.launch_plain(setup(OLD))
        self.machine.press("Installieren")
        self.machine.wait_dialog("Das Programm ist installiert")
        self.machine.press("Fertig")
        self.machine.wait_program()
        self.expect_installed()
        self.machine.end_program()
        self.machine.launch_plain(setup(NEW))
        self.machine.press("Installieren")
        self.machine.wait_dialog("Das Programm ist installiert")
        self.machine.press("Programm jetzt starten")
        self.machine.press("Fertig")
        self.machine.wait_no_dialog()
        self.assertEqual(self.machine.entry()["DisplayVersion"], NEW)
        self.machine.launch_plain(self.machine.folder / UNINSTALLER)
        self.machine.press("Entfernen")
        self.machine.wait_dialog("nicht mehr auf diesem Computer")
        self.machine.press(CLOSE)
        self.machine.wait_no_dialog()
        self.wait_tidy()
        self.expect_gone()


if __name__ == "__main__":
    unittest.main(verbosity=2)
