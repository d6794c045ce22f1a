"""Desktop sessions on Wayland that nobody sees, one class a compositor."""

import json
import os
import subprocess

from PIL import Image

from session import Base
from waiting import wait

NOBODY = 65534

SWAY = """output HEADLESS-1 resolution {width}x{height} position 0 0 scale {scale}
default_border normal
for_window [title=".*"] floating enable
xwayland disable
"""


class Wayland(Base):
    """size is that of the screen in pixels."""

    def __init__(self, name, size, environment=None, **look):
        super().__init__(name, environment or {}, **look)
        self.size = size
        self.environment.update(QT_QPA_PLATFORM="wayland")
        try:
            self.start_bus()
            self._start_compositor()
        except BaseException:
            self.stop()
            raise

    def _start_compositor(self):
        raise NotImplementedError

    def _wait_socket(self):
        """The name of the one that the compositor listens at."""
        def found():
            return next((path for path in self.runtime.glob("wayland-*") if path.is_socket()), None)
        self.environment["WAYLAND_DISPLAY"] = wait(found, "the compositor").name

    def run(self, *command, folder=None):
        """One of the compositor's own tools, in the session's folder or that one; what it prints."""
        return subprocess.run(command, env=self.environment, cwd=folder or self.folder, check=True,
                              capture_output=True, text=True, timeout=60).stdout


class Sway(Wayland):
    """With floating windows, which sway places. Its keyboard is a virtual one."""

    def __init__(self, size, scale=1, **arguments):
        self._scale = scale
        super().__init__("sway", size, **arguments)

    def _start_compositor(self):
        settings = self.folder / "sway.conf"
        settings.write_text(SWAY.format(width=self.size[0], height=self.size[1], scale=self._scale), encoding="ascii")
        self.environment["SWAYSOCK"] = str(self.runtime / "sway")
        environment = self.environment | {"WLR_BACKENDS": "headless", "WLR_RENDERER": "pixman",
                                          "WLR_LIBINPUT_NO_DEVICES": "1"}
        self.processes.start([*self._as_nobody(), "sway", "-c", str(settings)], environment)
        self._wait_socket()
        wait(self._answers, "sway")
        # A seat whose only keyboard has just come gets nothing of the first key: this one stays.
        self.processes.start(["wtype", "-s", "3600000", "-k", "Shift_L"], self.environment)

    @staticmethod
    def _as_nobody():
        """It refuses to be root's, but it needs the folders of root's session."""
        if os.geteuid() != 0:
            return []
        return ["setpriv", f"--reuid={NOBODY}", f"--regid={NOBODY}", "--clear-groups",
                "--inh-caps=+dac_override", "--ambient-caps=+dac_override", "--"]

    def _answers(self):
        try:
            return self.run("swaymsg", "-t", "get_version")
        except subprocess.CalledProcessError:
            return None

    def _nodes(self, node=None):
        node = node or json.loads(self.run("swaymsg", "-r", "-t", "get_tree"))
        yield node
        for child in node["nodes"] + node["floating_nodes"]:
            yield from self._nodes(child)

    def windows(self):
        """{title: node} of those that are shown."""
        return {node["name"]: node for node in self._nodes() if node.get("pid") and node.get("visible")}

    def wait_window(self, title):
        return wait(lambda: self.windows().get(title), f"the window {title!r}", poll=0.1)

    def wait_active(self, title):
        wait(lambda: self.active() == title, f"the active window {title!r}", poll=0.1)

    def active(self):
        return next((title for title, node in self.windows().items() if node["focused"]), "")

    def frame(self, window):
        """x, y, width, height with its title bar, in the units that sway arranges windows in."""
        outer, bar = window["rect"], window["deco_rect"]
        return outer["x"], outer["y"] - bar["height"], outer["width"], outer["height"] + bar["height"]

    def screen(self):
        return 0, 0, round(self.size[0] / self._scale), round(self.size[1] / self._scale)

    def close_window(self, title):
        self.run("swaymsg", f'[title="^{title}$"] kill')

    def press(self, *keys):
        """As of screen.Screen.press()."""
        for key in keys:
            *modifiers, last = key.split("+")
            self.run("wtype", *[word for name in modifiers for word in ("-M", name.lower())], "-k",
                     last if len(last) > 1 else last.lower())

    def picture(self, path=None):
        path = path or self.folder / "picture.png"
        path.parent.mkdir(parents=True, exist_ok=True)
        self.run("grim", str(path))
        return Image.open(path).convert("RGB")


class Weston(Wayland):
    """A desktop without any input, as for somebody who uses the accessibility bus alone."""

    def __init__(self, size, **arguments):
        super().__init__("weston", size, **arguments)

    def _start_compositor(self):
        self.processes.start(["weston", "--backend=headless-backend.so", "--use-pixman", "--debug", "--no-config",
                              f"--width={self.size[0]}", f"--height={self.size[1]}", "--socket=wayland-test"],
                             self.environment)
        self._wait_socket()

    def picture(self, path=None):
        folder = self.folder / "pictures"
        folder.mkdir(exist_ok=True)
        self.run("weston-screenshooter", folder=folder)
        made = next(folder.glob("*.png"))
        image = Image.open(made).convert("RGB")
        made.unlink()
        if path is not None:
            path.parent.mkdir(parents=True, exist_ok=True)
            image.save(path)
        return image
