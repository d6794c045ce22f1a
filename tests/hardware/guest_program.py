"""The program in the guest, used as a person does, through the driver plugin."""

import itertools
import sys
from pathlib import Path

sys.path[:0] = [str(Path(__file__).resolve().parents[1] / "driver")]

from window import DriverError, PluginWindow  # noqa: E402

PATIENCE = 90  # seconds

CONFIRMATION = "Wollen Sie updaten ?"
SUCCESS = "Update erfolgreich"
TOO_LITTLE_SPACE = "Zuwenig Speicher verfügbar !"
REPORT_TITLE = "Orvanta USB-Stick Internetupdate Tool"

MASTER = "/srv/program"
PROGRAMS = "/srv/programs"
BIN = "/srv/bin"


def prepare(guest):
    """Once a boot: the program on the guest's own disk, and a desktop that opens nothing."""
    guest.root.run(f"mkdir -p {PROGRAMS} {BIN} /run/usbtool-root && chmod 700 /run/usbtool-root && "
                   f"cp -r /payload/program {MASTER} && cp -r /payload/plugins /srv/plugins")
    for name in ("xdg-open", "xdg-mime"):
        guest.root.write(f"{BIN}/{name}", b"#!/bin/sh\nexit 0\n", 0o755)


class GuestProgram(PluginWindow):
    """One run of the program.

    agent       guest.user or guest.root: who runs it
    server      address of the update server as the guest sees it
    automatic   whether the automatic detection is switched on
    unit        index of the unit that sizes are shown in: 0 MB, 1 GB
    """

    poll = 0.05

    _numbers = itertools.count(1)

    def __init__(self, guest, agent, server, automatic=True, unit=0):
        self.agent = agent
        self.name = f"run{next(self._numbers)}"
        self.folder = f"{PROGRAMS}/{self.name}"
        self._guest = guest
        owner = "root" if agent is guest.root else "stick"
        self.runtime = "/run/usbtool-root" if agent is guest.root else "/run/user/1000"
        self.driver = f"{self.runtime}/{self.name}"
        guest.root.run(f"cp -al {MASTER} {self.folder} && rm {self.folder}/Server.ini && chown {owner} {self.folder}")
        host = server.split("://", 1)[1]
        self._write("Server.ini", f"[Server]\r\nUpdate={server}\r\nUpdatePage={host}\r\nWebHost={host}\r\n")
        self._write("Settings.ini", f"[USB Tool]\r\nchkAuto={int(automatic)}\r\ncmbSize={unit}\r\n")
        self.process = None
        self.start()

    def _write(self, name, text):
        self.agent.write(f"{self.folder}/{name}", text.encode("cp1252"))

    def start(self):
        environment = {"QT_QPA_PLATFORM": "offscreen", "QT_PLUGIN_PATH": "/srv/plugins", "LC_ALL": "C.UTF-8",
                       "QT_QPA_GENERIC_PLUGINS": f"usbtooldriver:{self.driver}", "XDG_RUNTIME_DIR": self.runtime,
                       "PATH": f"{BIN}:/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin",
                       "USERNAME": "root" if self.agent is self._guest.root else "stick",
                       "HOME": f"{self.folder}"}
        self.process = self.agent.request("start", command=[f"{self.folder}/orvanta-usbtool"], folder=self.folder,
                                          environment=environment, output=f"{self.folder}/output")["process"]
        self.agent.request("wait_listening", path=self.driver, timeout=PATIENCE)
        self._use(self.agent.connect(self.driver))
        self.wait_until(self.windows, what="a window")

    def status(self, timeout=0):
        return self.agent.request("status", process=self.process, timeout=timeout)["status"]

    def exit_status(self):
        """Waits for the end; a signal is a negative number."""
        status = self.status(PATIENCE)
        if status is None:
            raise DriverError(f"still running after {PATIENCE} s")
        return status

    def kill(self):
        self.agent.request("kill", process=self.process)
        self.status(PATIENCE)

    def end(self):
        """As its user ends it."""
        self.close()
        status = self.exit_status()
        if status != 0:
            raise AssertionError(f"ended with status {status}\n{self.output()}")

    def dispose(self):
        if self.status() is None:
            self.kill()
        self._disconnect()
        self.agent.run(f"rm -f {self.driver}")
        self._guest.root.run(f"rm -rf {self.folder}")

    def output(self):
        return self.agent.read(f"{self.folder}/output").decode(errors="replace")

    def request(self, what, timeout=PATIENCE, **arguments):
        return super().request(what, timeout, **arguments)

    def _until(self, condition, timeout, complaint):
        return super()._until(condition, max(timeout, PATIENCE), complaint)

    def screenshot(self, path, window=None):
        there = f"{self.runtime}/{self.name}.png"
        self.request("screenshot", path=there, window=window)
        Path(path).write_bytes(self.agent.read(there))

    # What is the same in many scenarios

    def wait_loaded(self):
        self.wait_for("StatusBar1_2", "text", "Updates geladen.", window="frmMain")

    def wait_stick(self, label):
        self.wait_for("txtDT_Cap", "text", label, window="frmMain")
        self.wait_for("StatusBar1_1", "text", "USB Stick", window="frmMain")

    def wait_no_stick(self):
        self.wait_for("StatusBar1_1", "text", "No Stick", window="frmMain")

    def facts(self):
        """What the window tells of the stick."""
        names = ("lblLW", "txtDT_Cap", "txtFAT", "txtOpenPath", "lblHDSize", "lblHDFree", "cmdChoose", "StatusBar1_1")
        return {name: self.text(name, "frmMain") for name in names}

    def letters(self):
        """The program's table of drives: {letter: device}, as it shows it to its companions."""
        links = self.agent.request("links", folder=f"{self.runtime}/orvanta-usbtool/{self.process}")["links"]
        return {name[0].upper(): device for name, device in links.items() if len(name) == 2}

    def confirm(self):
        self.click("cmdChoose", "frmMain")
        self.wait_message(title=CONFIRMATION)
        self.answer("OK")

    def allocated(self):
        """Bytes that it has allocated. What its process occupies is more: a heap does not shrink again by all that
        several windows at once had needed, and pages of libraries count when no other process has them."""
        return int(self.request("allocated")["bytes"])
