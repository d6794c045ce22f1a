#!/usr/bin/env python3
"""Plays the update server on 127.0.0.1.

    server.py ROOT [--port N] [--port-file FILE]

Serves the files below ROOT (see make_server_tree.py), and the two pages that the program opens in a browser: "/" is the
update page, "/index_link.php" the sponsor page. Without --port the system chooses one; FILE appears, complete, once the
server listens. SIGTERM and SIGINT end it with status 0.
"""

import argparse
import os
import signal
import sys
from functools import partial
from http.server import SimpleHTTPRequestHandler, ThreadingHTTPServer
from pathlib import Path
from urllib.parse import urlsplit

CONTENT = Path(__file__).resolve().parent / "content"
PAGES = {"/": "index.html", "/index_link.php": "index_link.html"}


class Handler(SimpleHTTPRequestHandler):
    def translate_path(self, path: str) -> str:
        page = PAGES.get(urlsplit(path).path)
        return str(CONTENT / page) if page else super().translate_path(path)

    def list_directory(self, path):
        self.send_error(404)

    def log_message(self, format: str, *args) -> None:
        """Quiet: the one who started the server reads what the program shows."""


def write_port_file(path: Path, port: int) -> None:
    """Under another name first, so that whoever waits for the file never reads half a number."""
    draft = path.with_name(path.name + ".new")
    draft.write_text(f"{port}\n", encoding="ascii")
    os.replace(draft, path)


class Server(ThreadingHTTPServer):
    def handle_error(self, request, client_address) -> None:
        """A client that hangs up in the middle of a file is an everyday event."""
        if not isinstance(sys.exc_info()[1], ConnectionError):
            super().handle_error(request, client_address)


def end(_signal, _frame) -> None:
    sys.exit(0)


def main() -> int:
    parser = argparse.ArgumentParser(description="Plays the update server on 127.0.0.1.")
    parser.add_argument("root", type=Path, help="folder to serve")
    parser.add_argument("--port", type=int, default=0, help="0: one that is free")
    parser.add_argument("--port-file", type=Path, help="gets the port once the server listens")
    options = parser.parse_args()
    if not options.root.is_dir():
        parser.error(f"{options.root} is not a folder")

    signal.signal(signal.SIGTERM, end)
    signal.signal(signal.SIGINT, end)
    handler = partial(Handler, directory=str(options.root))
    with Server(("127.0.0.1", options.port), handler) as server:
        if options.port_file:
            write_port_file(options.port_file, server.server_port)
        server.serve_forever()
    return 0


if __name__ == "__main__":
    sys.exit(main())
