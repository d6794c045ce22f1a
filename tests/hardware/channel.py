"""The line to the agents in the guest (guest/agent.py)."""

import base64
import itertools
import json
import queue
import socket
import threading

PATIENCE = 120  # seconds: an emulated processor is slow, and this one shares its own


class GuestError(AssertionError):
    """The guest could not do what it was asked for."""


class Agent:
    """One agent: root's, or that of the user's session. Safe to use from several threads."""

    def __init__(self, connection, channel):
        self._connection = connection
        self._channel = channel
        self._lock = threading.Lock()
        self._numbers = itertools.count()
        self._waiting = {}
        threading.Thread(target=self._receive, daemon=True).start()

    def _receive(self):
        for line in self._connection.makefile("rb"):
            reply = json.loads(line)
            self._waiting.pop(reply["number"]).put(reply)
        for waiting in list(self._waiting.values()):
            waiting.put({"error": "the guest has gone"})

    def request(self, what, patience=PATIENCE, **arguments):
        number = next(self._numbers)
        answer = self._waiting[number] = queue.Queue()
        with self._lock:
            self._connection.sendall(json.dumps({"number": number, "do": what, **arguments}).encode() + b"\n")
        try:
            reply = answer.get(timeout=patience)
        except queue.Empty:
            raise GuestError(f"no answer to {what} {arguments} for {patience} s") from None
        if "error" in reply:
            raise GuestError(f"{what} {arguments}: {reply['error']}")
        return reply

    def run(self, command, input="", check=True, timeout=60):
        """Output of a command of the guest's shell."""
        reply = self.request("run", command=command, input=input, timeout=timeout)
        if check and reply["status"] != 0:
            raise GuestError(f"{command}: status {reply['status']}\n{reply['output']}{reply['errors']}")
        return reply["output"]

    def succeeds(self, command):
        return self.request("run", command=command)["status"] == 0

    def read(self, path):
        return base64.b64decode(self.request("read", path=path)["bytes"])

    def write(self, path, contents, mode=0o644):
        self.request("write", path=path, bytes=base64.b64encode(contents).decode(), mode=mode)

    def connect(self, path):
        """A connection to a Unix socket in the guest."""
        return self._channel.bridge(self, path)


class Channel:
    """Waits for the agents to call."""

    def __init__(self):
        self._listener = socket.create_server(("127.0.0.1", 0))
        self.port = self._listener.getsockname()[1]
        self._tokens = itertools.count()
        self._arrivals = {}
        self._changed = threading.Condition()
        threading.Thread(target=self._accept, daemon=True).start()

    def _accept(self):
        while True:
            try:
                connection, _ = self._listener.accept()
            except OSError:
                return
            connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            greeting = b""
            while not greeting.endswith(b"\n"):
                byte = connection.recv(1)
                if not byte:
                    break
                greeting += byte
            with self._changed:
                self._arrivals[greeting.decode().strip()] = connection
                self._changed.notify_all()

    def _take(self, greeting, timeout):
        with self._changed:
            if not self._changed.wait_for(lambda: greeting in self._arrivals, timeout):
                raise GuestError(f"no call from the guest: {greeting}")
            return self._arrivals.pop(greeting)

    def agent(self, who, timeout):
        return Agent(self._take(f"agent {who}", timeout), self)

    def bridge(self, agent, path):
        token = next(self._tokens)
        agent.request("bridge", path=path, token=token)
        return self._take(f"bridge {token}", PATIENCE)

    def close(self):
        self._listener.close()
