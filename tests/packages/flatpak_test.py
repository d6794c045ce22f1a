"""The Flatpak: its manifest asks for no more than the job takes, and with just that the job is done.

    USBTOOL_BUILD   build folder of the driver and of what stands for UDisks2, build

The program is built and installed as the manifest says, and runs in a sandbox with the rights that the manifest asks
for (flatpak_sandbox.py). What is not as it is there: the libraries are this machine's, not the runtime's, and behind
xdg-open there is no portal but somebody who takes notes.
It takes python3-yaml, bubblewrap, xdg-dbus-proxy, weston, qt6-wayland and xvfb.
"""

import os
import re
import signal
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import yaml

from flatpak_sandbox import Machine
from places import MADE, ROOT, run

os.environ.setdefault("USBTOOL_BUILD", str(ROOT / "build"))
sys.path[:0] = [str(ROOT / "tests" / folder) for folder in ("driver", "support", "window")]

from assistant import FIRST, AssistantCase  # noqa: E402
from case import COPIED, PatientProgram  # noqa: E402
from driver import BUILD, plugin_folder  # noqa: E402
from server_files import FIRMWARE, SETTINGS  # noqa: E402
from side_by_side import each  # noqa: E402
from window import ProgramEnded  # noqa: E402

MANIFESTS = list((ROOT / "packaging" / "flatpak").glob("*.yml"))
MANIFEST = yaml.safe_load(MANIFESTS[0].read_text(encoding="utf-8"))
MODULE = next(module for module in MANIFEST["modules"] if module["name"] == "orvanta-usbtool")
RIGHTS = {"--socket=wayland", "--socket=fallback-x11", "--share=network", "--filesystem=/run/media",
          "--filesystem=/media", "--system-talk-name=org.freedesktop.UDisks2"}
STICK = Path("run/media/me/ORVANTA")
PREFIX = Path("/app")
PROGRAM = PREFIX / "lib" / "orvanta-usbtool"
PAGE = "Anleitung.html"
SWITCHED_OFF = ("Im Flatpak ist der Assistent abgeschaltet: Zum Formatieren dient das Paket für Debian und Ubuntu "
                "oder der Ordner des Programms.")
NO_BUS = ('USB-Sticks werden nicht erkannt: Der Systembus (D-Bus) ist nicht erreichbar. Starten Sie den Dienst '
          '"dbus".')


def without(*rights):
    return [right for right in MANIFEST["finish-args"] if right not in rights]


def option(name):
    """Of the manifest's for CMake; empty where it has none."""
    return next((value.partition("=")[2] for value in MODULE["config-opts"] if value.startswith(f"-D{name}=")), "")


class Manifest(unittest.TestCase):
    def test_there_is_one_and_its_name_is_the_program_s(self):
        self.assertEqual([file.stem for file in MANIFESTS], [MANIFEST["id"]])
        self.assertRegex(MANIFEST["id"], r"^[a-z]+(\.[A-Za-z][A-Za-z0-9]*){2,}$")

    def test_it_asks_for_these_rights_and_no_other(self):
        self.assertEqual(sorted(MANIFEST["finish-args"]), sorted(RIGHTS))

    def test_the_runtime(self):
        self.assertEqual((MANIFEST["runtime"], MANIFEST["sdk"]), ("org.kde.Platform", "org.kde.Sdk"))
        self.assertRegex(MANIFEST["runtime-version"], r"^6\.\d+$")

    def test_what_is_renamed_is_what_the_program_s_files_are_called(self):
        source = (ROOT / "toolkit" / "qt" / "application.cpp").read_text(encoding="utf-8")
        name = re.search(r'setApplicationName\(QStringLiteral\("([^"]+)"\)\)', source)[1]
        self.assertIn('qEnvironmentVariable("FLATPAK_ID", QCoreApplication::applicationName())', source)
        self.assertEqual((MANIFEST["rename-desktop-file"], MANIFEST["rename-icon"]), (f"{name}.desktop", name))
        self.assertEqual(MANIFEST["command"], name)
        metainfo = (ROOT / "packaging" / "linux" / f"{name}.metainfo.xml.in").read_text(encoding="utf-8")
        self.assertIn(f"<id>{MANIFEST['id']}</id>", metainfo)

    def test_the_user_guide_names_it(self):
        guide = (ROOT / "docs" / "anleitung.md").read_text(encoding="utf-8")
        named = set(re.findall(r"\bexample\.orvanta\.\w+", guide))
        self.assertEqual(named, {MANIFEST["id"]})
        commands = MANIFESTS[0].read_text(encoding="utf-8").replace("\\\n#", "")
        for command in re.findall(r"^#   (\S.*)$", commands, re.MULTILINE):
            self.assertIn(f"`{' '.join(command.split())}`", guide)
        self.assertIn(MANIFEST["runtime"], guide)
        self.assertIn(MANIFEST["sdk"], guide)

    def test_its_sources_are_there(self):
        """But for what is made before it is built."""
        for module in MANIFEST["modules"]:
            for source in module["sources"]:
                path = (MANIFESTS[0].parent / source["path"]).resolve()
                self.assertTrue(path.is_relative_to(ROOT))
                self.assertTrue(path.exists() or path.is_relative_to(ROOT / "build"), path)

    def test_the_page_that_is_made_before_is_the_one_that_is_taken(self):
        page = next(source for source in MODULE["sources"] if source["type"] == "file")
        self.assertEqual(option("ORVANTA_HANDBOOK"), f"{page['dest']}/{Path(page['path']).name}")
        self.assertEqual(Path(page["path"]).name, PAGE)


def installed():
    """The folder that the manifest's build makes of /app. It is built once; what has changed since is built again."""
    folder = MADE / "flatpak"
    run("/usr/bin/python3", "-B", ROOT / "scripts" / "make_handbook.py", "--single", ROOT / "docs" / "anleitung.md",
        folder / "handbook")
    options = [value for value in MODULE["config-opts"] if not value.startswith("-DORVANTA_HANDBOOK=")]
    run("cmake", "-S", ROOT, "-B", folder / "build", "-G", "Ninja", f"-DCMAKE_INSTALL_PREFIX={PREFIX}",
        "-DCMAKE_INSTALL_LIBDIR=lib", *options, f"-DORVANTA_HANDBOOK={folder}/handbook/{PAGE}")
    run("cmake", "--build", folder / "build")
    run("cmake", "-E", "rm", "-rf", folder / "root")
    run("cmake", "--install", folder / "build", env=os.environ | {"DESTDIR": str(folder / "root")})
    return folder / "root" / PREFIX.relative_to("/")


class SandboxedProgram(PatientProgram):
    """The program where Flatpak would put it. What it is driven by is let in, too, and the desktop's commands are the
    test's."""

    def __init__(self, machine, rights, app, commands, **arguments):
        self._machine, self._rights, self._app, self._commands = machine, rights, app, commands
        super().__init__(executable=app / PROGRAM.relative_to(PREFIX) / "orvanta-usbtool", **arguments)

    def _launch(self, command, environment):
        for name in ("config", "driver-socket"):
            (self.home / name).mkdir(exist_ok=True)
        (self.home / "flatpak-info").write_text(f"[Application]\nname={MANIFEST['id']}\n")
        self._socket_path = self.home / "driver-socket" / "driver"
        walls = self._machine.sandbox(self._rights)
        walls.bind(self.home / "flatpak-info", "/.flatpak-info")
        walls.bind(self.home / "config", "/var/config", writable=True)
        walls.bind(self._app, PREFIX)
        walls.bind(self.folder, PROGRAM)
        walls.bind(self._commands, "/commands", writable=True)
        walls.bind(plugin_folder())
        walls.bind(self._socket_path.parent, writable=True)
        walls.bind(self.home / "screen.json")
        own = environment | {
            "PATH": "/commands:/usr/bin", "XDG_CONFIG_HOME": "/var/config", "FLATPAK_ID": MANIFEST["id"],
            "QT_QPA_GENERIC_PLUGINS": f"usbtooldriver:{self._socket_path}"} | walls.environment
        super()._launch([*walls.words, "--chdir", "/", f"{PROGRAM}/{self.executable.name}", *command[1:]], own)


def no_sandbox():
    """What bubblewrap says against one; empty where there may be one. That it is missing is no reason to skip."""
    done = subprocess.run(["bwrap", "--unshare-all", "--ro-bind", "/", "/", "true"], capture_output=True, text=True,
                          check=False)
    return "" if done.returncode == 0 else done.stderr.strip() or f"bwrap ended with {done.returncode}"


class Sandbox(AssistantCase):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        refusal = no_sandbox()
        if refusal:
            print(f"The job in the Flatpak's sandbox is SKIPPED: this machine allows none. {refusal}", file=sys.stderr)
            raise unittest.SkipTest(f"this machine allows no sandbox: {refusal}")
        cls.app = installed()

    def setUp(self):
        super().setUp()
        folder = self.home / "machine"
        self.stick = folder / STICK
        self.stick.mkdir(parents=True)
        (folder / "media").mkdir()
        self.machine = Machine(folder)
        self.addCleanup(self.machine.stop)
        self.machine.start_bus(BUILD / "tests" / "conformance" / "udisks_stand_in", self.stick, Path("/", STICK))
        # What a sandbox knows of the programs outside.
        self._make_command("xdg-mime", 'case "$2" in filetype) echo text/html ;; esac')

    def sandboxed(self, rights, **arguments):
        return SandboxedProgram(self.machine, rights, self.app, self.home / "bin", server=self.server.url(),
                                **arguments)

    def start(self, rights=tuple(MANIFEST["finish-args"]), plugged=True, **arguments):
        if plugged:
            self.machine.plug()
        program = self.sandboxed(rights, **arguments)
        self.addCleanup(self._stop, program)
        return program

    def expect_job(self):
        program = self.start_loaded()
        self.run_job(program)
        self.expect_stick({"sr200.abs": FIRMWARE, "sr200_at.sdx": SETTINGS, **COPIED})
        self.close(program)
        settings = program.home / "config" / "orvanta-usbtool" / "Settings.ini"
        self.assertTrue(settings.is_file(), "the program's folder cannot be written to")
        self.assertFalse((program.folder / "Settings.ini").exists())

    def test_the_whole_job_on_wayland(self):
        self.machine.start_wayland()
        self.expect_job()

    def test_the_whole_job_on_x11(self):
        self.machine.start_x11()
        self.expect_job()

    # And so would the test find out if one of the rights was not enough.

    @each({"Wayland": ("start_wayland", "--socket=wayland"), "X11": ("start_x11", "--socket=fallback-x11")})
    def test_the_screen_takes_its_right(self, start, right):
        """The network goes with it: X11 listens there, too."""
        getattr(self.machine, start)()
        program = self.start(rights=without("--share=network"), plugged=False)
        program.wait_window("frmMain")
        program.close()
        self.assertEqual(program.exit_status(), 0, program.output())
        program = self.sandboxed(without("--share=network", right), start=False)
        self.addCleanup(program.stop)
        with self.assertRaises(ProgramEnded):
            program.start()
        self.assertEqual(program.exit_status(), 128 + signal.SIGABRT, "Qt's way to end without a screen")

    def test_the_stick_takes_the_right_to_its_folder(self):
        program = self.start_loaded(rights=without("--filesystem=/run/media"))
        self.expect(program, {"StatusBar1_1.text": "No Stick"})

    def test_the_stick_takes_the_right_to_ask_for_it(self):
        program = self.start_loaded(rights=without("--system-talk-name=org.freedesktop.UDisks2"))
        self.expect(program, {"StatusBar1_1.text": "No Stick"})
        self.assertIn(NO_BUS, program.get("StatusBar1_1")["toolTip"])

    def test_a_stick_that_comes_later(self):
        """What UDisks2 tells unasked passes, too."""
        program = self.start(plugged=False)
        program.wait_for("StatusBar1_1", "text", "No Stick")
        program.click("chkAuto")
        program.wait_for("chkAuto", "checked", True)
        self.machine.plug()
        program.wait_for("StatusBar1_1", "text", "USB Stick")

    def test_the_server_takes_the_network(self):
        self.expect_no_connection(self.start(rights=without("--share=network")))

    def test_the_assistant_says_that_it_is_off(self):
        program = self.start()
        program.wait_window("frmMain")
        program.click("cmdtest", "frmMain")
        program.wait_window("Form1")
        program.wait_for("Label2", "text", SWITCHED_OFF, window="Form1")
        self.assertNotEqual(SWITCHED_OFF, FIRST)
        self.assertFalse(program.get("Command1", "Form1")["enabled"])
        program.type("", "Return")
        program.click("Command2", "Form1")
        self.expect(program, {"Label3.text": "Schritt 1:", "Label2.text": SWITCHED_OFF, "Command1.enabled": False})
        self.assertIsNone(program.message())

    def test_the_user_guide_opens(self):
        program = self.start()
        program.wait_window("frmMain")
        program.type("", "F1")
        program.wait_until(self.opened, what="the browser")
        page = Path(option("ORVANTA_HANDBOOK_FOLDER") or PROGRAM) / PAGE
        self.assertEqual(self.opened(), [str(page)])
        text = (self.app / page.relative_to(PREFIX)).read_text(encoding="utf-8")
        self.assertIn('src="data:image/png;base64,', text, "the portal gives the browser this one file")

    def test_notifications_go_to_the_portal(self):
        walls = self.machine.sandbox(MANIFEST["finish-args"])
        (self.home / "flatpak-info").write_text("[Application]\n")
        walls.bind(self.home / "flatpak-info", "/.flatpak-info")
        walls.bind(BUILD / "tests" / "conformance" / "desktop_bus_test", "/test")
        done = subprocess.run([*walls.words, "/test/conformance_desktop_bus_test", "--gtest_filter=*FromASandbox*"],
                              capture_output=True, text=True, check=False, env=os.environ | walls.environment)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertIn("[       OK ] DesktopBus.FromASandboxThePortalNotifies", done.stdout)


if __name__ == "__main__":
    unittest.main()
