"""Libraries that are loaded when they are needed, which is after the window has come up."""

import unittest
from pathlib import Path

from case import WindowCase
from side_by_side import side_by_side

LIBRARY = "libcurl.so.4"


class LateLibrary(WindowCase):
    # Qt's network library may bring a libcurl of another name (libcurl-gnutls.so.4, for libproxy).
    def loaded(self, program, *names):
        """The files with one of the names in their path that are loaded."""
        maps = Path(f"/proc/{program.process.pid}/maps").read_text(encoding="utf-8").splitlines()
        return {Path(line.split()[5]) for line in maps if any(name in line for name in names)}

    def test_is_the_systems_and_not_loaded_before_it_is_needed(self):
        program = self.start(start=False)
        for folder in (program.folder, program.home):  # beside the program, and where it is started
            (folder / LIBRARY).write_bytes(b"not the system's")
        program.start()
        program.wait_until(lambda: program.request("windows") and program.first_paint, what="the first paint")
        self.assertEqual(self.loaded(program, "/libcurl.so", "/imageformats/"), set())
        self.wait_loaded(program)
        loaded = self.loaded(program, "/libcurl.so")
        self.assertEqual(len(loaded), 1)
        self.assertRegex(str(loaded.pop()), "^(/usr)?/lib/")
        self.close(program)

    def test_a_machine_without_it_is_told_what_to_install(self):
        broken = self.home / "libraries"
        broken.mkdir()
        (broken / LIBRARY).touch()
        program = self.start(environment={"LD_LIBRARY_PATH": str(broken)})
        program.wait_message()
        self.assertIn("Installieren Sie das Paket", program.message()["text"])
        self.assertIn(f"orvanta-usbtool: {broken / LIBRARY}: file too short", program.output())
        self.expect_error(program, 48, LIBRARY)


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
