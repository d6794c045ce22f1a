"""The Flatpak: its manifest asks for no more than the job takes, and with just that the job is done.

    USBTOOL_BUILD   build folder of the program and the driver, build

The sandbox is made with bubblewrap from the rights that the manifest asks for; Flatpak itself makes its own with it. It
takes python3-yaml and bubblewrap.
"""

import os
import re
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

import yaml

ROOT = Path(__file__).resolve().parents[2]
os.environ.setdefault("USBTOOL_BUILD", str(ROOT / "build"))
sys.path[:0] = [str(ROOT / "tests" / folder) for folder in ("driver", "support", "window")]

from assistant import FIRST, AssistantCase  # noqa: E402
from case import COPIED, PatientProgram  # noqa: E402
from driver import BUILD, Drive, plugin_folder  # noqa: E402
from server_files import FIRMWARE, SETTINGS  # noqa: E402

MANIFESTS = list((ROOT / "packaging" / "flatpak").glob("*.yml"))
MANIFEST = yaml.safe_load(MANIFESTS[0].read_text(encoding="utf-8"))
RIGHTS = {"--socket=wayland", "--socket=fallback-x11", "--share=network", "--filesystem=/run/media",
          "--filesystem=/media", "--system-talk-name=org.freedesktop.UDisks2"}
STICK = Path("run/media/me/ORVANTA")
PROGRAM = "/app/lib/orvanta-usbtool"
SWITCHED_OFF = ("Im Flatpak ist der Assistent abgeschaltet: Zum Formatieren dient das Paket für Debian und Ubuntu "
                "oder der Ordner des Programms.")


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

    def test_its_sources_are_there(self):
        """But for what is made before it is built."""
        for module in MANIFEST["modules"]:
            for source in module["sources"]:
                path = (MANIFESTS[0].parent / source["path"]).resolve()
                self.assertTrue(path.is_relative_to(ROOT))
                self.assertTrue(path.exists() or path.is_relative_to(ROOT / "build"), path)


def sandbox(rights, home):
    """The command that goes in front of one for the sandbox. `home` holds what stands for the machine's folders."""
    command = ["bwrap", "--unshare-all", "--die-with-parent", "--proc", "/proc", "--dev", "/dev", "--ro-bind", "/usr",
               "/usr", "--ro-bind", "/etc", "/etc", "--tmpfs", "/tmp", "--tmpfs", "/run", "--dir", "/run/user/me",
               "--ro-bind", home / "flatpak-info", "/.flatpak-info", "--bind", home / "config", "/var/config"]
    for folder in ("bin", "lib", "lib64", "sbin"):
        if Path("/", folder).is_symlink():
            command += ["--symlink", f"usr/{folder}", f"/{folder}"]
    for right in rights:
        kind, value = right.split("=")
        if right == "--share=network":
            command += ["--share-net"]
        elif kind == "--filesystem" and (home / "machine" / value[1:]).is_dir():
            command += ["--bind", home / "machine" / value[1:], value]
    return [str(part) for part in command]


class SandboxedProgram(PatientProgram):
    """The program where Flatpak would put it. What it is driven by is let in, too, and the desktop's commands are the
    test's."""

    rights = ()

    def __init__(self, **arguments):
        self._commands = arguments.pop("commands")
        self._machine = arguments.pop("machine")
        super().__init__(**arguments)

    def _launch(self, command, environment):
        for folder in ("config", "driver-socket"):
            (self.home / folder).mkdir(exist_ok=True)
        (self.home / "flatpak-info").write_text(f"[Application]\nname={MANIFEST['id']}\n")
        if not (self.home / "machine").exists():
            (self.home / "machine").symlink_to(self._machine)
        socket = self.home / "driver-socket" / "driver"
        self._socket_path = socket
        own = environment | {
            "PATH": "/commands:/usr/bin", "HOME": "/tmp", "XDG_CONFIG_HOME": "/var/config",
            "XDG_RUNTIME_DIR": "/run/user/me", "FLATPAK_ID": MANIFEST["id"],
            "QT_QPA_GENERIC_PLUGINS": f"usbtooldriver:{socket}"}
        walls = sandbox(self.rights, self.home) + [
            "--ro-bind", str(self.folder), PROGRAM, "--ro-bind", str(plugin_folder()), str(plugin_folder()),
            "--bind", str(socket.parent), str(socket.parent), "--ro-bind", str(self.home / "screen.json"),
            str(self.home / "screen.json"), "--bind", str(self._commands), "/commands", "--chdir", "/"]
        super()._launch([*walls, f"{PROGRAM}/{self.executable.name}", *command[1:]], own)


class Sandbox(AssistantCase):
    def setUp(self):
        if shutil.which("bwrap") is None:
            self.skipTest("bubblewrap is not installed")
        if subprocess.run(["bwrap", "--unshare-all", "--ro-bind", "/", "/", "true"], stderr=subprocess.DEVNULL,
                          check=False).returncode != 0:
            self.skipTest("this machine allows no sandbox")
        super().setUp()
        self.machine = self.home / "machine"
        self.stick = self.machine / STICK
        self.stick.mkdir(parents=True)
        (self.machine / "media").mkdir()
        (self.machine / "home").mkdir()

    def drives(self):
        """As the sandbox sees them."""
        return [Drive("C", 3, "/usr"), Drive("E", 2, Path("/", STICK), label="ORVANTA", file_system="FAT32"),
                Drive("Z", 4, "/usr")]

    def start(self, rights=tuple(MANIFEST["finish-args"]), **arguments):
        class Program(SandboxedProgram):
            pass

        Program.rights = rights
        program = Program(drives=self.drives(), server=self.server.url(), commands=self.home / "bin",
                          machine=self.machine, **arguments)
        self.addCleanup(self._stop, program)
        return program

    def test_the_whole_job(self):
        program = self.start_loaded()
        self.run_job(program)
        self.expect_stick({"sr200.abs": FIRMWARE, "sr200_at.sdx": SETTINGS, **COPIED})
        self.close(program)
        settings = program.home / "config" / "orvanta-usbtool" / "Settings.ini"
        self.assertTrue(settings.is_file(), "the program's folder cannot be written to")
        self.assertFalse((program.folder / "Settings.ini").exists())

    def test_the_stick_takes_the_rights_that_the_manifest_asks_for(self):
        """And so would the test find out if one of them was not enough."""
        program = self.start(rights=[right for right in RIGHTS if not right.endswith("/run/media")])
        program.wait_for("StatusBar1_1", "text", "No Stick")

    def test_the_server_takes_the_network(self):
        program = self.start(rights=[right for right in RIGHTS if right != "--share=network"])
        self.expect_no_connection(program)

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
        self.assertEqual(self.opened(), [f"{PROGRAM}/Anleitung.html"])

    def test_notifications_go_to_the_portal(self):
        folder = BUILD / "tests" / "conformance" / "desktop_bus_test"
        for name in ("config",):
            (self.home / name).mkdir()
        (self.home / "flatpak-info").write_text("[Application]\n")
        done = subprocess.run([*sandbox(MANIFEST["finish-args"], self.home), "--ro-bind", str(folder), "/test",
                               "/test/conformance_desktop_bus_test", "--gtest_filter=*FromASandbox*"],
                              capture_output=True, text=True, check=False, env=os.environ | {"HOME": "/tmp"})
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertIn("[       OK ] DesktopBus.FromASandboxThePortalNotifies", done.stdout)


if __name__ == "__main__":
    unittest.main()
