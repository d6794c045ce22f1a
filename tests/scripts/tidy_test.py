"""What scripts/tidy.py analyses, and what it knows already: a small build with one source and one header."""

import json
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

TIDY = Path(__file__).resolve().parents[2] / "scripts" / "tidy.py"
GOOD = '#include "a.h"\nint* none() { return nullptr; }\n'
BAD = '#include "a.h"\nint* none() { return 0; }\n'


@unittest.skipUnless(shutil.which("clang-tidy-14"), "there is no clang-tidy: scripts/setup.sh style")
class Tidy(unittest.TestCase):
    def setUp(self):
        self.folder = Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)
        self.tree = self.project("tree")

    def project(self, name):
        tree = self.folder / name
        for folder in ("scripts", "build", "app"):
            (tree / folder).mkdir(parents=True)
        shutil.copy(TIDY, tree / "scripts")
        (tree / ".clang-tidy").write_text("Checks: '-*,modernize-use-nullptr'\nWarningsAsErrors: '*'\n")
        (tree / "app" / "a.h").write_text("int* none();\n")
        (tree / "app" / "a.cpp").write_text(GOOD)
        (tree / "build" / "compile_commands.json").write_text(json.dumps([{
            "directory": str(tree / "build"), "file": str(tree / "app" / "a.cpp"),
            "command": f"/usr/bin/c++ -I{tree} -o a.o -c {tree}/app/a.cpp"}]))
        return tree

    def expect(self, noted, status=0, tree=None, home=None):
        run = subprocess.run([sys.executable, (tree or self.tree) / "scripts" / "tidy.py", "build", "app/"],
                             env={**os.environ, "XDG_CACHE_HOME": str(home or self.folder / "cache")},
                             stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
        self.assertEqual((run.returncode, run.stdout.splitlines()[-1]),
                         (status, f"clang-tidy: 1 sources of build, {noted} of them as they were."), run.stdout)
        return run.stdout

    def test_it_is_analysed_once(self):
        self.expect(noted=0)
        self.expect(noted=1)

    def test_in_another_folder(self):
        self.expect(noted=0)
        self.expect(noted=1, tree=self.project("clone"))

    def test_what_was_found_is_found_again(self):
        (self.tree / "app" / "a.cpp").write_text(BAD)
        for _ in range(2):
            self.assertIn("use nullptr", self.expect(noted=0, status=1))

    def test_a_header_that_changes(self):
        self.expect(noted=0)
        (self.tree / "app" / "a.h").write_text("int* none();\nint* other();\n")
        self.expect(noted=0)

    def test_a_directive_that_adds_nothing_to_the_text(self):
        (self.tree / ".clang-tidy").write_text("Checks: '-*,readability-duplicate-include'\nWarningsAsErrors: '*'\n")
        (self.tree / "app" / "a.h").write_text("#pragma once\nint* none();\n")
        self.expect(noted=0)
        (self.tree / "app" / "a.cpp").write_text('#include "a.h"\n' + GOOD)
        self.expect(noted=0, status=1)

    def test_a_comment_that_silenced_it_goes(self):
        (self.tree / "app" / "a.cpp").write_text(BAD.replace("}", "} // NOLINT"))
        self.expect(noted=0)
        (self.tree / "app" / "a.cpp").write_text(BAD)
        self.expect(noted=0, status=1)

    def test_other_settings(self):
        self.expect(noted=0)
        (self.tree / ".clang-tidy").write_text("Checks: '-*,modernize-use-trailing-return-type'\nWarningsAsErrors: '*'\n")
        self.expect(noted=0, status=1)

    def test_a_source_that_cannot_be_read(self):
        (self.tree / "app" / "a.h").unlink()
        self.assertIn("a.h", self.expect(noted=0, status=1))

    def test_a_home_that_cannot_be_written(self):
        (self.folder / "file").touch()
        for _ in range(2):
            self.expect(noted=0, home=self.folder / "file")

    def test_no_source(self):
        (self.tree / "build" / "compile_commands.json").write_text("[]")
        run = subprocess.run([sys.executable, self.tree / "scripts" / "tidy.py", "build", "app/"],
                             stderr=subprocess.PIPE, text=True, check=False)
        self.assertEqual((run.returncode, run.stderr.strip()), (1, f"There are no sources in {self.tree / 'build'}."))


if __name__ == "__main__":
    unittest.main()
