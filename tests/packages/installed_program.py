"""The installed program, used through the driver's plugin. Needs root: the drives stand in the program folder, the
servers in /etc, and the program runs as whoever it is told."""

import os
import shutil
import sys
import tempfile
from contextlib import contextmanager
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / folder) for folder in ("tests/driver", "demo")]

import run_demo  # noqa: E402
from driver import Program, server_ini  # noqa: E402

COMMAND = Path("/usr/bin/orvanta-usbtool")
SERVERS = Path("/etc/orvanta-usbtool/Server.ini")
SOMEBODY = 65534


class InstalledProgram(Program):
    def __init__(self, user, environment=None):
        self.user = user
        super().__init__(executable=COMMAND, start=False, environment={"BROWSER": "true"} | (environment or {}))

    def _copy_folder(self):
        self.folder = self._original.parent
        self.executable = COMMAND

    def start(self):
        (self.home / "runtime").mkdir(mode=0o700, exist_ok=True)
        environment = self.environment()
        for path in (self.home, *self.home.rglob("*")):
            os.chown(path, self.user, self.user, follow_symlinks=False)
        self._launch(["setpriv", f"--reuid={self.user}", f"--regid={self.user}", "--clear-groups", "--", str(COMMAND)],
                     environment)
        self._connect()


def snapshot(folder):
    """What a run must not change."""
    return {path: (path.lstat().st_mtime_ns, path.lstat().st_size) for path in sorted(Path(folder).rglob("*"))
            if not path.is_dir()}


class Stage:
    """A demo server, a stick that is somebody's folder, and the two files that name them."""

    def __init__(self, folder, address, user):
        self.folder, self.user = folder, user
        self.stick = folder / "stick"
        self.program_folder = COMMAND.resolve().parent
        for name in ("stick", "pictures"):
            os.chown(folder / name, user, user)
        SERVERS.write_bytes(server_ini(address))
        drives = "".join(drive.section() for drive in run_demo.demo_drives(self.stick))
        (self.program_folder / "Drives.ini").write_bytes(drives.encode("cp1252"))

    def expected(self):
        """Name on the stick -> the file it comes from."""
        server = run_demo.expected_files(self.folder, self.folder)
        return {name: file if file.is_relative_to(self.folder / "server") else self.program_folder / file.name
                for name, file in server.items()}


@contextmanager
def stage(user):
    """Leaves the servers as they were."""
    servers = SERVERS.read_bytes()
    folder = Path(tempfile.mkdtemp(prefix="usbtool-stage-"))
    folder.chmod(0o755)
    try:
        run_demo.prepare(folder)
        with run_demo.demo_server(folder / "demo") as address:
            yield Stage(folder / "demo", address, user)
    finally:
        SERVERS.write_bytes(servers)
        (COMMAND.resolve().parent / "Drives.ini").unlink(missing_ok=True)
        shutil.rmtree(folder)


def whole_job(user=SOMEBODY):
    """Plays it; complains about what is not as it should be."""
    with stage(user) as set_up:
        before = snapshot("/usr")
        with InstalledProgram(user) as program:
            program.start()
            status = run_demo.Play(program, set_up.folder / "pictures").run()
            assert status == 0, status
            settings = program.home / "config" / "orvanta-usbtool" / "Settings.ini"
            assert settings.is_file(), "the settings are the user's"
        assert run_demo.compare(set_up.stick, set_up.expected())
        assert snapshot("/usr") == before, "nothing of the installed files has changed"
