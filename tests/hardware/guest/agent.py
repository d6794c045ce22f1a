"""The tests' hands in the guest: carries out what the host asks for, one JSON object a line.

It runs twice: as root from the start of the system, and as the user in the session at the console, because what a
program may do with a stick depends on the session it belongs to. It calls the host, which tells its port on the
kernel's command line.
"""

import base64
import json
import os
import re
import signal
import socket
import subprocess
import sys
import threading
import time

import events
import udisks_signals

HOST = "10.0.2.2"  # the host, as QEMU's user network shows it
CONNECTING = 60  # seconds

processes = {}


def host_port():
    with open("/proc/cmdline", encoding="ascii") as line:
        return int(re.search(r"usbtool\.port=(\d+)", line.read()).group(1))


def connect(greeting):
    end = time.monotonic() + CONNECTING
    while True:
        try:
            connection = socket.create_connection((HOST, host_port()), timeout=5)
            break
        except OSError:
            if time.monotonic() > end:
                raise
            time.sleep(0.1)
    connection.settimeout(None)
    connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
    connection.sendall(greeting.encode() + b"\n")
    return connection


# Requests. Each takes the request's fields as arguments and returns the fields of the reply.


def run(command, input="", timeout=60):
    """A command to its end, and the seconds until then; a text is a command of the shell."""
    began = time.monotonic()
    done = subprocess.run(command, shell=isinstance(command, str), input=input.encode(), timeout=timeout,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
    return {"status": done.returncode, "output": done.stdout.decode(errors="replace"),
            "errors": done.stderr.decode(errors="replace"), "seconds": time.monotonic() - began}


def start(command, environment=None, folder="/", output="/dev/null"):
    """A process that runs on; its number."""
    values = dict(os.environ)
    values.update(environment or {})
    with open(output, "ab") as log:
        process = subprocess.Popen(command, env=values, cwd=folder, stdin=subprocess.DEVNULL, stdout=log, stderr=log)
    processes[process.pid] = process
    return {"process": process.pid}


def status(process, timeout=0):
    """How a process ended, a signal as a negative number; None while it runs."""
    try:
        return {"status": processes[process].wait(timeout)}
    except subprocess.TimeoutExpired:
        return {"status": None}


def kill(process, how=signal.SIGKILL):
    processes[process].send_signal(how)
    return {}


def read(path):
    with open(path, "rb") as file:
        return {"bytes": base64.b64encode(file.read()).decode()}


def write(path, bytes, mode=0o644):
    with open(path, "wb") as file:
        file.write(base64.b64decode(bytes))
    os.chmod(path, mode)
    return {}


def links(folder):
    """Where the links of a folder lead to; none when there is no such folder."""
    try:
        with os.scandir(folder) as entries:
            return {"links": {entry.name: os.path.realpath(entry.path) for entry in entries if entry.is_symlink()}}
    except FileNotFoundError:
        return {"links": {}}


def wait_listening(path, timeout):
    """Waits until somebody listens at that socket. Its name is there a moment before, or is left from another one."""
    end = time.monotonic() + timeout
    while True:
        with socket.socket(socket.AF_UNIX) as attempt:
            try:
                attempt.connect(path)
                return {}
            except OSError as error:
                if time.monotonic() > end:
                    raise TimeoutError(f"nobody listens at {path}: {error}") from None
        time.sleep(0.02)


def bridge(path, token):
    """Connects a socket of the guest with the host."""
    near = socket.socket(socket.AF_UNIX)
    near.connect(path)
    far = connect(f"bridge {token}")
    for source, sink in ((near, far), (far, near)):
        threading.Thread(target=pump, args=(source, sink), daemon=True).start()
    return {}


def pump(source, sink):
    try:
        while data := source.recv(65536):
            sink.sendall(data)
    except OSError:
        pass
    for end in (source, sink):
        try:
            end.shutdown(socket.SHUT_RDWR)
        except OSError:
            pass


REQUESTS = {"run": run, "start": start, "status": status, "kill": kill, "read": read, "write": write,
            "links": links, "wait_listening": wait_listening, "bridge": bridge,
            "announced": events.announced, "shown": events.shown, "box_after_answer": events.box_after_answer,
            "listen_to_udisks": udisks_signals.listen, "file_systems": udisks_signals.file_systems}


def serve(connection):
    lock = threading.Lock()

    def answer(request):
        number = request.pop("number")
        try:
            reply = REQUESTS[request.pop("do")](**request)
        except Exception as error:  # whatever went wrong is told
            reply = {"error": f"{type(error).__name__}: {error}"}
        with lock:
            connection.sendall(json.dumps({"number": number, **reply}).encode() + b"\n")

    for line in connection.makefile("rb"):
        threading.Thread(target=answer, args=(json.loads(line),), daemon=True).start()


def bring_up_network():
    end = time.monotonic() + CONNECTING
    while not os.path.exists("/sys/class/net/eth0") and time.monotonic() < end:
        time.sleep(0.05)
    for command in ("ip link set lo up", "ip link set eth0 up", "ip addr add 10.0.2.15/24 dev eth0"):
        subprocess.run(command.split(), check=True)


def tell_service_manager():
    path = os.environ.get("NOTIFY_SOCKET")
    if path:
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as manager:
            manager.sendto(b"READY=1", path.replace("@", "\0", 1))


def main():
    who = sys.argv[1]
    if who == "root":
        bring_up_network()
        events.listen()
    connection = connect(f"agent {who}")
    tell_service_manager()
    serve(connection)


if __name__ == "__main__":
    main()
