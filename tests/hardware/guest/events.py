"""When things happened, by the guest's own clock (seconds of CLOCK_MONOTONIC)."""

import json
import socket
import threading
import time

NETLINK_KOBJECT_UEVENT = 15
LOOK = 0.02  # seconds
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


def shown(path, name, key, value, timeout):
    """Looks at a part of the program's window, over the driver's socket, until it shows the value; when that was."""
    end = time.monotonic() + timeout
    with socket.socket(socket.AF_UNIX) as driver:
        driver.connect(path)
        stream = driver.makefile("rw", encoding="utf-8", newline="\n")
        while True:
            stream.write(json.dumps({"do": "get", "name": name}) + "\n")
            stream.flush()
            actual = json.loads(stream.readline())["part"].get(key)
            now = time.monotonic()
            if actual == value:
                return {"time": now}
            if now > end:
                return {"time": None, "actual": actual}
            time.sleep(LOOK)  # asking takes time that the program needs
