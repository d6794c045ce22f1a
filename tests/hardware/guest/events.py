"""When things happened, by the guest's own clock (seconds of CLOCK_MONOTONIC)."""

import json
import socket
import threading
import time

NETLINK_KOBJECT_UEVENT = 15
LOOK = 0.25  # seconds
BOX_LOOK = 0.03
KERNEL, UDEV = 1, 2  # groups: what the kernel announces, and udev when its rules have run

_seen = []
_changed = threading.Condition()


def listen():
    """Takes note of every block device that is announced, from now on."""
    for group in (KERNEL, UDEV):
        receiver = socket.socket(socket.AF_NETLINK, socket.SOCK_DGRAM, NETLINK_KOBJECT_UEVENT)
        receiver.bind((0, group))
        threading.Thread(target=_receive, args=(receiver, group), daemon=True).start()


def _receive(receiver, group):
    while True:
        message = receiver.recv(65536)
        now = time.monotonic()
        fields = dict(part.split(b"=", 1) for part in message.split(b"\0") if b"=" in part)
        if fields.get(b"SUBSYSTEM") != b"block":
            continue
        with _changed:
            _seen.append({"time": now, "by": "kernel" if group == KERNEL else "udev",
                          "action": fields[b"ACTION"].decode(), "device": fields[b"DEVNAME"].decode()})
            _changed.notify_all()


def announced(since):
    """Everything that was announced after a moment."""
    with _changed:
        return {"events": [event for event in _seen if event["time"] >= since], "now": time.monotonic()}


class _Driver:
    """A connection to the driver of a program."""

    def __init__(self, path):
        self._socket = socket.socket(socket.AF_UNIX)
        self._socket.connect(path)
        self._stream = self._socket.makefile("rw", encoding="utf-8", newline="\n")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._socket.close()

    def ask(self, **request):
        self._stream.write(json.dumps(request) + "\n")
        self._stream.flush()
        return json.loads(self._stream.readline())


def shown(path, name, key, value, timeout):
    """When the program's window was first painted with that value; the driver notes it."""
    end = time.monotonic() + timeout
    with _Driver(path) as driver:
        driver.ask(do="watch", name=name, key=key, value=value)
        while True:
            painted = driver.ask(do="watched")["time"]
            if painted is not None:
                return {"time": painted}
            if time.monotonic() > end:
                return {"time": None, "actual": driver.ask(do="get", name=name)["part"].get(key)}
            time.sleep(LOOK)  # asking takes time that the program needs


def box_after_answer(path, button, title, timeout):
    """Seconds from the answer to the open message box until one of that title is open."""
    with _Driver(path) as driver:
        began = time.monotonic()
        driver.ask(do="answer", button=button)
        while True:
            box = driver.ask(do="messageBox")["box"]
            seconds = time.monotonic() - began
            if box is not None and box["title"] == title:
                return {"seconds": seconds}
            if seconds > timeout:
                raise TimeoutError(f"no box {title}, but {box}")
            time.sleep(BOX_LOOK)
