"""QEMU's own line: devices are plugged and pulled over it. https://www.qemu.org/docs/master/interop/"""

import json
import socket
import time

DEADLINE = 30  # seconds


class QmpError(AssertionError):
    """QEMU refused."""


class Qmp:
    def __init__(self, path, process):
        self._socket = self._connect(str(path), process)
        self._stream = self._socket.makefile("rw", encoding="utf-8", newline="\n")
        self._events = []
        self._stream.readline()  # the greeting
        self.execute("qmp_capabilities")

    @staticmethod
    def _connect(path, process):
        end = time.monotonic() + DEADLINE
        while True:
            line = socket.socket(socket.AF_UNIX)
            try:
                line.connect(path)
                line.settimeout(DEADLINE)
                return line
            except OSError:
                line.close()
                if process.poll() is not None or time.monotonic() > end:
                    raise QmpError("QEMU did not start; see its log") from None
                time.sleep(0.02)

    def _message(self):
        line = self._stream.readline()
        if not line:
            raise QmpError("QEMU has ended")
        return json.loads(line)

    def execute(self, command, **arguments):
        names = {name.replace("_", "-"): value for name, value in arguments.items()}
        self._stream.write(json.dumps({"execute": command, "arguments": names}) + "\n")
        self._stream.flush()
        while True:
            message = self._message()
            if "event" in message:
                self._events.append(message)
            elif "error" in message:
                raise QmpError(f"{command} {names}: {message['error']['desc']}")
            else:
                return message["return"]

    def wait_event(self, name, **data):
        """Waits for an event with that data."""
        def wanted(message):
            return message["event"] == name and data.items() <= message.get("data", {}).items()

        while True:
            for message in self._events:
                if wanted(message):
                    self._events.remove(message)
                    return
            message = self._message()
            if "event" in message:
                self._events.append(message)

    def close(self):
        self._stream.close()
        self._socket.close()
