"""The steps of the assistant for hard disks."""

import unittest

from assistant import DONE, FIRST, OTHER, QUESTION, REFUSAL, REFUSAL_TITLE, SECOND, THIRD, AssistantCase
from side_by_side import each, side_by_side

LARGE = (2732, 1536)


class Steps(AssistantCase):
    def test_the_first(self):
        program = self.start_assistant()
        self.expect_buttons(program, True, True)
        window = program.windows()["Form1"]
        self.assertEqual((window["title"], window["modal"]), ("Fat32 Format Assistent", False))
        self.expect(program, {"Label1.text": "Fat 32 Format Assistent:", "Command1.text": "WEITER >>>",
                              "Command2.text": "<<< Zurück", "Command1.shortcut": "Alt+W",
                              "Command2.shortcut": "Alt+Z", "Command1.accessibleName": "Weiter",
                              "Command2.accessibleName": "Zurück", "Command1.focus": True})
        self.picture(program, "assistant-1")

    def test_all_three_in_one_size(self):
        program = self.start_assistant()
        size = program.windows()["Form1"]["geometry"]
        self.second_step(program)
        self.picture(program, "assistant-2")
        self.assertEqual(program.windows()["Form1"]["geometry"], size)
        self.plug(program, "h")
        self.expect_step(program, 3, THIRD.format("H:"))
        self.expect_disk(program, "STICK h")
        self.picture(program, "assistant-3")
        self.assertEqual(program.windows()["Form1"]["geometry"], size)

    @each({"usual": {}, "dark": {"dark": True}, "large": {"font_size": 18},
           "large and dark": {"font_size": 18, "dark": True}})
    def test_every_look(self, look):
        program = self.start_assistant(screen=LARGE)
        program.appearance(**look)
        height = 25 if "font_size" in look else 15
        program.wait_until(lambda: (program.get("Label1", "Form1")["geometry"][3] >= 25) == (height == 25))
        self.second_step(program)
        parts = program.all("Form1")
        window = program.windows()["Form1"]["geometry"]
        for name in ("Label1", "Label2", "Label3", "lblDisk", "Command1", "Command2"):
            x, y, width, height = parts[name]["geometry"]
            self.assertGreaterEqual(width, parts[name]["wantedSize"][0], name)
            self.assertGreaterEqual(height, parts[name]["wantedSize"][1], name)
            self.assertTrue(x >= 0 and y >= 0 and x + width <= window[2] and y + height <= window[3], name)
        self.picture(program, "assistant-" + ("-".join(f"{k}-{v}" for k, v in look.items()) or "usual"), "Form1")

    def test_twice_the_resolution(self):
        program = self.start_assistant(screen=LARGE, scale=2)
        self.second_step(program)
        self.picture(program, "assistant-200", "Form1")

    def test_back_from_the_second(self):
        program = self.start_assistant()
        self.second_step(program)
        program.click("Command2", "Form1")
        self.expect_step(program, 1, FIRST)
        self.expect_buttons(program, True, False)
        self.expect(program, {"lblDisk.text": ""})
        self.second_step(program)

    def test_back_from_the_third_takes_a_new_look(self):
        program = self.start_assistant()
        self.third_step(program)
        program.click("Command2", "Form1")
        self.expect_step(program, 1, FIRST)
        self.expect_buttons(program, True, False)
        self.third_step(program, "hi", "I:")

    def test_a_stick_is_no_disk(self):
        program = self.start_assistant()
        self.second_step(program)
        self.plug(program, "E")
        self.plug(program, "Eh")
        self.expect_step(program, 3, THIRD.format("H:"))

    def test_a_disk_that_was_there_is_not_the_one(self):
        program = self.start_assistant(letters="h")
        self.third_step(program, "hi", "I:")

    def test_of_two_new_ones_the_last(self):
        program = self.start_assistant()
        self.third_step(program, "hi", "I:")

    def test_a_letter_in_front_of_another_disk(self):
        program = self.start_assistant(letters="h")
        self.third_step(program, "gh", "H:")  # numbers are compared, not letters

    def test_by_keyboard(self):
        program = self.start_assistant()
        program.type("", "Alt+W")
        self.expect_step(program, 2, SECOND)
        program.type("", "Alt+Z")
        self.expect_step(program, 1, FIRST)
        program.type("", "Return")
        self.expect_step(program, 2, SECOND)

    def test_the_main_window_works_beside_it(self):
        program = self.start_assistant()
        program.click("chkAuto", "frmMain")
        program.wait_for("chkAuto", "checked", True)

    def test_opened_twice(self):
        program = self.start_assistant()
        self.second_step(program)
        program.click("cmdtest", "frmMain")
        windows = [w for w in program.request("windows")["windows"] if w["name"] == "Form1" and w["visible"]]
        self.assertEqual(len(windows), 1)
        self.expect_step(program, 2, SECOND)

    def test_closed_and_opened(self):
        program = self.start_assistant()
        self.second_step(program)
        program.close("Form1")
        program.wait_until(lambda: "Form1" not in program.windows())
        self.plug(program, "h")
        self.open(program)
        self.expect_buttons(program, True, True)
        self.third_step(program, "hi", "I:")

    @each({"one": 1, "two": 2})
    def test_the_program_ends_with_it(self, step):
        program = self.start_assistant()
        if step == 2:
            self.second_step(program)
        self.close(program)


class Gate(AssistantCase):
    def test_nobody(self):
        program = self.start_assistant(user="nobody")
        program.click("Command1", "Form1")
        program.wait_message(title=REFUSAL_TITLE)
        self.picture(program, "assistant-refused")
        self.drop_message(program, REFUSAL_TITLE, REFUSAL, 16)
        program.wait_until(lambda: "Form1" not in program.windows(), what="the assistant's end")
        self.open(program)
        program.click("Command1", "Form1")
        self.drop_message(program, REFUSAL_TITLE, REFUSAL, 16)
        self.close(program)

    @each({"empty": "", "other case": "ROOT", "blank": "root "})
    def test_names_are_compared_exactly(self, user):
        program = self.start_assistant(user=user)
        program.click("Command1", "Form1")
        self.drop_message(program, REFUSAL_TITLE, REFUSAL, 16)


class Question(AssistantCase):
    def test_cancelled(self):
        program = self.start_assistant()
        self.third_step(program)
        for leave in (lambda: program.answer("Abbrechen"), lambda: program.type("", "Escape")):
            self.ask(program)
            box = program.message()
            self.assertEqual((box["text"], box["icon"], box["buttons"]),
                             (QUESTION.format("H:"), 0, ["OK", "Abbrechen"]))
            self.picture(program, "assistant-question")
            leave()
            program.wait_until(lambda: program.message() is None)
            self.expect_step(program, 3, THIRD.format("H:"))
            self.expect_buttons(program, True, True)
        self.assertIsNone(self.note(program, "called"))

    def test_told_to_end(self):
        program = self.start_assistant()
        self.third_step(program)
        self.ask(program)
        program.terminate()
        self.assertEqual(program.exit_status(), 0, program.output())
        self.assertIsNone(self.note(program, "called"))


class Exchange(AssistantCase):
    def test_pulled_and_plugged_again(self):
        program = self.start_assistant()
        self.third_step(program)
        self.plug(program, "")
        self.expect_step(program, 2, SECOND)
        self.expect_buttons(program, False, True)
        self.plug(program, "h")
        self.expect_step(program, 3, THIRD.format("H:"))

    def test_exchanged_before_the_question(self):
        program = self.start_assistant()
        self.third_step(program)
        self.exchange_disk(program, "h")
        self.expect_disk(program, OTHER)  # after the second step, which lasts as little as a moment
        self.expect_step(program, 3, THIRD.format("H:"))

    def test_exchanged_behind_the_question(self):
        program = self.start_assistant()
        self.third_step(program)
        self.ask(program)
        self.exchange_disk(program, "h")
        program.answer("OK")
        self.expect_disk(program, OTHER)
        self.assertIsNone(program.message())
        self.assertIsNone(self.note(program, "called"))
        self.expect_step(program, 3, THIRD.format("H:"))
        self.ask(program)
        program.answer("OK")
        self.expect_result(program, DONE)
        self.assertEqual(self.note(program, "called"), "-c64 H:\n")


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
