"""The four INI files with anything in them."""

import random
import unittest

from case import CONNECTION_ERROR, GIB, WindowCase, SLOWNESS
from driver import Drive, server_ini
from side_by_side import each, side_by_side

NOISE = random.Random(1).randbytes(20000)
EVERY_BYTE = bytes(range(256)) * 10
LARGEST = 1024**2  # bytes of an INI file that is read


class Files(WindowCase):
    def start_with_settings(self, settings):
        return self.start(files={"Settings.ini": settings})

    def expect_choices(self, program, automatic, unit):
        program.wait_for("cmbSize", "text", unit)
        program.wait_for("chkAuto", "checked", automatic)
        program.wait_for("lblSize_2", "text", unit or "MB")


class Settings(Files):
    @each({
        "unknown check box": (b"chkNix=1", 730),
        "unknown list": (b"cmbNix=0", 730),
        "prefix alone": (b"chk=1", 730),
        "check box that is a button": (b"chkSize=1", 730),
        "no value": (b"chkAuto=", 13),
        "word": (b"chkAuto=ja", 13),
        "number and a word": (b"cmbSize=1 GB", 13),
        "hexadecimal": (b"cmbSize=0x1", 13),
        "not a number": (b"cmbSize=nan", 13),
        "comma": (b"cmbSize=0,0,0", 13),
        "nothing but a nul": (b"cmbSize=\0", 13),
        "too large": (b"chkAuto=32768", 6),
        "too small": (b"cmbSize=-32769", 6),
        "much too large": (b"cmbSize=" + b"9" * 400, 6),
        "check box out of range": (b"chkAuto=3", 5),
        "check box below its range": (b"chkAuto=-1", 5),
        "list out of range": (b"cmbSize=2", 5),
        "list below its range": (b"cmbSize=-2", 5),
        "no equals sign": (b"chkAuto", 9),
        "noise in the section": (b"noise \x80\xff without the sign", 9),
    })
    def test_error(self, line, number):
        self.expect_error(self.start_with_settings(b"[USB Tool]\r\n" + line + b"\r\n"), number)

    @each({
        "empty": b"",
        "noise": NOISE.replace(b"[", b"("),
        "every byte": EVERY_BYTE,
        "nuls": bytes(5000),
        "no line end": b"[USB Tool]",
        "bracket": b"[" * 1000,
        "byte order mark": b"\xef\xbb\xbf[USB Tool]\r\nchkAuto=1\r\n",
        "utf 16": "[USB Tool]\r\nchkAuto=1\r\n".encode("utf-16"),
        "another section": b"[Other]\r\nchkNix=x\r\n[usb  tool]\r\nchkNix=x\r\n",
        "keys of another kind": b"[USB Tool]\r\ntxtFAT=x\r\nChkNix=x\r\nlblLW=\r\n=x\r\n",
        "60000 lines outside": b"no equals sign\r\n" * 60000,
        "100000 lines of another section": b"[Other]\r\n" + b"chkNix=x\r\n" * 100000,
    })
    def test_ignored(self, settings):
        program = self.start_with_settings(settings)
        self.expect_choices(program, False, "MB")
        self.close(program)
        self.assertEqual((program.folder / "Settings.ini").read_bytes(), b"[USB Tool]\r\nchkAuto=0\r\ncmbSize=0\r\n")

    @each({
        "other case": b"[usb tool]\r\nchkAUTO=1\r\ncmbSIZE=1\r\n",
        "blanks": b"  [ USB Tool ] x\r\n\t chkAuto \t=  1  \r\n cmbSize=  1\r\n",
        "line feeds": b"[USB Tool]\nchkAuto=1\ncmbSize=1\n",
        "carriage returns": b"[USB Tool]\rchkAuto=1\rcmbSize=1",
        "fractions": b"[USB Tool]\r\nchkAuto=0.6\r\ncmbSize=1e0\r\n",
        "plus": b"[USB Tool]\r\nchkAuto=+1\r\ncmbSize=01\r\n",
        "a second equals sign": b"[USB Tool]\r\nchkAuto=1=x\r\ncmbSize=1=2\r\n",
        "twice": b"[USB Tool]\r\nchkAuto=0\r\nchkAuto=1\r\ncmbSize=0\r\ncmbSize=1\r\n",
        "greyed": b"[USB Tool]\r\nchkAuto=2\r\ncmbSize=1\r\n",
        "100000 lines": b"[USB Tool]\r\nchkAuto=1\r\ncmbSize=1\r\n" + b"line=1\r\n" * 100000,
        "100000 lines of switching":
            b"[USB Tool]\r\n" + b"chkAuto=0\r\nchkAuto=1\r\ncmbSize=0\r\ncmbSize=1\r\n" * 20000,
    })
    def test_understood(self, settings):
        program = self.start_with_settings(settings)
        program.wait_for("cmbSize", "text", "GB")
        self.assertNotEqual(program.get("chkAuto")["checked"], None)
        program.wait_for("lblHDSize", "text", "4.000")
        self.assertLess(program.processor_seconds(), 3 * SLOWNESS)  # 0.2 as measured
        self.close(program)
        self.assertRegex((program.folder / "Settings.ini").read_bytes(),
                         rb"^\[USB Tool\]\r\nchkAuto=[12]\r\ncmbSize=1\r\n$")

    def test_no_unit(self):
        program = self.start_with_settings(b"[USB Tool]\r\ncmbSize=-1\r\n")
        program.wait_for("cmbSize", "index", -1)
        self.close(program)
        self.assertEqual((program.folder / "Settings.ini").read_bytes(), b"[USB Tool]\r\nchkAuto=0\r\ncmbSize=-1\r\n")

    def test_figures_without_a_unit(self):
        """They are in megabytes, and stay so, and the next start is like this one."""
        settings = b"[USB Tool]\r\nchkAuto=0\r\ncmbSize=-1\r\n"
        program = self.start_with_settings(settings)
        program.wait_for("cmbSize", "index", -1)
        program.wait_for("lblHDSize", "text", "4096.00")
        self.assertEqual(program.text("lblSize_0"), "")
        program.write("Drives.ini", b"")
        program.click("cmdSearch")
        program.wait_for("lblHDSize", "text", "")
        program.set_drives(self.drives())
        program.click("cmdSearch")
        program.wait_for("lblHDSize", "text", "4096.00")
        self.close(program)
        self.assertEqual((program.folder / "Settings.ini").read_bytes(), settings)
        program.restart()
        program.wait_for("lblHDSize", "text", "4096.00")

    def test_a_folder(self):
        program = self.start(start=False)
        (program.folder / "Settings.ini").mkdir()
        program.start()
        self.expect_choices(program, False, "MB")
        self.close(program)
        self.assertIn("Settings.ini: Die Einstellungen konnten nicht gespeichert werden.", program.output())


class Profile(Files):
    """USB.ini on the stick."""

    def start_with_profile(self, profile):
        (self.stick / "USB.ini").write_bytes(profile)
        return self.start()

    def expect_path(self, program, path):
        program.wait_window("frmMain")
        self.assertEqual((program.text("lblLW"), program.text("txtOpenPath")), ("E:\\", path))

    @each({
        "line without an equals sign": b"[Open]\r\nDir=Musik\r\nno sign\r\n",
        "in a later section": b"[Open]\r\nDir=Musik\r\n[Other]\r\na=1\r\nno sign",
        "noise": b"[Open]\r\n" + NOISE.replace(b"=", b"-").replace(b"[", b"("),
    })
    def test_error(self, profile):
        self.expect_error(self.start_with_profile(profile), 9)

    @each({
        "empty": (b"", ""),
        "no section": (b"Dir=Musik\r\n", ""),
        "noise without a section": (NOISE.replace(b"[", b"("), ""),
        "nuls": (bytes(5000), ""),
        "blank": (b"[Open]\r\nDir= \r\n", ""),
        "backslash alone": (b"[Open]\r\nDir=\\\r\n", ""),
        "two backslashes": (b"[Open]\r\nDir=\\\\Musik\r\n", "\\Musik"),
        "umlauts": ("[Open]\r\nDir=\\Größe €\r\n".encode("cp1252"), "Größe €"),
        "other key first": (b"[A]\r\nb=first\r\n[Open]\r\nDir=Musik\r\n", "first"),
        "three pairs": (b"[Open]\r\na=1\r\nb=2\r\nc=3\r\n", "1"),
        "line feeds": (b"[Open]\nDir=Musik\n", "Musik"),
        "long value": (b"[Open]\r\nDir=" + b"x" * 20000 + b"\r\n", "x" * 20000),
        "markup": (b"[Open]\r\nDir=<b>x</b>\r\n", "<b>x</b>"),
    })
    def test_read(self, profile, path):
        self.expect_path(self.start_with_profile(profile), path)

    @each({
        "one line": b"; ".ljust(LARGEST - 19, b"x"),
        "many lines": b"key=value\r\n" * ((LARGEST - 19) // 11),
        "many sections": b"".join(b"[%d]\r\na=1\r\n" % i for i in range(LARGEST // 16)),
        "many empty sections": b"[s]\r\n" * ((LARGEST - 19) // 5),
    })
    def test_large(self, lines):
        """As large as a file may be that is read."""
        profile = b"[Open]\r\nDir=Musik\r\n" + lines
        self.assertLessEqual(len(profile), LARGEST)
        program = self.start_with_profile(profile)
        self.expect_path(program, "Musik")
        self.wait_loaded(program)
        self.close(program)

    @each({"one byte": 1, "much": 250 * 1024**2})
    def test_too_large(self, more):
        """Counts as a file that cannot be read: the path is that of the stick before, and the file stays as it is."""
        profile = self.stick / "USB.ini"
        profile.write_bytes(b"[Open]\r\nDir=Musik\r\n")
        program = self.start()
        self.expect_path(program, "Musik")
        large = b"[Open]\r\nDir=Filme\r\n; "
        with open(profile, "wb") as file:
            file.write(large)
            file.truncate(LARGEST + more)  # what is not written takes no room
        program.click("cmdSearch")
        self.expect_path(program, "Musik")
        program.enter_text("txtOpenPath", "Bilder")
        program.click("cmdSaveOnStick")
        program.windows()  # answered when the click has been handled
        self.assertEqual(profile.stat().st_size, LARGEST + more)
        with open(profile, "rb") as file:
            self.assertEqual(file.read(len(large)), large)

    def test_read_only(self):
        (self.stick / "USB.ini").write_bytes(b"[Open]\r\nDir=Musik\r\nno sign\r\n")
        (self.stick / "USB.ini").chmod(0o444)
        program = self.start()
        self.expect_path(program, "")

    def test_a_folder(self):
        (self.stick / "USB.ini").mkdir()
        program = self.start()
        self.expect_path(program, "")
        program.enter_text("txtOpenPath", "Musik")
        program.click("cmdSaveOnStick")
        self.assertTrue(program.get("cmdSaveOnStick")["enabled"])  # nothing was saved
        program.close()
        self.assertIn("Wollen Sie speichern?", program.wait_message()["text"])
        program.answer("Nein")
        self.assertEqual(program.exit_status(), 0, program.output())


class Server(Files):
    @each({
        "empty": b"",
        "noise": NOISE.replace(b"[", b"("),
        "another section": b"[Other]\r\nUpdate=http://127.0.0.1:1\r\n",
        "45000 lines": b"[Server]\r\n" + b"line without a sign\r\n" * 45000,
        "no value": b"[Server]\r\nUpdate=\r\n",
        "missing": None,
    })
    def test_the_built_in_address(self, server):
        """It ends in ".example", where nobody is."""
        program = self.start(files={"Server.ini": server})
        program.wait_message(title=CONNECTION_ERROR)
        program.answer("OK")
        program.wait_for("cmdChoose", "text", "Keine Verbindung")
        self.assertEqual(self.server.requests, [])

    @each({
        "no scheme": b"127.0.0.1:%d",
        "file": b"file://127.0.0.1:%d/etc",
        "ftp": b"ftp://127.0.0.1:%d",
        "scheme alone": b"http://",
        "no port": b"http://127.0.0.1:99999",
        "blanks": b"http:// 127.0.0.1:%d",
        "options": b"--output=/tmp/x http://127.0.0.1:%d",
    })
    def test_no_address(self, address):
        address = address % self.server.port if b"%d" in address else address
        program = self.start(files={"Server.ini": b"[Server]\r\nUpdate=" + address + b"\r\n"})
        program.wait_message(title=CONNECTION_ERROR)
        program.answer("OK")
        program.wait_for("cmdChoose", "text", "Keine Verbindung")
        self.assertEqual(self.server.requests, [])

    def test_slashes_behind_it(self):
        self.start_loaded(server=self.server.url() + "//")
        self.assertEqual(self.server.paths()[0], "/orvanta/download/usb-version.txt")

    def test_an_update_page_that_is_a_command(self):
        self.serve("usb-version.txt", b"2.0")
        page = b"$(touch x);`touch y`|z"
        ini = server_ini(self.server.url()).split(b"UpdatePage")[0] + b"UpdatePage=" + page + b"\r\n"
        program = self.start(files={"Server.ini": ini})
        program.wait_message()
        program.answer("OK")
        self.assertEqual(program.exit_status(), 0)
        program._until(self.opened, 20, lambda: "no browser was started")
        self.assertEqual(len(self.opened()), 1)
        self.assertTrue(self.opened()[0].startswith("http://$(touch"), self.opened())


LAST = b"[Z:]\r\nType=4\r\nPath=/\r\n"


class Drives(Files):
    @each({
        "empty": b"",
        "noise": NOISE,
        "nuls": bytes(5000),
        "no type": b"[E:]\r\nPath=/tmp\r\n" + LAST,
        "unknown type": b"[E:]\r\nType=9\r\nPath=/tmp\r\n" + LAST,
        "huge type": b"[E:]\r\nType=99999999999999999999999\r\nPath=/tmp\r\n" + LAST,
        "no path": b"[E:]\r\nType=2\r\n" + LAST,
        "path of nothing": b"[E:]\r\nType=2\r\nPath=/none/of/this\r\n" + LAST,
        "path of a file": b"[E:]\r\nType=2\r\nPath=/etc/passwd\r\n" + LAST,
        "two letters": b"[EE:]\r\nType=2\r\nPath=/tmp\r\n" + LAST,
        "digit": b"[1:]\r\nType=2\r\nPath=/tmp\r\n" + LAST,
        "stick in last place": b"[C:]\r\nType=3\r\nPath=/\r\n[E:]\r\nType=2\r\nPath=/tmp\r\n",
        "floppy": b"[A:]\r\nType=2\r\nPath=/tmp\r\n" + LAST,
        "no medium": b"[E:]\r\nType=2\r\nPath=/tmp\r\nTotal=0\r\n" + LAST,
        "45000 lines": b"line without a sign\r\n" * 45000,
        "16 drives": b"".join(b"[%c:]\r\nType=2\r\nPath=/tmp\r\nTotal=1000000000\r\n" % c for c in b"DEFGHIJKLMNOPQRS"),
    })
    def test_no_stick(self, drives):
        program = self.start(files={"Drives.ini": drives})
        program.wait_for("StatusBar1_1", "text", "No Stick")
        self.wait_loaded(program)
        program.click("cmdSearch")
        program.wait_for("cmdChoose", "text", "USB Stick einstecken")
        self.assertFalse(program.get("cmdChoose")["enabled"])
        self.close(program)

    def test_more_free_than_there_is(self):
        program = self.start_loaded(drives=self.drives(total=GIB, free=2 * GIB))
        self.assertEqual(program.text("lblHDFree"), "2048.00")
        self.assertEqual(program.text("lblHDUsed"), "-1024.00")
        self.run_job(program)

    def test_the_largest_sizes(self):
        program = self.start_loaded(drives=self.drives(total=2**64 - 1, free=2**64 - 1))
        self.assertEqual(program.text("lblHDSize"), "17592186044416.00")
        self.run_job(program)

    def test_sizes_that_are_none(self):
        drives = self.drives(total="viel", free="-5")
        program = self.start_loaded(drives=drives)
        self.assertNotEqual(program.text("lblHDSize"), "")
        self.close(program)

    def test_the_first_of_two_sections(self):
        drives = self.drives() + [Drive("E", 3, "/none")]
        program = self.start(drives=drives)
        program.wait_window("frmMain")
        self.assertEqual(program.text("lblLW"), "E:\\")

    def test_a_long_label_and_markup(self):
        label = "<b>" + "W" * 300
        program = self.start(drives=self.drives(label=label, file_system="<i>" + "F" * 300))
        program.wait_for("txtDT_Cap", "text", lambda text: label.startswith(text) and len(text) >= 200)
        self.assertLessEqual(program.windows()["frmMain"]["geometry"][2], 1366)


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
