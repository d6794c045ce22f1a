"""The guest: built once, then booted by QEMU for each run of the ring."""

import fcntl
import hashlib
import os
import shutil
import signal
import subprocess
import sys
import time
from pathlib import Path

from channel import Channel
from qmp import Qmp

HERE = Path(__file__).resolve().parent
RECIPE = HERE / "guest" / "build"
BOOT = 300  # seconds
BUILD = 3600  # seconds that a mirror may take


def cache_folder():
    cache = os.environ.get("XDG_CACHE_HOME", "")
    return Path(cache if cache.startswith("/") else Path.home() / ".cache") / "orvanta-usbtool" / "guest"


def built_guest():
    """Folder with disk.img, vmlinuz and initrd.img; builds them when the recipe has changed."""
    folder = cache_folder()
    folder.parent.mkdir(parents=True, exist_ok=True)
    # Two runs may share the folder: the second waits, and finds what the first has built.
    with open(folder.with_name("guest.lock"), "w", encoding="ascii") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        build_guest(folder, lock)
    return folder


def build_guest(folder, lock):
    recipe = hashlib.sha256(RECIPE.read_bytes()).hexdigest()
    note = folder / "recipe"
    if note.exists() and note.read_text() == recipe:
        return
    print(f"Building the guest in {folder} (once; some minutes) ...", flush=True)
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    log = folder / "build.log"
    with open(log, "wb") as output:
        # The recipe takes its mirror from the lists, which a machine that has just been set up does not have.
        built = (has_lists() or succeeds(["apt-get", "update"], output, lock)) \
            and succeeds([RECIPE, folder], output, lock)
    if not built:
        lines = log.read_text(errors="replace").splitlines()
        sys.exit("The guest could not be built:\n" + "\n".join(lines[-20:]) + f"\nAll of it is in {log}.")
    note.write_text(recipe)


def has_lists():
    answer = subprocess.run(["apt-get", "indextargets", "Identifier: Packages", "Origin: Debian"],
                            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, check=False)
    return answer.stdout != b""


def succeeds(command, output, lock):
    """Whether the command succeeds in time; it and all that it has started are gone when it does not. The lock is its
    own, too: it may outlive this process."""
    with subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=output, stderr=output, start_new_session=True,
                          pass_fds=[lock.fileno()]) as process:
        try:
            return process.wait(BUILD) == 0
        except subprocess.TimeoutExpired:
            output.write(f"Ended after {BUILD} s.\n".encode())
            return False
        finally:
            end_session(process)


def end_session(process):
    """Asks first, so that what is mounted gets unmounted."""
    if process.poll() is not None:
        return
    os.killpg(process.pid, signal.SIGTERM)
    end = time.monotonic() + 10
    try:
        while time.monotonic() < end:
            process.poll()
            os.killpg(process.pid, 0)
            time.sleep(0.1)
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass  # all of it is gone


class Guest:
    """A running guest. `root` and `user` are the agents in it; `payload` is a folder it sees as /payload."""

    def __init__(self, folder, payload, results):
        self._images = {}
        self._numbers = 0
        self._throttled = set()
        self.channel = Channel()
        self._qmp_path = results / "qmp"
        self._log = open(results / "qemu.log", "wb")
        self.console = results / "console.log"
        began = time.monotonic()
        self.process = subprocess.Popen(self._command(folder, payload), stdin=subprocess.DEVNULL, stdout=self._log,
                                        stderr=self._log)
        try:
            self._boot()
        except BaseException:
            self.close()
            raise
        self.boot_time = time.monotonic() - began

    def _boot(self):
        self.qmp = Qmp(self._qmp_path, self.process)
        self.root = self.channel.agent("root", BOOT)
        self.user = self.channel.agent("user", BOOT)
        self.root.run("systemctl is-system-running --wait", check=False)  # the rest of the start would blur the figures
        session = self.user.run("loginctl show-session $XDG_SESSION_ID -p Active -p Seat -p Remote")
        if sorted(session.split()) != ["Active=yes", "Remote=no", "Seat=seat0"]:
            raise AssertionError(f"the user of the guest has no active session at its console: {session}")

    def _command(self, folder, payload):
        # delay_use is a second in which the kernel lets a stick rest before it looks at it, a second a plug.
        # An older processor is emulated faster than the newest: its programs do without instructions that cost an
        # emulator more than they save. Its clock is this machine's, so that reading it is no question to a device.
        return ["qemu-system-x86_64", "-accel", "tcg,thread=multi", "-cpu", "Nehalem", "-m", "1536", "-smp", "2",
                "-display", "none", "-no-reboot", "-nodefaults", "-vga", "std",
                "-kernel", folder / "vmlinuz", "-initrd", folder / "initrd.img",
                "-append", f"root=/dev/vda rw console=ttyS0 quiet net.ifnames=0 mitigations=off "
                           f"tsc=reliable usb-storage.delay_use=0 "
                           f"usbtool.port={self.channel.port}",
                "-drive", f"file={folder / 'disk.img'},format=raw,if=virtio,snapshot=on",
                "-netdev", "user,id=net", "-device", "virtio-net-pci,netdev=net",
                "-virtfs", f"local,path={payload},mount_tag=payload,security_model=none,readonly=on",
                "-device", "qemu-xhci,id=xhci,p2=15,p3=15",
                "-chardev", f"file,id=console,path={self.console}", "-serial", "chardev:console",
                "-qmp", f"unix:{self._qmp_path},server=on,wait=off"]

    # Devices

    def plug(self, image, removable=True, read_only=False, serial=None, write_rate=None):
        """Connects a USB disk with that image, which writes so many bytes a second; returns its name for pull()."""
        self._numbers += 1
        name = f"usb{self._numbers}"
        self.qmp.execute("blockdev-add", node_name=name, driver="raw", read_only=read_only,
                         file={"driver": "file", "filename": str(image), "read-only": read_only})
        drive = self._throttle(name, write_rate) if write_rate else name
        self.qmp.execute("device_add", driver="usb-storage", id=f"{name}-device", bus="xhci.0", drive=drive,
                         removable=removable, serial=serial or f"SERIAL{self._numbers}")
        self._images[name] = image
        return name

    def _throttle(self, name, write_rate):
        self.qmp.execute("object-add", **{"qom-type": "throttle-group", "id": f"{name}-rate",
                                          "limits": {"bps-write": write_rate}})
        self.qmp.execute("blockdev-add", node_name=f"{name}-slow", driver="throttle", throttle_group=f"{name}-rate",
                         file=name)
        self._throttled.add(name)
        return f"{name}-slow"

    def pull(self, name):
        """As a hand does: at once, whatever is going on."""
        self.qmp.execute("device_del", id=f"{name}-device")
        self.qmp.wait_event("DEVICE_DELETED", device=f"{name}-device")
        if name in self._throttled:
            self.qmp.execute("blockdev-del", node_name=f"{name}-slow")
            self._throttled.remove(name)
        self.qmp.execute("blockdev-del", node_name=name)
        del self._images[name]

    def plug_scsi(self, kind, image=None, **properties):
        """A USB device with another SCSI unit than a disk: "scsi-cd", or a "scsi-hd" whose medium can be taken out."""
        self._numbers += 1
        name = f"usb{self._numbers}"
        self.qmp.execute("device_add", driver="usb-bot", id=f"{name}-device", bus="xhci.0")
        if image is not None:
            self.qmp.execute("blockdev-add", node_name=name, driver="raw", read_only=kind == "scsi-cd",
                             file={"driver": "file", "filename": str(image), "read-only": kind == "scsi-cd"})
            properties["drive"] = name
            self._images[name] = image
        self.qmp.execute("device_add", driver=kind, id=f"{name}-unit", bus=f"{name}-device.0", **properties)
        # The device shows itself to the computer once it is complete.
        self.qmp.execute("qom-set", path=f"/machine/peripheral/{name}-device", property="attached", value=True)
        return name

    def take_medium(self, name):
        self.qmp.execute("blockdev-open-tray", id=f"{name}-unit", force=True)
        self.qmp.execute("blockdev-remove-medium", id=f"{name}-unit")

    def put_medium(self, name):
        self.qmp.execute("blockdev-insert-medium", id=f"{name}-unit", node_name=name)
        self.qmp.execute("blockdev-close-tray", id=f"{name}-unit")

    def pull_scsi(self, name):
        self.qmp.execute("device_del", id=f"{name}-device")
        self.qmp.wait_event("DEVICE_DELETED", device=f"{name}-device")
        if name in self._images:
            self.qmp.execute("blockdev-del", node_name=name)
            del self._images[name]

    def plugged(self):
        return list(self._images)

    def close(self):
        self.process.kill()
        self.process.wait()
        self.channel.close()
        self._log.close()
