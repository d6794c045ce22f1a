#!/usr/bin/env python3
"""An HTTP server on loopback that misbehaves on request.

As a module: a FaultServer whose paths are given behaviours (`server.set("/a.txt", body(b"..."))`) and which keeps the
requests it was sent. As a program: the behaviours of PATHS by the first part of the path ("/bytes/1000"); it prints its
own port, a port that refuses connections, a port that never answers one and a port for https, then on a line of its own
the file of the certificate to trust there, and ends when its standard input does.
"""

import fcntl
import gzip
import http.server
import socket
import ssl
import struct
import subprocess
import sys
import tempfile
import termios
import threading
import time
from pathlib import Path
from typing import NamedTuple

PATTERN_PERIOD = 251  # a prime: no piece of the body looks like its neighbour at a power of two
_PATTERN_BLOCK = bytes(range(PATTERN_PERIOD)) * 4096


class Request(NamedTuple):
    """One request as it came in."""

    method: str
    path: str
    headers: dict
    text: str  # request line and headers, CR LF between them


def pattern(length):
    """A body of `length` bytes whose byte i is i modulo 251."""
    return (_PATTERN_BLOCK * (length // len(_PATTERN_BLOCK) + 1))[:length]


# Behaviours. Each is a function of the connection's handler, which answers the request in its own way.


def body(content, status=200, headers=()):
    """A regular answer."""

    def answer(handler):
        handler.send_head(len(content), status, headers)
        handler.wfile.write(content)

    return answer


def missing():
    """An error page."""
    return body(b"<html><body>404: there is no such file here</body></html>", 404, [("Content-Type", "text/html")])


def generated(length):
    """A regular answer of any size, held nowhere."""

    def answer(handler):
        handler.send_head(length)
        left = length
        while left > 0:
            handler.wfile.write(_PATTERN_BLOCK[:left])
            left -= len(_PATTERN_BLOCK)

    return answer


def echo():
    """The request itself as a body."""
    return lambda handler: body(handler.request_text().encode("latin-1"))(handler)


def silent(content=b"", announced=None):
    """What there is of `content`, then nothing; without `announced`, the length of the whole, no header either."""

    def answer(handler):
        if announced is not None:
            handler.send_head(announced)
            handler.wfile.write(content)
        handler.server.stopping.wait()

    return answer


def truncated(content, announced):
    """The connection is closed in good order before all that was announced has been sent."""

    def answer(handler):
        handler.send_head(announced)
        handler.wfile.write(content)

    return answer


def reset(content, announced):
    """The connection is reset once `content` has been read."""

    def answer(handler):
        handler.send_head(announced)
        handler.wfile.write(content)
        handler.wait_until_read()
        handler.reset_connection()

    return answer


def chunked(content, piece=1000, cut=False):
    """The body in chunks of `piece` bytes; cut: the connection closes in the middle of an announced further chunk."""

    def answer(handler):
        handler.send_head(None, headers=[("Transfer-Encoding", "chunked")])
        for start in range(0, len(content), piece):
            chunk = content[start : start + piece]
            handler.wfile.write(b"%x\r\n%s\r\n" % (len(chunk), chunk))
        handler.wfile.write(b"1000\r\nhalf" if cut else b"0\r\n\r\n")

    return answer


def redirect(location, status=302, content=b"moved"):
    """To another address, relative or absolute, with a body of its own."""
    return body(content, status, [("Location", location)])


def redirect_nowhere(status=302, content=b"moved nowhere", headers=()):
    """A redirect that does not say where to."""
    return body(content, status, headers)


def slow_head(interval):
    """A header without end, a character every `interval` seconds; as fast as it is read when that is 0."""

    def answer(handler):
        handler.wfile.write(b"HTTP/1.1 200 OK\r\n")
        piece = b"X-More: and more\r\n" * (1 if interval else 1000)
        while not handler.server.stopping.is_set():
            for part in ([piece[i : i + 1] for i in range(len(piece))] if interval else [piece]):
                handler.wfile.write(part)
                if handler.server.stopping.wait(interval):
                    return

    return answer


def transfer_gzip(content):
    """Compressed for the way, which nobody asked for."""

    def answer(handler):
        handler.send_head(None, headers=[("Transfer-Encoding", "gzip")])
        handler.wfile.write(content)

    return answer


def login(scheme):
    """A page for those who have logged in; any other is asked to, and told what came of the login."""

    def answer(handler):
        given = handler.headers.get("Authorization", "none")
        body(b"login: " + given.encode("latin-1"), 401, [("WWW-Authenticate", scheme)])(handler)

    return answer


def slow(content, piece, interval):
    """`piece` bytes every `interval` seconds."""

    def answer(handler):
        handler.send_head(len(content))
        for start in range(0, len(content), piece):
            handler.wfile.write(content[start : start + piece])
            if handler.server.stopping.wait(interval):
                return

    return answer


def at_rate(content, rate, piece=64 * 1024):
    """`rate` bytes a second, whatever the pieces take to be sent."""

    def answer(handler):
        handler.send_head(len(content))
        begun = time.monotonic()
        for start in range(0, len(content), piece):
            early = begun + start / rate - time.monotonic()
            if early > 0 and handler.server.stopping.wait(early):
                return
            handler.wfile.write(content[start : start + piece])

    return answer


def burst(content, rest, piece, interval):
    """All of `content` at once, then `rest` bytes more, `piece` bytes every `interval` seconds."""

    def answer(handler):
        handler.send_head(len(content) + rest)
        handler.wfile.write(content)
        for _ in range(rest // piece):
            if handler.server.stopping.wait(interval):
                return
            handler.wfile.write(bytes(piece))

    return answer


def headless(content):
    """A body without a status line or a header."""
    return lambda handler: handler.wfile.write(content)


# Behaviours by path, for who cannot set them: "/name/argument/argument...".


def compressed(length):
    """gzip of a body of `length` bytes, the same bytes each time."""
    return gzip.compress(pattern(length), mtime=0)


def _redirect_chain(count):
    return redirect("/redirects/%d" % (int(count) - 1) if int(count) > 1 else "/bytes/100")


def _slow_redirects(count, milliseconds):
    """Each of them is thought about for a while."""

    def answer(handler):
        if int(count) > 0:
            handler.server.stopping.wait(int(milliseconds) / 1000)
            redirect("/slow-redirects/%d/%s" % (int(count) - 1, milliseconds))(handler)
        else:
            generated(100)(handler)

    return answer


PATHS = {
    "bytes": lambda length: generated(int(length)),
    "empty": lambda: body(b""),
    "status": lambda status: body(b"page of status " + status.encode(), int(status)),
    "echo": lambda *_: echo(),
    "encoded": lambda length: body(pattern(int(length)), headers=[("Content-Encoding", "gzip")]),
    "gzip": lambda length: body(compressed(int(length)), headers=[("Content-Encoding", "gzip")]),
    "transfer-gzip": lambda length: transfer_gzip(compressed(int(length))),
    "silent": silent,
    "silent-after": lambda length: silent(pattern(int(length)), int(length) + 1),
    "truncated": lambda length: truncated(pattern(int(length)), int(length) + 1000),
    "reset": lambda length: reset(pattern(int(length)), int(length) + 1000),
    "chunked": lambda length: chunked(pattern(int(length))),
    "chunked-cut": lambda length: chunked(pattern(int(length)), cut=True),
    "redirects": _redirect_chain,
    "redirect-loop": lambda: redirect("/redirect-loop"),
    "redirect-file": lambda: redirect("file:///etc/passwd"),
    "redirect-ftp": lambda: redirect("ftp://127.0.0.1/file"),
    "redirect-nowhere": lambda status: redirect_nowhere(int(status)),
    "redirect-empty": lambda status: redirect_nowhere(int(status), headers=[("Location", "")]),
    "redirect-status": lambda status: redirect("/bytes/100", int(status)),
    "cookie": lambda: body(b"here is a cookie", headers=[("Set-Cookie", "crumb=sweet; path=/; max-age=3600")]),
    "cacheable": lambda: body(b"keep this", headers=[("Cache-Control", "public, max-age=3600")]),
    "login": login,
    "announced": lambda length, announced: truncated(pattern(int(length)), int(announced)),
    "slow-head": lambda milliseconds: slow_head(int(milliseconds) / 1000),
    "slow": lambda length, piece, milliseconds: slow(pattern(int(length)), int(piece), int(milliseconds) / 1000),
    "burst": lambda length, rest, piece, milliseconds: burst(pattern(int(length)), int(rest), int(piece),
                                                             int(milliseconds) / 1000),
    "slow-redirects": _slow_redirects,
    "headless": lambda: headless(b"no status line\r\n\r\nand no header"),
}


def behaviour_of_path(path):
    """The behaviour that a path of PATHS names, or "/redirect-to?ADDRESS"; an error page for any other."""
    if path.startswith("/redirect-to?"):
        return redirect(path.partition("?")[2])
    name, *arguments = path.partition("?")[0].strip("/").split("/")
    try:
        return PATHS[name](*arguments)
    except (KeyError, TypeError, ValueError):
        return missing()


class _Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def do_GET(self):
        self.close_connection = True
        self.server.record(Request(self.command, self.path, dict(self.headers), self.request_text()))
        try:
            self.server.behaviour(self.path)(self)
        except OSError:
            pass  # the client went away, or this server was told to reset

    do_HEAD = do_POST = do_GET

    def request_text(self):
        lines = [self.requestline] + ["%s: %s" % header for header in self.headers.items()]
        return "\r\n".join(lines)

    def send_head(self, length, status=200, headers=()):
        self.send_response(status)
        if length is not None:
            self.send_header("Content-Length", str(length))
        for name, value in headers:
            self.send_header(name, value)
        self.send_header("Connection", "close")
        self.end_headers()

    def wait_until_read(self):
        """A reset discards what still waits to be sent, and some systems' libraries then do not read what has arrived."""
        deadline = time.monotonic() + 10
        while time.monotonic() < deadline:
            waiting = fcntl.ioctl(self.connection, termios.TIOCOUTQ, struct.pack("i", 0))
            if struct.unpack("i", waiting)[0] == 0 and self._unread() == 0:
                return
            time.sleep(0.001)

    def _unread(self):
        """Bytes that wait on the other side, which is on this machine, too."""
        ends = [f"{struct.unpack('=I', socket.inet_aton(host))[0]:08X}:{port:04X}"
                for host, port in (self.connection.getpeername(), self.connection.getsockname())]
        with open("/proc/net/tcp", encoding="ascii") as table:
            for line in table:
                fields = line.split()
                if fields[1:3] == ends:
                    return int(fields[4].split(":")[1], 16)
        return 0

    def reset_connection(self):
        self.connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        self.server.forget(self.connection)
        self.connection.close()
        self.rfile.close()  # the last reference to the socket: now it really closes

    def log_message(self, *_):
        pass


class _Server(http.server.ThreadingHTTPServer):
    daemon_threads = True
    request_queue_size = 64

    def __init__(self, owner, port, certificate):
        self.owner = owner
        self.stopping = threading.Event()
        self.reset_sockets = set()
        super().__init__(("127.0.0.1", port), _Handler)
        if certificate is not None:
            context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
            context.load_cert_chain(*certificate)
            # The handshake is left to the connection's own thread.
            self.socket = context.wrap_socket(self.socket, server_side=True, do_handshake_on_connect=False)

    def behaviour(self, path):
        return self.owner.behaviour(path)

    def record(self, request):
        self.owner.record(request)

    def forget(self, connection):
        """This connection is already closed; a regular shutdown would turn its reset into a regular end."""
        self.reset_sockets.add(id(connection))

    def shutdown_request(self, request):
        if id(request) in self.reset_sockets:
            self.reset_sockets.discard(id(request))
            return
        super().shutdown_request(request)

    def handle_error(self, request, client_address):
        pass  # a client that goes away is what the tests are about


def make_certificate(folder):
    """A certificate for this machine that nobody has signed but itself, and its key: two files, good for two days."""
    certificate, key = Path(folder) / "certificate.pem", Path(folder) / "key.pem"
    subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
                    "-subj", "/CN=localhost", "-addext", "subjectAltName=DNS:localhost", "-days", "2",
                    "-keyout", key, "-out", certificate], check=True, capture_output=True)
    return certificate, key


class FaultServer:
    """The server, in a thread of its own from the moment it is made until stop() or the end of a `with` block. With a
    certificate, as make_certificate() returns it, it is one for https."""

    def __init__(self, behaviours=None, port=0, certificate=None):
        self._lock = threading.Lock()
        self._behaviours = dict(behaviours or {})
        self._requests = []
        self._scheme_and_host = "http://127.0.0.1" if certificate is None else "https://localhost"
        self._server = _Server(self, port, certificate)
        self.port = self._server.server_address[1]
        self._thread = threading.Thread(target=self._server.serve_forever, args=(0.05,), daemon=True)
        self._thread.start()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stop()

    def url(self, path=""):
        return "%s:%d%s" % (self._scheme_and_host, self.port, path)

    def set(self, path, behaviour):
        """What a path (with its query, if it has one) answers from now on; bytes stand for a regular body."""
        with self._lock:
            self._behaviours[path] = behaviour

    def behaviour(self, path):
        with self._lock:
            behaviour = self._behaviours.get(path)
        if behaviour is None:
            return behaviour_of_path(path)
        return body(behaviour) if isinstance(behaviour, bytes) else behaviour

    def record(self, request):
        with self._lock:
            self._requests.append(request)

    @property
    def requests(self):
        """The requests so far, oldest first."""
        with self._lock:
            return list(self._requests)

    def paths(self):
        return [request.path for request in self.requests]

    def stop(self):
        """Closes the port; connections that are being kept silent are closed, too."""
        self._server.stopping.set()
        self._server.shutdown()
        self._server.server_close()
        self._thread.join()


class RefusedPort:
    """A port that refuses connections for as long as this object lives: bound, so nobody else can open it."""

    def __init__(self):
        self._socket = socket.socket()
        self._socket.bind(("127.0.0.1", 0))
        self.port = self._socket.getsockname()[1]

    def close(self):
        self._socket.close()


class DeafPort:
    """A port where a connection is neither accepted nor refused: its queue is full and nobody empties it."""

    def __init__(self):
        self._socket = socket.socket()
        self._socket.bind(("127.0.0.1", 0))
        self._socket.listen(0)
        self.port = self._socket.getsockname()[1]
        self._queued = [self._queue_one() for _ in range(4)]

    def _queue_one(self):
        client = socket.socket()
        client.setblocking(False)
        client.connect_ex(("127.0.0.1", self.port))
        return client

    def close(self):
        for client in self._queued:
            client.close()
        self._socket.close()


def main():
    with tempfile.TemporaryDirectory(prefix="fault-server-") as folder, FaultServer() as server:
        certificate = make_certificate(folder)
        secure = FaultServer(certificate=certificate)
        refused, deaf = RefusedPort(), DeafPort()
        print(server.port, refused.port, deaf.port, secure.port)
        print(certificate[0], flush=True)
        sys.stdin.read()
        secure.stop()
        refused.close()
        deaf.close()


if __name__ == "__main__":
    main()
