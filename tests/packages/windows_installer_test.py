"""The installer for Windows under Wine: in, started, up to another version and out, silently and by its pages."""

import os
import shutil
import subprocess
import time
import unittest

from windows_setup import (CANCELLED, DONE, FOLDER, IS_OPEN, KEY, MENU, NEW, NOT_POSSIBLE, OLD, PATIENCE, PROGRAM,
                           TITLE, UNINSTALLER, InstallerCase, make_setup, packed, setup, time_of, wait_for,
                           windows_path, work_folder)

SETTINGS = b"[USB Tool]\r\nchkAuto=0\r\n"
SERVERS = b"[Server]\r\nUpdate=http://127.0.0.1:9\r\nUpdatePage=127.0.0.1:9\r\nWebHost=127.0.0.1:9\r\n"
ELSEWHERE = MENU.partition(r"\Microsoft")[0] + r"\orvanta-usbtool\Settings.ini"
TURN = r"""
Target amd64-unicode
OutFile "${TARGET}"
RequestExecutionLevel user
SilentInstall silent
Section
  System::Call 'kernel32::CreateEventW(p 0, i 1, i 0, w "orvanta-usbtool-setup") p .r0'
  FileOpen $1 "$EXEDIR\ready" w
  FileClose $1
  Sleep 600000
SectionEnd
"""
# When its screen was set up, anew with each program.
NOTED_BY_WINE = (r"System\CurrentControlSet\Control\Class", r"System\CurrentControlSet\Control\Video")


def differences(before, after):
    """{key: its values before and after} of what changed in a registry."""
    return {key: (before.get(key), after.get(key)) for key in before.keys() | after.keys()
            if before.get(key) != after.get(key) and not key.startswith(NOTED_BY_WINE)}


class Silent(InstallerCase):
    def test_in_and_its_entry(self):
        self.assertEqual(self.install(), DONE)
        self.expect_installed()
        size = sum(map(len, packed(OLD).values())) // 1024 + 1
        self.assertEqual(self.machine.entry(), {
            "DisplayName": TITLE, "DisplayVersion": OLD, "Publisher": "Orvanta",
            "DisplayIcon": rf"{FOLDER}\{PROGRAM}", "InstallLocation": FOLDER,
            "UninstallString": rf'"{FOLDER}\{UNINSTALLER}"',
            "QuietUninstallString": rf'"{FOLDER}\{UNINSTALLER}" /S _?={FOLDER}',
            "EstimatedSize": f"dword:{size:08x}", "NoModify": "dword:00000001", "NoRepair": "dword:00000001"})
        self.assertTrue(self.machine.path(rf"{MENU}\{TITLE}.lnk").exists())

    def test_the_text_beside_it_names_them(self):
        files = packed(OLD)
        text = files["LIESMICH.txt"].decode("utf-8-sig")
        for name in [UNINSTALLER, *files]:
            if not name.endswith((".bmp", ".gif", ".jpg", ".png", "0hdci.ico")):  # pictures
                self.assertRegex(text, rf"\n  {name}[ ,]")

    def test_files_have_the_time_of_the_sources(self):
        self.install()
        times = {file.name: int(file.stat().st_mtime) for file in self.machine.folder.iterdir()
                 if file.is_file() and file.name != UNINSTALLER}
        self.assertEqual({name: time for name, time in times.items() if time != time_of(OLD)}, {})

    def test_nothing_is_left(self):
        self.install()
        self.uninstall()  # what Wine makes with the first program of any kind is there from now on
        files, user, machine = self.machine.files(), self.machine.registry(), self.machine.registry("HKLM")
        self.assertEqual(self.install(), DONE)
        self.assertNotEqual(self.machine.files(), files)
        self.assertIn(KEY, self.machine.registry())
        self.assertEqual(differences(machine, self.machine.registry("HKLM")), {})
        self.assertEqual(self.uninstall(), DONE)
        self.assertEqual(self.machine.files(), files)
        self.assertEqual(differences(user, self.machine.registry()), {})
        self.assertEqual(differences(machine, self.machine.registry("HKLM")), {})
        self.assertNotIn(KEY, user)
        self.assertFalse(self.machine.folder.exists())
        self.assertEqual([name for name in files if "Orvanta" in name], [])

    def test_as_a_plain_user(self):
        for number in (OLD, NEW):
            self.assertEqual(self.install(number, plain=True), DONE)
            self.expect_installed(number)
            self.assertEqual(self.machine.entry()["DisplayVersion"], number)
        self.assertEqual(self.uninstall(plain=True), DONE)
        self.expect_gone()

    def test_into_another_folder_and_updated_there(self):
        programs = self.machine.folder.parent
        programs.mkdir(parents=True, exist_ok=True)  # the user's own, with nothing in it
        self.assertEqual(self.install(more=r" /D=C:\Meine Programme\Stick"), DONE)
        self.machine.folder = self.machine.path(r"C:\Meine Programme\Stick")
        self.expect_installed()
        self.assertEqual(self.install(NEW), DONE)
        self.expect_installed(NEW)
        self.assertEqual(self.uninstall(), DONE)
        self.expect_gone()
        self.assertTrue(programs.exists())

    def test_a_folder_that_cannot_be_made(self):
        parent = self.machine.folder.parent
        parent.parent.mkdir(parents=True, exist_ok=True)
        parent.write_bytes(b"a file of this name")
        self.assertEqual(self.install(), NOT_POSSIBLE)
        self.assertEqual(self.machine.entry(), {})
        self.assertEqual(parent.read_bytes(), b"a file of this name")

    def test_a_file_that_cannot_be_replaced(self):
        self.install()
        self.uninstall()  # the key that entries stand below is there from now on
        self.machine.folder.mkdir(parents=True)
        (self.machine.folder / "sr100.bmp").mkdir()
        (self.machine.folder / "sr100.bmp" / "mine").touch()
        (self.machine.folder / "Server.ini").write_bytes(SERVERS)
        files, user = self.machine.files(), self.machine.registry()
        self.assertEqual(self.install(), NOT_POSSIBLE)
        self.assertEqual(self.machine.files(), files)
        self.assertEqual((self.machine.folder / "Server.ini").read_bytes(), SERVERS)
        self.assertEqual(differences(user, self.machine.registry()), {})

    def test_while_somebody_has_the_turn_for_himself(self):
        """As an administrator's one does, for which an event stands that has the turn's name."""
        script, program, ready = (work_folder() / name for name in ("turn.nsi", "turn.exe", "ready"))
        script.write_text(TURN, encoding="ascii")
        subprocess.run(["makensis", "-V2", "-NOCONFIG", f"-DTARGET={program}", script], check=True)
        self.start(program)
        wait_for(ready.exists, "the event", self.machine.processes)
        self.assertEqual(self.install(), NOT_POSSIBLE)
        self.assertFalse(self.machine.folder.exists())

    def test_without_a_place_in_the_menu(self):
        """It is installed all the same."""
        self.block(f"{TITLE}.lnk", MENU)
        self.assertEqual(self.install(), DONE)
        self.expect_installed()
        self.assertEqual(self.machine.entry()["InstallLocation"], FOLDER)
        self.start(setup(NEW))
        self.machine.press("Installieren")
        self.machine.wait_dialog("steht aber nicht im Startmenü")
        self.machine.press("OK")
        self.machine.wait_dialog("Das Programm ist installiert")
        self.assertIsNone(self.machine.dialog_with("Sie finden es im Startmenü"))
        self.assertIsNotNone(self.machine.dialog_with("Sie finden es in diesem Ordner"))

    def install_start_and_remove(self, folder):
        self.machine.folder = self.machine.path(folder)
        self.assertEqual(self.install(more=f" /D={folder}"), DONE)
        self.expect_installed()
        self.start(self.machine.folder / PROGRAM)
        self.machine.wait_program()
        self.assertEqual(self.machine.program_windows(), ["frmMain"])
        self.machine.end_program()
        self.assertEqual(self.install(NEW), DONE)
        self.assertEqual(set(packed(NEW)) - set(self.machine.installed()), set())
        self.assertEqual(self.uninstall(), DONE)

    def test_a_folder_with_signs_that_the_command_line_knows(self):
        """But for %, which Wine's own takes for the beginning of a name wherever it stands."""
        self.install_start_and_remove(r"C:\a!b & ^c\!PATH! (x)")
        self.expect_gone()

    def test_a_folder_with_letters_of_other_languages(self):
        self.install_start_and_remove(r"C:\Benutzer\Łucja Müß & Co\Stick")
        self.expect_gone()


class TwoFolders(InstallerCase):
    """The list of programs and the menu know one installation only."""
    other = r"C:\Andere Stelle\Stick"

    def setUp(self):
        super().setUp()
        self.install()
        self.second = self.machine.path(self.other)
        self.menu = self.machine.path(rf"{MENU}\{TITLE}.lnk")
        self.elsewhere = self.machine.path(ELSEWHERE)
        self.elsewhere.parent.mkdir(parents=True)
        self.elsewhere.write_bytes(SETTINGS)

    def expect_known(self, folder):
        self.assertEqual(self.machine.entry().get("InstallLocation"), folder)
        self.assertTrue(self.menu.exists())
        self.assertEqual(self.elsewhere.read_bytes(), SETTINGS)

    def test_a_copied_folder_removes_itself_only(self):
        shutil.copytree(self.machine.folder, self.second)
        (self.second / "Settings.ini").write_bytes(SETTINGS)
        self.assertEqual(self.remove(self.other), DONE)
        self.assertFalse(self.second.exists())
        self.expect_installed()
        self.expect_known(FOLDER)

    def test_the_one_before_removes_itself_only(self):
        self.assertEqual(self.install(NEW, rf" /D={self.other}"), DONE)
        self.expect_known(self.other)
        self.assertEqual(self.remove(FOLDER), DONE)
        self.assertFalse(self.machine.folder.exists())
        self.machine.folder = self.second
        self.expect_installed(NEW)
        self.expect_known(self.other)

    def test_the_same_folder_in_other_letters(self):
        self.assertEqual(self.install(NEW, rf" /D={FOLDER.upper()}"), DONE)
        self.expect_installed(NEW)
        self.assertEqual(self.remove(FOLDER.lower()), DONE)
        self.expect_gone()

    def test_the_same_folder_by_another_drive(self):
        folder = windows_path(self.machine.folder)
        self.assertNotEqual(folder[0], FOLDER[0])
        self.assertEqual(self.install(NEW, f" /D={folder}"), DONE)
        self.expect_installed(NEW)
        self.assertEqual(self.remove(FOLDER), DONE)
        self.expect_gone()

    def test_a_second_one_that_fails(self):
        """What was there before stays: the entry, the files of a copy, replaced or not."""
        shutil.copytree(self.machine.folder, self.second)
        (self.second / "sr100.bmp").unlink()
        (self.second / "LIESMICH.txt").unlink()
        self.block("sr100.bmp", self.other)
        before = {file.relative_to(self.second) for file in self.second.rglob("*")}
        self.assertEqual(self.install(NEW, rf" /D={self.other}"), NOT_POSSIBLE)
        self.assertEqual({file.relative_to(self.second) for file in self.second.rglob("*")}, before)
        self.expect_known(FOLDER)
        self.assertEqual(self.machine.entry()["DisplayVersion"], OLD)


class OldWindows(InstallerCase):
    version = "win81"

    def test_it_is_refused(self):
        self.assertEqual(self.install(), NOT_POSSIBLE)
        self.assertFalse(self.machine.folder.exists())


class Update(InstallerCase):
    def setUp(self):
        super().setUp()
        self.install()

    def put(self, name, data):
        (self.machine.folder / name).write_bytes(data)

    def test_the_new_version_is_there(self):
        self.assertEqual(self.install(NEW), DONE)
        self.expect_installed(NEW)
        self.assertEqual(self.machine.entry()["DisplayVersion"], NEW)

    def test_settings_and_changed_servers_stay(self):
        self.put("Settings.ini", SETTINGS)
        self.put("Server.ini", SERVERS)
        for _ in range(2):
            self.assertEqual(self.install(NEW), DONE)
            self.expect_installed(NEW, {"Settings.ini": SETTINGS, "Server.ini": SERVERS})

    def test_servers_follow_each_version(self):
        self.assertNotEqual(packed(OLD)["Server.ini"], packed(NEW)["Server.ini"])
        for number in (NEW, OLD, NEW):
            self.assertEqual(self.install(number), DONE)
            self.expect_installed(number)

    def test_servers_that_nobody_changed_are_replaced(self):
        server = self.machine.folder / "Server.ini"
        installed = server.stat()
        server.write_bytes(b"of the old version")
        os.utime(server, ns=(installed.st_atime_ns, installed.st_mtime_ns))
        self.assertEqual(self.install(NEW), DONE)
        self.expect_installed(NEW)

    def test_what_only_the_old_version_had_goes(self):
        self.put("old.bmp", b"old")
        self.put("mine.txt", b"mine")
        self.machine.wine("reg", "add", rf"HKCU\{KEY}\Files", "/v", "old.bmp", "/d", "", "/f")
        self.assertEqual(self.install(NEW), DONE)
        self.expect_installed(NEW, {"mine.txt": b"mine"})

    def test_after_an_interruption(self):
        half = self.machine.folder / "~neu"
        half.mkdir()
        (half / PROGRAM).write_bytes(b"half")
        self.assertEqual(self.install(NEW), DONE)
        self.expect_installed(NEW)
        self.assertFalse(half.exists())

    def test_a_file_in_use(self):
        """The entry stays that of the old version, and installing once more mends all."""
        self.machine.hold("sr100.bmp")
        self.assertEqual(self.install(NEW), NOT_POSSIBLE)
        self.assertEqual(self.machine.entry()["DisplayVersion"], OLD)
        self.assertFalse((self.machine.folder / "~neu").exists())
        self.machine.release()
        self.assertEqual(self.install(NEW), DONE)
        self.expect_installed(NEW)

    def test_a_file_in_use_for_a_moment(self):
        """Who guards against viruses reads what is new."""
        self.machine.hold("sr100.bmp")
        process = self.start(setup(NEW), "/S")
        order = make_setup.in_order(packed(NEW))
        before = self.machine.folder / order[order.index("sr100.bmp") - 1]
        wait_for(lambda: int(before.stat().st_mtime) == time_of(NEW), "the file before it", self.machine.processes)
        time.sleep(0.5)  # by then it was refused, which had ended it
        self.machine.release()
        self.assertEqual(process.wait(PATIENCE), DONE)
        self.expect_installed(NEW)


class Open(InstallerCase):
    def setUp(self):
        super().setUp()
        self.install()

    def open_program(self):
        self.start(self.machine.folder / PROGRAM)
        self.machine.wait_program()

    def test_nothing_is_replaced_or_removed(self):
        self.open_program()
        self.assertEqual(self.install(NEW), IS_OPEN)
        self.assertEqual(self.uninstall(), IS_OPEN)
        self.expect_installed()
        self.assertEqual(self.machine.entry()["DisplayVersion"], OLD)
        self.machine.end_program()
        (self.machine.folder / "Settings.ini").unlink(missing_ok=True)
        self.assertEqual(self.install(NEW), DONE)
        self.expect_installed(NEW)

    def test_the_pages_ask_and_go_on(self):
        self.open_program()
        self.start(setup(NEW))
        self.machine.press("Installieren")
        shown = self.machine.wait_dialog("noch geöffnet")
        self.assertEqual(shown["title"], f"{TITLE} {NEW}")
        self.picture("open")
        self.machine.press("Retry")
        self.machine.wait_dialog("noch geöffnet")
        self.machine.end_program()
        self.machine.press("Retry")
        self.machine.wait_dialog("ist installiert")
        self.assertEqual(self.machine.entry()["DisplayVersion"], NEW)

    def test_the_page_stays_when_the_program_does(self):
        self.open_program()
        process = self.start(setup(NEW))
        self.machine.press("Installieren")
        self.machine.wait_dialog("noch geöffnet")
        self.machine.press("Cancel")
        self.machine.wait_dialog(f"Die Version {OLD} ist installiert.")
        self.machine.press("Abbrechen")
        self.assertEqual(process.wait(PATIENCE), CANCELLED)
        self.assertEqual(self.machine.entry()["DisplayVersion"], OLD)

    def test_the_formatter_counts_as_open(self):
        """It waits for an answer, which does not come."""
        formatter = self.machine.folder / "fat32format.exe"
        data = formatter.read_bytes()
        formatter.write_bytes((self.machine.prefix / "drive_c/windows/system32/winver.exe").read_bytes())
        self.start(formatter)
        wait_for(lambda: "fat32format.exe" in self.machine.processes(), "the formatter", self.machine.processes)
        self.assertEqual(self.install(NEW), IS_OPEN)
        self.machine.wine("taskkill", "/f", "/im", "fat32format.exe")
        wait_for(lambda: "fat32format.exe" not in self.machine.processes(), "its end", self.machine.processes)
        formatter.write_bytes(data)
        self.assertEqual(self.install(NEW), DONE)


class Removing(InstallerCase):
    def setUp(self):
        super().setUp()
        self.install()
        (self.machine.folder / "Settings.ini").write_bytes(SETTINGS)
        self.elsewhere = self.machine.path(ELSEWHERE)
        self.elsewhere.parent.mkdir(parents=True)
        self.elsewhere.write_bytes(SETTINGS)  # another copy's, in whose folder nothing can be written

    def test_settings_go_with_the_program(self):
        (self.machine.folder / "Server.ini").write_bytes(SERVERS)
        self.assertEqual(self.uninstall(), DONE)
        self.expect_gone()
        self.assertEqual(self.elsewhere.read_bytes(), SETTINGS)

    def test_settings_in_the_user_s_folder_stay_without_others_too(self):
        (self.machine.folder / "Settings.ini").unlink()
        self.assertEqual(self.uninstall(), DONE)
        self.expect_gone()
        self.assertEqual(self.elsewhere.read_bytes(), SETTINGS)

    def test_settings_stay_for_who_wants_that(self):
        (self.machine.folder / "Server.ini").write_bytes(SERVERS)
        self.assertEqual(self.uninstall(" /KEEPSETTINGS"), DONE)
        self.assertEqual(self.machine.installed(), {"Settings.ini": SETTINGS, "Server.ini": SERVERS})
        self.assertEqual(self.machine.entry(), {})

    def test_what_is_the_user_s_stays(self):
        (self.machine.folder / "mine.txt").write_bytes(b"mine")
        self.assertEqual(self.uninstall(), DONE)
        self.assertEqual(self.machine.installed(), {"mine.txt": b"mine"})

    def test_a_formatter_can_be_gone_already(self):
        (self.machine.folder / "fat32format.exe").unlink()
        self.assertEqual(self.uninstall(), DONE)
        self.expect_gone()

    def test_a_file_in_use(self):
        """The entry stays, with which the rest can be removed later."""
        self.machine.hold("sr100.bmp")
        self.assertEqual(self.uninstall(), NOT_POSSIBLE)
        self.assertEqual(sorted(self.machine.installed()), sorted([UNINSTALLER, "Settings.ini", "sr100.bmp"]))
        self.machine.release()
        self.assertEqual(self.uninstall(), DONE)
        self.expect_gone()

    def test_nobody_waits(self):
        """It then runs from a copy, which goes, too."""
        self.assertEqual(self.machine.run(f'"{FOLDER}\\{UNINSTALLER}" /S'), DONE)
        wait_for(lambda: not self.machine.folder.exists(), "the end of the program's folder", self.machine.installed)
        self.wait_tidy()
        self.expect_gone()

    def test_installed_at_once_again(self):
        """What deletes the uninstaller after its end does not take the new one."""
        command = self.machine.entry()["QuietUninstallString"]
        self.assertEqual(self.machine.run(command), DONE)
        self.assertEqual(self.install(NEW), DONE)
        self.wait_tidy()
        self.expect_installed(NEW)


if __name__ == "__main__":
    unittest.main(verbosity=2)
