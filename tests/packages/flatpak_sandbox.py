"""The machine around a Flatpak, and a sandbox in it with the rights of a manifest.

    with Machine(folder) as machine:
        command = machine.sandbox(rights)
        subprocess.run([*command.words, "true"], env=command.environment)

The walls are bubblewrap's and what passes the system's bus is let through by xdg-dbus-proxy, as when Flatpak makes
them. The machine has a system's bus with a service that stands for UDisks2, and screens of both kinds once they are
asked for.
"""

import os
import subprocess
import time
from pathlib import Path

RUNTIME = "/run/user/me"  # in the sandbox
SYSTEM_BUS = "/run/dbus/system_bus_socket"
PATIENCE = 60  # seconds


class Command:
    """Words in front of a command that is to run in the sandbox, and what its environment has besides."""

    def __init__(self):
        self.words = ["bwrap", "--unshare-all", "--die-with-parent", "--proc", "/proc", "--dev", "/dev",
                      "--ro-bind", "/usr", "/usr", "--ro-bind", "/etc", "/etc",
                      "--tmpfs", "/tmp", "--tmpfs", "/run", "--dir", RUNTIME]
        self.environment = {"HOME": "/tmp", "XDG_RUNTIME_DIR": RUNTIME}
        for folder in ("bin", "lib", "lib64", "sbin"):
            if Path("/", folder).is_symlink():
                self.words += ["--symlink", f"usr/{folder}", f"/{folder}"]

    def bind(self, outside, inside=None, writable=False):
        self.words += ["--bind" if writable else "--ro-bind", str(outside), str(inside or outside)]


class Machine:
    def __init__(self, folder):
        self.folder = folder
        self._running = []
        self._proxies = 0
        self._wayland = self._display = self._bus = self._udisks = None

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stop()

    def stop(self):
        for process in reversed(self._running):
            process.terminate()
            process.wait(PATIENCE)
            for stream in (process.stdin, process.stdout):
                if stream is not None:
                    stream.close()

    def _start(self, *command, environment=None, **options):
        process = subprocess.Popen([str(word) for word in command], env=os.environ | (environment or {}), text=True,
                                   stderr=subprocess.DEVNULL, **options)
        self._running.append(process)
        return process

    def _wait_for_socket(self, path, process):
        end = time.monotonic() + PATIENCE
        while not path.is_socket():
            if process.poll() is not None or time.monotonic() > end:
                raise AssertionError(f"{process.args} does not listen at {path}")
            time.sleep(0.02)

    # What there is

    def start_bus(self, stand_in, stick, mount_point):
        """The system's bus, with UDisks2; no stick is plugged in yet."""
        daemon = self._start("dbus-daemon", "--session", "--nofork", "--print-address=1", stdout=subprocess.PIPE)
        self._bus = daemon.stdout.readline().strip()
        self._udisks = self._start(stand_in, stick, mount_point, environment={"DBUS_SYSTEM_BUS_ADDRESS": self._bus},
                                   stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self._expect("ready")

    def _expect(self, answer):
        said = self._udisks.stdout.readline()
        if said != f"{answer}\n":
            raise AssertionError(f"what stands for UDisks2 says {said!r}, not {answer!r}")

    def plug(self):
        self._udisks.stdin.write("\n")
        self._udisks.stdin.flush()
        self._expect("plugged in")

    def start_wayland(self):
        runtime = self.folder / "runtime"
        runtime.mkdir(mode=0o700)
        compositor = self._start("weston", "--backend=headless-backend.so", "--use-pixman", "--no-config",
                                 "--width=1366", "--height=768", "--socket=wayland-test", stdout=subprocess.DEVNULL,
                                 environment={"XDG_RUNTIME_DIR": str(runtime)})
        self._wayland = runtime / "wayland-test"
        self._wait_for_socket(self._wayland, compositor)

    def start_x11(self):
        server = self._start("Xvfb", "-displayfd", "1", "-screen", "0", "1366x768x24", "-nolisten", "tcp",
                             stdout=subprocess.PIPE)
        self._display = int(server.stdout.readline())

    # What a sandbox has of it

    def sandbox(self, rights):
        command = Command()
        talk = []
        for right in rights:
            kind, value = right.split("=")
            if right == "--share=network":
                command.words.append("--share-net")
            elif kind == "--filesystem" and (self.folder / value[1:]).is_dir():
                command.bind(self.folder / value[1:], value, writable=True)
            elif kind == "--system-talk-name":
                talk.append(value)
        if talk:
            self._let_through(command, talk)
        self._show_screen(command, rights)
        return command

    def _let_through(self, command, names):
        self._proxies += 1
        socket = self.folder / f"bus-{self._proxies}"
        proxy = self._start("xdg-dbus-proxy", self._bus, socket, "--filter", *[f"--talk={name}" for name in names])
        self._wait_for_socket(socket, proxy)
        command.bind(socket, SYSTEM_BUS)
        command.environment["DBUS_SYSTEM_BUS_ADDRESS"] = f"unix:path={SYSTEM_BUS}"

    def _show_screen(self, command, rights):
        """That of X11 is for machines without Wayland only: this is what "fallback" means."""
        if self._wayland is not None:
            command.environment["QT_QPA_PLATFORM"] = "wayland"
            if "--socket=wayland" in rights:
                command.bind(self._wayland, f"{RUNTIME}/wayland-0")
                command.environment["WAYLAND_DISPLAY"] = "wayland-0"
        elif self._display is not None:
            command.environment["QT_QPA_PLATFORM"] = "xcb"
            if "--socket=fallback-x11" in rights:
                command.bind(f"/tmp/.X11-unix/X{self._display}", "/tmp/.X11-unix/X99")
                command.environment["DISPLAY"] = ":99"
