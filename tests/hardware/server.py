"""The update server, on this machine; the guest sees it at the address of its host."""

import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path[:0] = [str(HERE.parent / folder) for folder in ("support", "window")]

from fault_server import FaultServer, at_rate, body, pattern, slow  # noqa: E402, F401
from server_files import NEWS, VERSION, catalog  # noqa: E402

DOWNLOADS = "/orvanta/download/"
FIRMWARE_NAME, SETTINGS_NAME = "sr200.abs", "sr200_at.sdx"  # what is chosen when the catalog has been loaded
FIRMWARE = pattern(1_500_001)
SETTINGS = pattern(60_007)[::-1]


class Server:
    def __init__(self):
        self._server = FaultServer()
        self.url = f"http://10.0.2.2:{self._server.port}"
        self.reset()

    def reset(self):
        """Everything is as it should be again."""
        self.set("usb-version.txt", VERSION)
        self.set("usb-news.csv", NEWS)
        self.set("usb-list.csv", catalog())
        self.set(FIRMWARE_NAME + ".txt", FIRMWARE)
        self.set(SETTINGS_NAME + ".txt", SETTINGS)

    def set(self, name, behaviour):
        self._server.set(DOWNLOADS + name, body(behaviour) if isinstance(behaviour, bytes) else behaviour)

    def address(self, name):
        """As the guest sees it."""
        return self.url + DOWNLOADS + name

    def downloads(self):
        return [path.removeprefix(DOWNLOADS) for path in self._server.paths()]

    def stop(self):
        self._server.stop()
