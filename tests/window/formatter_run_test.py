"""What becomes of the formatter that the assistant starts."""

import os
import unittest
from pathlib import Path

from assistant import (ANSWER, CANCEL, DONE, FAILED, FIRST, FORMATTER, FORMATTING, NOT_STARTED, THIRD,
                       AssistantCase)
from case import REPORT_TITLE, TITLE
from side_by_side import each, side_by_side

ENDLESS = "while :; do sleep 0.05; done\n"


class Formatter(AssistantCase):
    def test_done(self):
        program = self.start_assistant(ANSWER + "echo 'Size: 1 GB'; echo Done\n")
        self.start_format(program)
        program.wait_message()
        self.picture(program, "assistant-done")
        self.expect_result(program, DONE)
        self.assertEqual((self.note(program, "called"), self.note(program, "answered")), ("-c64 H:\n", "y\n"))
        self.close(program)

    @each({"lower case": "echo done\n", "nothing": "", "only on standard error": "echo Done >&2\n",
           "another answer": "echo Refused.; exit 3\n"})
    def test_failed(self, script):
        program = self.start_assistant(ANSWER + script)
        self.start_format(program)
        program.wait_message()
        self.picture(program, "assistant-failed")
        self.expect_result(program, FAILED)

    @each({"without a line end": "printf Done", "within a word": "echo NotDoneYet", "and an error status":
           "echo Done; exit 1", "just before the end": "head -c 300000 /dev/zero | tr '\\0' x; printf Done",
           "in two parts": "printf Do; sleep 0.2; printf ne", "and ten megabytes after it":
           "printf Done; head -c 10000000 /dev/zero | tr '\\0' x"})
    def test_done_in_other_ways(self, script):
        program = self.start_assistant(script + "\n")
        self.start_format(program)
        self.expect_result(program, DONE)

    def test_missing(self):
        program = self.start_assistant(None)
        self.start_format(program)
        program.wait_message()
        self.picture(program, "assistant-missing")
        self.drop_message(program, REPORT_TITLE, NOT_STARTED, 48)
        self.expect_result(program, FAILED)
        self.close(program)

    def test_not_executable(self):
        program = self.start_assistant()
        (program.folder / FORMATTER).chmod(0o644)
        self.start_format(program)
        self.drop_message(program, REPORT_TITLE, NOT_STARTED, 48)
        self.expect_result(program, FAILED)

    def test_no_program_at_all(self):
        program = self.start_assistant()
        program.write(FORMATTER, b"\x00\x01 no program")
        (program.folder / FORMATTER).chmod(0o755)
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


class WhileItRuns(AssistantCase):
    def start_endless(self):
        """A formatter that does not care for its answer and never ends."""
        program = self.start_assistant('echo Done\ntouch "$(dirname "$0")/written"\n' + ENDLESS)
        self.start_format(program)
        number = self.child(program)
        self.addCleanup(self.end_child, number)
        program.wait_until((program.folder / "written").exists, what="the word")
        for _ in range(2):  # the runner looks into the pipe between two answers
            program.windows()
        return program, number

    def end_child(self, number):
        try:
            os.kill(number, 9)
        except ProcessLookupError:
            pass

    def test_the_window_answers(self):
        program, _ = self.start_endless()
        self.assertEqual(program.text("prgFormat", "Form1"), FORMATTING)
        program.click("chkAuto", "frmMain")
        program.wait_for("chkAuto", "checked", True, window="frmMain")
        self.picture(program, "assistant-running")

    def test_closing_the_assistant_asks(self):
        program, number = self.start_endless()
        program.close("Form1")
        box = program.wait_message()
        self.assertEqual((box["title"], box["text"], box["icon"], box["buttons"]),
                         (REPORT_TITLE, CANCEL, 48, ["Ja", "Nein"]))
        self.picture(program, "assistant-cancel")
        program.appearance(dark=True)
        self.picture(program, "assistant-cancel-dark")
        program.type("", "Return")
        program.wait_until(lambda: program.message() is None, what="the answer no")
        self.assertIn("Form1", program.windows())
        self.assertFalse(self.is_gone(number), "the formatter goes on")
        self.cancel(program)
        self.wait_child_gone(program, number)
        self.expect_result(program, FAILED)  # though it had written the word
        self.close(program)

    def test_it_may_end_behind_the_question(self):
        program = self.start_assistant(ANSWER + 'until [ -e go ]; do sleep 0.05; done\necho Done\n')
        self.start_format(program)
        number = self.child(program)
        program.close("Form1")
        program.wait_message()
        program.write("go", b"")
        self.wait_child_gone(program, number)
        program.answer("Ja")
        self.expect_result(program, DONE)

    def test_closing_the_main_window_ends_it(self):
        program, number = self.start_endless()
        program.close("frmMain")
        self.assertEqual(program.exit_status(), 0, program.output())
        self.wait_child_gone(program, number)

    def test_it_leaves_the_processor_to_others(self):
        program = self.start_assistant("sleep 2\n")
        self.start_format(program)
        number = self.child(program)
        before = self.seconds_worked(program)
        self.wait_child_gone(program, number)
        self.assertLess(self.seconds_worked(program) - before, 0.4)

    def seconds_worked(self, program):
        """Of the processor's time, by the program itself."""
        user, system = Path(f"/proc/{program.process.pid}/stat").read_text().rsplit(")", 1)[1].split()[11:13]
        return (int(user) + int(system)) / os.sysconf("SC_CLK_TCK")

    def test_told_to_end(self):
        program, number = self.start_endless()
        program.terminate()
        self.assertEqual(program.exit_status(), 0, program.output())
        self.wait_child_gone(program, number)

    def test_no_second_one(self):
        program, number = self.start_endless()
        program.click("Command1", "Form1")
        program.click("Command2", "Form1")
        self.expect_step(program, 1, FIRST)
        self.assertIsNone(program.message())
        self.assertEqual(self.child(program), number)
        self.cancel(program)
        self.expect_result(program, FAILED)

    def test_opened_again(self):
        program, number = self.start_endless()
        program.click("cmdtest", "frmMain")
        self.expect_step(program, 3, THIRD.format("H:"))
        self.assertEqual(self.child(program), number)
        self.close(program)

    def test_a_disk_that_goes(self):
        program, _ = self.start_endless()
        self.plug(program, "")
        self.expect_step(program, 3, THIRD.format("H:"))
        self.cancel(program)
        self.expect_result(program, FAILED)

    def test_the_check_for_updates_goes_on_beside_it(self):
        program, _ = self.start_endless()
        self.wait_loaded(program)
        self.assertEqual(program.windows()["frmMain"]["title"], TITLE)


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
