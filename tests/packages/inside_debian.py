"""Installs, uses, upgrades and purges the package where nothing else happens.

As root in a minimal Debian of its own, with the packages in /packages and the driver's plugin in /driver.
"""

import os
import re
import subprocess
import unittest
from pathlib import Path

os.environ["USBTOOL_DRIVER"] = "/driver"

from places import run  # noqa: E402

NAME = "orvanta-usbtool"
PACKAGES = Path("/packages")
USER = 1000
APT = ["apt-get", "-y", "--no-install-recommends", "-o", "Dpkg::Use-Pty=0"]


def package(version):
    found = list(PACKAGES.glob(f"{NAME}_{version}_*.deb"))
    if len(found) != 1:
        raise AssertionError(f"{version}: {found}")
    return found[0]


def versions():
    """The two, the older one first."""
    names = (re.match(rf"{NAME}_([\d.]+)_", file.name) for file in PACKAGES.glob(f"{NAME}_*.deb"))
    return sorted((name[1] for name in names if name), key=lambda text: [int(part) for part in text.split(".")])


def apt(*words):
    return run(*APT, *words, env=os.environ | {"DEBIAN_FRONTEND": "noninteractive", "LC_ALL": "C"})


def state():
    query = ["dpkg-query", "-W", "-f=${db:Status-Status} ${Version}", NAME]
    return subprocess.run(query, capture_output=True, text=True, check=False).stdout


def traces():
    """What bears the program's name; tests and packages are mounted."""
    skipped = "-path /proc -o -path /sys -o -path /dev -o -path /source -o -path /packages -o -path /driver"
    return run("find", "/", "(", *skipped.split(), ")", "-prune", "-o", "-name", f"*{NAME}*", "-print").split()


class Life(unittest.TestCase):
    """One test after the other, by their names: each goes on where the one before has ended."""

    def test_1_a_minimal_system_installs_it(self):
        self.assertEqual(traces(), [])
        apt("install", package(versions()[0]))
        self.assertEqual(state(), f"installed {versions()[0]}")
        listed = run("dpkg", "--listfiles", NAME).splitlines()
        self.assertEqual([name for name in listed if not os.path.lexists(name)], [], "the system leaves nothing out")
        program = Path(f"/usr/bin/{NAME}").resolve()
        for file in (program, program.parent / "fat32format.exe"):
            self.assertNotIn("not found", run("ldd", file))
        self.assertEqual(run(program, "--version"), f"Orvanta USB-Stick Internetupdate Tool {versions()[0]}\n")
        self.assertTrue(Path("/usr/lib/x86_64-linux-gnu/libcurl.so.4").exists(), "what it loads later")

    def test_2_polkit_knows_the_action(self):
        Path("/run/dbus").mkdir(exist_ok=True)
        run("dbus-daemon", "--system", "--fork", "--nopidfile", stdin=subprocess.DEVNULL)
        shown = run("pkaction", "--verbose", "--action-id", "orvanta-usbtool.format",
                    env=os.environ | {"LC_ALL": "C.UTF-8"})
        formatter = Path(f"/usr/bin/{NAME}").resolve().parent / "fat32format.exe"
        self.assertIn(f"-> {formatter}", shown)
        self.assertIn("auth_admin", shown)

    def test_3_a_plain_user_does_the_whole_job(self):
        apt("install", "libqt6network6")  # the driver's, not the program's
        from installed_program import whole_job
        whole_job(USER)

    def test_4_the_user_guide_opens(self):
        from installed_program import InstalledProgram, stage
        with stage(USER), InstalledProgram(USER) as program:
            opened = program.home / "opened"
            browser = program.home / "browser"
            browser.write_text(f'#!/bin/sh\necho "$1" >>{opened}\n')
            browser.chmod(0o755)
            program.set_environment({"BROWSER": browser})
            program.start()
            program.wait_window("frmMain")
            program.wait_for("lblLW", "text", "E:\\")
            program.type("", "F1")
            program.wait_until(lambda: opened.exists() and opened.read_text().endswith("\n"), what="the browser")
            page = Path(opened.read_text().rstrip("\n"))
        self.assertEqual(page, Path(f"/usr/bin/{NAME}").resolve().parent / "Anleitung.html")
        named = re.findall(r'src="([^"]+)"', page.read_text(encoding="utf-8"))
        documentation = Path(f"/usr/share/doc/{NAME}")
        for folder in (page.parent, documentation):
            for name in (page.name, *named):
                self.assertTrue((folder / name).is_file(), folder / name)
        self.assertTrue(named)

    def test_5_root_has_letters_and_settings_of_roots_own(self):
        from installed_program import InstalledProgram, snapshot, stage
        with stage(0) as set_up:
            before = snapshot("/usr")
            roots = {"XDG_RUNTIME_DIR": None, "XDG_CONFIG_HOME": None, "PKEXEC_UID": str(USER)}
            with InstalledProgram(0, roots) as program:
                program.start()
                program.wait_window("frmMain")
                program.wait_for("lblLW", "text", "E:\\")
                link = Path(f"/run/{NAME}/{program.process.pid}/e:")
                self.assertEqual(os.readlink(link), str(set_up.stick))
                self.expect_letter(program)
                program.close()
                self.assertEqual(program.exit_status(), 0)
                self.assertTrue((program.home / ".config" / NAME / "Settings.ini").is_file())
            self.assertEqual(snapshot("/usr"), before)

    def test_6_the_formatter_behind_pkexec_has_the_users_letters(self):
        from installed_program import InstalledProgram, stage
        runtime = Path(f"/run/user/{USER}")
        runtime.mkdir(parents=True, exist_ok=True)
        os.chown(runtime, USER, USER)
        runtime.chmod(0o700)
        with (stage(USER), InstalledProgram(0, {"XDG_RUNTIME_DIR": None}) as roots,
              InstalledProgram(USER, {"XDG_RUNTIME_DIR": runtime}) as program):
            for each in (roots, program):
                each.start()
                each.wait_window("frmMain")
                each.wait_for("lblLW", "text", "E:\\")
            link = Path(f"/run/{NAME}/{roots.process.pid}/e:")
            link.unlink()  # the letter that the formatter knows is not from there
            self.expect_letter(program)
            self.assertFalse(os.path.lexists(link))
            for each in (program, roots):
                each.close()
                self.assertEqual(each.exit_status(), 0)

    def expect_letter(self, program):
        """Root's formatter, which pkexec has started, knows the letter, and that it is a folder here and no disk."""
        environment = {"PATH": os.environ["PATH"], "PKEXEC_UID": str(USER)}
        for letter, status in (("E:", 4), ("Q:", 3)):
            done = subprocess.run([program.folder / "fat32format.exe", "-c64", letter], env=environment, check=False,
                                  stdin=subprocess.DEVNULL, capture_output=True, text=True)
            self.assertEqual(done.returncode, status, done.stdout + done.stderr)

    def test_7_an_upgrade_keeps_what_was_changed(self):
        servers = Path(f"/etc/{NAME}/Server.ini")
        servers.write_bytes(servers.read_bytes().replace(b"Update=http://", b"Update=https://"))
        changed = servers.read_bytes()
        apt("install", package(versions()[1]))
        self.assertEqual(state(), f"installed {versions()[1]}")
        self.assertEqual(run(NAME, "--version"), f"Orvanta USB-Stick Internetupdate Tool {versions()[1]}\n")
        self.assertEqual(servers.read_bytes(), changed)
        self.assertIn(b"Update=https://", changed)

    def test_8_removing_keeps_the_configuration_and_purging_nothing(self):
        apt("remove", NAME)
        self.assertEqual([name for name in traces() if not name.startswith("/var/lib/dpkg/")], [f"/etc/{NAME}"])
        apt("purge", NAME)
        self.assertEqual(state(), "")
        self.assertEqual(traces(), [])


if __name__ == "__main__":
    unittest.main(failfast=True, verbosity=2)
