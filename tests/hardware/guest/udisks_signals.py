"""When UDisks2 told the bus of a file system (seconds of CLOCK_MONOTONIC).

It speaks to the bus itself: every program that could listen instead takes longer to handle a signal than the signal
takes to come. https://dbus.freedesktop.org/doc/
"""

import os
import socket
import struct
import threading
import time

BUS = "/run/dbus/system_bus_socket"
RULE = ("type='signal',sender='org.freedesktop.UDisks2',path='/org/freedesktop/UDisks2',"
        "interface='org.freedesktop.DBus.ObjectManager',member='InterfacesAdded'")
BLOCK_DEVICE = b"/org/freedesktop/UDisks2/block_devices/"
FILE_SYSTEM = b"org.freedesktop.UDisks2.Filesystem\0"

_seen = []
_lock = threading.Lock()


def listen():
    """From now on; once it returns the bus has been told what is wanted."""
    bus = socket.socket(socket.AF_UNIX)
    bus.connect(BUS)
    bus.sendall(b"\0AUTH EXTERNAL " + str(os.getuid()).encode().hex().encode() + b"\r\n")
    stream = bus.makefile("rb")
    answer = stream.readline()
    if not answer.startswith(b"OK"):
        raise OSError(f"the bus refuses: {answer}")
    bus.sendall(b"BEGIN\r\n" + _call(1, b"Hello") + _call(2, b"AddMatch", RULE.encode()))
    while _reply_to(message := _receive(stream)) != 2:
        if message[1] == ERROR:
            raise OSError(f"the bus refuses: {message}")
    threading.Thread(target=_note, args=(bus, stream), daemon=True).start()
    return {}


def file_systems(since):
    """Those that were told of after a moment."""
    with _lock:
        return {"events": [event for event in _seen if event["time"] >= since]}


def _note(bus, stream):
    with bus:
        while True:
            message = _receive(stream)
            now = time.monotonic()
            found = message.find(BLOCK_DEVICE)
            # The object may be told of first and its file system afterwards; both in one signal is the rule.
            if message[1] == SIGNAL and found >= 0 and FILE_SYSTEM in message:
                device = message[found + len(BLOCK_DEVICE):].split(b"\0", 1)[0].decode()
                with _lock:
                    _seen.append({"time": now, "device": device})


# Messages of the bus, as far as they are needed here: little-endian, arguments that are texts.

CALL, ERROR, SIGNAL = 1, 3, 4
PATH, INTERFACE, MEMBER, REPLY_SERIAL, DESTINATION, SIGNATURE = 1, 2, 3, 5, 6, 8
HEAD = 16  # bytes before the header's fields


def _padded(data, size):
    return data + bytes(-len(data) % size)


def _text(value):
    return struct.pack("<I", len(value)) + value + b"\0"


def _signature(value):
    return bytes([len(value)]) + value + b"\0"


def _call(serial, member, argument=None):
    """A call of the bus itself."""
    fields = b""
    for code, kind, value in ((PATH, b"o", _text(b"/org/freedesktop/DBus")), (MEMBER, b"s", _text(member)),
                              (INTERFACE, b"s", _text(b"org.freedesktop.DBus")),
                              (DESTINATION, b"s", _text(b"org.freedesktop.DBus")),
                              (SIGNATURE, b"g", _signature(b"" if argument is None else b"s"))):
        fields = _padded(fields, 8) + bytes([code]) + _signature(kind) + value
    body = b"" if argument is None else _text(argument)
    head = struct.pack("<BBBBIII", ord("l"), CALL, 0, 1, len(body), serial, len(fields))
    return _padded(head + fields, 8) + body


def _receive(stream):
    """A whole message."""
    head = stream.read(HEAD)
    if len(head) < HEAD:
        raise OSError("the bus has ended")
    body, _, fields = struct.unpack("<III", head[4:])
    return head + stream.read(fields + -fields % 8 + body)


def _reply_to(message):
    """Serial number of the call that a reply or an error answers; None for other messages."""
    field = message.find(bytes([REPLY_SERIAL, 1]) + b"u\0", HEAD)
    return struct.unpack_from("<I", message, field + 4)[0] if message[1] in (2, ERROR) and field >= 0 else None
