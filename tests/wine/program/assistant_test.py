"""The assistant for hard disks, with a real console program in the place of the formatter, and with the formatter."""

import os
import struct
import subprocess
import unittest

from windows_case import TOOLS, WindowsSticksCase, without

import format_assistant_test as shared
from assistant import DONE, FAILED, FIRST, FORMATTER, FORMATTING, NOT_STARTED, THIRD, AssistantCase
from case import REPORT_TITLE
from side_by_side import each, side_by_side
from windows_program import ARRIVAL

PLAYER = TOOLS / "formatter.exe"  # what it plays stands in a file beside it
SCRIPT = "formatter.txt"
USER = "root"  # who the tests run as
REAL = TOOLS / "fat32format_on_images.exe"  # the real one, but for the disk, which is an image file
START = 1_048_576  # of the partition, in bytes
SIZE = 2_400_000 * 1024  # of the disk: clusters as the assistant wants them make FAT32 of 2 GB and more


class WindowsAssistant(WindowsSticksCase):
    def start_assistant(self, script="answer\nDone\n", letters="", user=USER, **arguments):
        """The assistant is open in its first step; `user` is the administrator. No script is no formatter."""
        player = None if script is None else PLAYER.read_bytes()
        program = self.start(drives=self.table(letters), environment={"USBTOOL_ADMINISTRATORS": f"somebody;{user}"},
                             files={FORMATTER: player, SCRIPT: (script or "").encode()})
        self.open(program)
        return program

    def is_running(self):
        """Whether there is a process of the formatter."""
        return FORMATTER in self.machine.processes()


class Steps(WindowsAssistant, without(shared.Steps, "test_the_first", "test_every_look", "test_twice")):
    def test_the_first(self):
        program = self.start_assistant()
        self.expect_buttons(program, True, True)
        window = program.windows()["Form1"]
        self.assertEqual((window["title"], window["modal"]), ("Fat32 Format Assistent", False))
        self.expect(program, {"Label1.text": "Fat 32 Format Assistent:", "Command1.text": "WEITER >>>",
                              "Command2.text": "<<< Zurück", "Command1.shortcut": "Alt+W",
                              "Command2.shortcut": "Alt+Z", "Command1.focus": True})
        self.picture(program, "assistant-1")


class Gate(WindowsAssistant, shared.Gate):
    def test_no_such_group(self):
        program = self.start(drives=self.table(), environment={"USBTOOL_ADMINISTRATORS": ""})
        self.open(program)
        program.click("Command1", "Form1")
        self.drop_message(program, shared.REFUSAL_TITLE, shared.REFUSAL, 16)


class Question(WindowsAssistant, shared.Question):
    pass


class Exchange(WindowsAssistant, shared.Exchange):
    pass


class Formatter(WindowsAssistant, AssistantCase):
    def test_done(self):
        program = self.start_assistant("answer\nSize: 1 GB\nDone\n")
        self.start_format(program)
        program.wait_message()
        self.picture(program, "assistant-done")
        self.expect_result(program, DONE)
        self.assertEqual((self.note(program, "called"), self.note(program, "answered")), ("-c64 H:\n", "y\n"))
        self.close(program)

    @each({"lower case": "answer\ndone\n", "nothing": "answer\n", "another answer": "answer\nRefused.\nstatus 3\n",
           "nothing at all": ""})
    def test_failed(self, script):
        program = self.start_assistant(script)
        self.start_format(program)
        self.expect_result(program, FAILED)

    @each({"without a line end": "part Done\n", "within a word": "NotDoneYet\n",
           "and an error status": "Done\nstatus 1\n", "in two parts": "part Do\npart ne\n",
           "behind much": "many 300000\npart Done\n", "before much": "part Done\nmany 300000\n"})
    def test_done_in_other_ways(self, script):
        program = self.start_assistant(script)
        self.start_format(program)
        self.expect_result(program, DONE)

    def test_missing(self):
        program = self.start_assistant(None)
        self.start_format(program)
        self.drop_message(program, REPORT_TITLE, NOT_STARTED, 48)
        self.expect_result(program, FAILED)
        self.close(program)

    def test_no_program_at_all(self):
        program = self.start_assistant()
        program.write(FORMATTER, b"\x00\x01 no program")
        self.start_format(program)
        self.drop_message(program, REPORT_TITLE, NOT_STARTED, 48)
        self.expect_result(program, FAILED)

    def test_it_may_be_run_again(self):
        program = self.start_assistant()
        self.start_format(program)
        self.expect_result(program, DONE)
        self.plug(program, "")
        self.open(program)
        self.start_format(program)
        self.expect_result(program, DONE)


class RealFormatter(WindowsAssistant, AssistantCase):
    def setUp(self):
        super().setUp()
        self.image = self.home / "disk.img"
        table = struct.pack("<B3sB3sII", 0, b"", 7, b"", START // 512, (SIZE - START) // 512)
        with open(self.image, "wb") as image:
            image.truncate(SIZE)
            os.pwrite(image.fileno(), table, 446)
            os.pwrite(image.fileno(), b"\x55\xAA", 510)
            os.pwrite(image.fileno(), b"\xEB\x52\x90NTFS    ", START)
        self.link = self.machine.prefix / "dosdevices" / "h::"
        self.addCleanup(self.link.unlink, missing_ok=True)

    def start_real(self, *facts):
        facts = ("letter=H", f"diskbytes={SIZE}", f"start={START}", f"bytes={SIZE - START}", *facts)
        program = self.start(drives=self.table(), environment={"USBTOOL_ADMINISTRATORS": USER},
                             files={FORMATTER: REAL.read_bytes(), "stick.txt": "\n".join(facts).encode()})
        self.open(program)
        self.second_step(program)
        program.set_drives(self.table("h"), announce=False)  # Wine takes the link away with each new drive
        self.link.symlink_to(self.image)
        program.device_message(ARRIVAL, "H")
        self.expect_step(program, 3, THIRD.format("H:"))
        self.ask(program)
        program.answer("OK")
        return program

    def fsck(self):
        volume = self.home / "volume.img"
        subprocess.run(["dd", f"if={self.image}", f"of={volume}", "bs=1M", "skip=1", "conv=sparse", "status=none"],
                       check=True)
        return subprocess.run(["fsck.fat", "-n", "-v", volume], capture_output=True, text=True, check=False)

    def test_it_formats(self):
        program = self.start_real()
        program.wait_message()
        self.picture(program, "assistant-formatted")
        self.expect_result(program, DONE)
        judged = self.fsck()
        self.assertEqual(judged.returncode, 0, judged.stdout + judged.stderr)
        self.assertIn("32768 bytes per cluster", judged.stdout)
        self.assertIn("2048 hidden sectors", judged.stdout)
        self.close(program)

    def test_it_refuses(self):
        program = self.start_real("bus=11")  # not USB
        program.wait_message()
        self.picture(program, "assistant-refused")
        self.expect_result(program, FAILED)
        with open(self.image, "rb") as image:
            self.assertEqual(os.pread(image.fileno(), 11, START), b"\xEB\x52\x90NTFS    ")


class WhileItRuns(WindowsAssistant, AssistantCase):
    def start_endless(self):
        """A formatter that does not care for its answer and never ends."""
        program = self.start_assistant("Done\nhang\n")
        self.start_format(program)
        program.wait_until(lambda: self.note(program, "hanging"), what="the formatter")
        for _ in range(2):  # the runner looks into the pipe between two answers
            program.windows()
        self.assertTrue(self.is_running())
        return program

    def expect_gone(self, program):
        program.wait_until(lambda: not self.is_running(), what="the formatter's end")

    def test_the_window_answers(self):
        program = self.start_endless()
        self.assertEqual(program.text("prgFormat", "Form1"), FORMATTING)
        self.picture(program, "assistant-running")
        self.mark_of_input(program)

    def test_closing_the_assistant_asks(self):
        program = self.start_endless()
        program.close("Form1")
        program.wait_message()
        self.picture(program, "assistant-cancel")
        program.type("", "Return")
        program.wait_until(lambda: program.message() is None, what="the answer no")
        self.assertIn("Form1", program.windows())
        self.assertTrue(self.is_running(), "the formatter goes on")
        self.cancel(program)
        self.expect_gone(program)
        self.expect_result(program, FAILED)  # though it had written the word
        self.close(program)

    def test_a_key_of_the_console(self):
        program = self.start_assistant("key\nDone\n")
        self.start_format(program)
        self.expect_result(program, DONE)
        self.assertEqual(self.note(program, "answered"), "y\n")

    def test_closing_the_main_window_ends_it(self):
        program = self.start_endless()
        program.close("frmMain")
        self.assertEqual(program.exit_status(), 0, program.output())
        self.expect_gone(program)

    def test_the_end_of_the_session(self):
        program = self.start_endless()
        program.terminate()
        self.assertEqual(program.exit_status(), 0, program.output())
        self.expect_gone(program)

    def test_no_second_one(self):
        program = self.start_endless()
        program.click("Command1", "Form1")
        program.click("Command2", "Form1")
        self.expect_step(program, 1, FIRST)
        self.assertIsNone(program.message())
        self.cancel(program)
        self.expect_result(program, FAILED)

    def test_a_disk_that_goes(self):
        program = self.start_endless()
        self.plug(program, "")
        self.expect_step(program, 3, THIRD.format("H:"))
        self.cancel(program)
        self.expect_result(program, FAILED)

    def test_the_check_for_updates_goes_on_beside_it(self):
        program = self.start_endless()
        self.wait_loaded(program)


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
