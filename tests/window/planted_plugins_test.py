"""Plugins and settings of Qt's that lie beside the program, where a folder of downloads may have them: none counts."""

import shutil
import unittest

from case import WindowCase
from driver import BUILD
from side_by_side import each, side_by_side

PLANTED = BUILD / "tests" / "planted"

# What makes a Qt program look for each kind of plugin by the name of the planted ones; a desktop may set the like.
ASKED_FOR = {
    "generic": {"QT_QPA_GENERIC_PLUGINS": "{generic},planted"},
    "imageformats": {},
    "platforms": {"QT_QPA_PLATFORM": "planted;{platform}"},
    "platformthemes": {"QT_QPA_PLATFORMTHEME": "planted"},
    "styles": {"QT_STYLE_OVERRIDE": "planted"},
}


class PlantedPlugins(WindowCase):
    def start_with(self, kind, folder, settings=None, environment=None):
        """The program when a plugin of that kind lies in a folder below its own one."""
        program = self.start(start=False)
        target = program.folder / folder / kind
        target.mkdir(parents=True)
        shutil.copyfile(PLANTED / kind / "planted.so", target / "planted.so")
        if settings is not None:
            program.write("qt.conf", settings)
        known = program.environment()
        program.set_environment({name: value.format(generic=known["QT_QPA_GENERIC_PLUGINS"],
                                                    platform=known["QT_QPA_PLATFORM"])
                                 for name, value in ASKED_FOR[kind].items()})
        if environment is not None:
            program.set_environment(environment(program))
        program.start()
        self.wait_loaded(program)
        return program

    def loaded(self, program):
        return sorted(str(note.relative_to(program.folder)) for note in program.folder.rglob("*.loaded"))

    @each({kind: kind for kind in ASKED_FOR})
    def test_beside_the_program(self, kind):
        program = self.start_with(kind, "")
        self.assertEqual(self.loaded(program), [])
        self.close(program)

    @each({kind: kind for kind in ASKED_FOR})
    def test_named_by_a_file_beside_the_program(self, kind):
        program = self.start_with(kind, "elsewhere", b"[Paths]\nPlugins=elsewhere\n")
        self.assertEqual(self.loaded(program), [])
        self.close(program)

    @each({kind: kind for kind in ASKED_FOR})
    def test_in_a_folder_that_the_user_has_named(self, kind):
        """These are loaded, which shows that the others were asked for."""
        def named(program):
            return {"QT_PLUGIN_PATH": program.environment()["QT_PLUGIN_PATH"] + f":{program.folder}/named"}

        program = self.start_with(kind, "named", environment=named)
        self.assertEqual(self.loaded(program), [f"named/{kind}/planted.so.loaded"])
        self.close(program)


load_tests = side_by_side

if __name__ == "__main__":
    unittest.main()
