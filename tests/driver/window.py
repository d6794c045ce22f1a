"""What a person can see and do in the program's windows, whichever system it runs on."""

import errno
import json
import os
import subprocess
import time
from pathlib import Path

POLL = 0.02
DEADLINE = 20.0


class DriverError(AssertionError):
    """The program did not do what was waited for, or cannot be asked any more."""


class ProgramEnded(DriverError):
    """The program ended while it was being asked."""


class Window:
    """Base of the drivers: everything here is asked of the program through `request`."""

    poll = POLL  # seconds between two looks at what is waited for

    def request(self, what, timeout=DEADLINE, **arguments):
        """One request and its reply, a dictionary. Raises DriverError when it could not be carried out."""
        raise NotImplementedError

    def output(self):
        """What the program wrote to its standard output and error."""
        raise NotImplementedError

    # What can be seen and done

    def windows(self):
        """{name: description} of the windows that are shown."""
        return {w["name"]: w for w in self.request("windows")["windows"] if w["visible"]}

    def get(self, name, window=None):
        """All that is known of one part: text, enabled, visible, checked, toolTip, accessibleName, geometry, …"""
        return self.request("get", name=name, window=window)["part"]

    def text(self, name, window=None):
        return self.get(name, window)["text"]

    def all(self, window=None):
        """{name: description} of all visible parts of a window."""
        return {part["name"]: part for part in self.request("all", window=window)["parts"]}

    def click(self, name, window=None):
        self.request("click", name=name, window=window)

    def double_click(self, name, window=None):
        self.request("click", name=name, window=window, clicks=2)

    def click_row(self, name, row, window=None, clicks=1):
        self.request("clickRow", name=name, row=row, window=window, clicks=clicks)

    def mouse(self, name, *steps, window=None, button="left"):
        """Steps of the mouse over one part: ("move", x, y), ("press", x, y), ("release", x, y)."""
        self.request("mouse", name=name, steps=steps, window=window, button=button)

    def choose(self, name, index, window=None):
        """Chooses an entry of a drop-down list."""
        self.request("choose", name=name, index=index, window=window)

    def focus(self, name, window=None):
        self.request("focus", name=name, window=window)

    def type(self, text="", *keys):
        """Types into what has the focus, then presses keys such as "Tab" or "Ctrl+V"."""
        self.request("type", text=text, keys=list(keys))

    def enter_text(self, name, text, window=None):
        """Replaces the text of a box by typing."""
        self.focus(name, window)
        self.type("", "Ctrl+A", "Backspace")
        self.type(text)

    def compose(self, text, shown=""):
        """Writes into what has the focus by an input method, which may show something else until it is chosen."""
        self.request("compose", text=text, shown=shown)

    def clipboard(self, text):
        self.request("clipboard", text=text)

    def message(self):
        """The open message box: title, text (lines end in a line feed), icon (16, 48, 64, 0), buttons; else None."""
        return self.request("messageBox")["box"]

    def answer(self, button="OK"):
        """Clicks a button of the open message box and waits until that box is gone."""
        before = self.message()
        self.request("answer", button=button)
        self._until(lambda: self._message_or_end() != before, DEADLINE, lambda: f"the box stays open: {before}")

    def _message_or_end(self):
        try:
            return self.message()
        except ProgramEnded:
            return None

    def close(self, window="frmMain"):
        self.request("close", window=window)

    def heartbeat(self, window="frmMain"):
        """Since it was asked first: how often a mark that changes every 40 ms was painted, and the longest time without,
        in seconds."""
        answer = self.request("heartbeat", window=window)
        return answer["paints"], answer["longestGap"]

    def resize(self, width, height, window="frmMain"):
        self.request("resize", width=width, height=height, window=window)

    def appearance(self, dark=None, font_size=None):
        self.request("appearance", dark=dark, fontSize=font_size)

    def screenshot(self, path, window=None):
        """One window, or all that are on the screen."""
        self.request("screenshot", path=str(Path(path).resolve()), window=window)

    # Waiting

    def _until(self, condition, timeout, complaint):
        """Derived classes may wait longer; the complaint, a function, is told with the time that it was."""
        end = time.monotonic() + timeout
        while True:
            result = condition()
            if result:
                return result
            if time.monotonic() > end:
                raise DriverError(f"after {timeout:g} s: {complaint()}")
            time.sleep(self.poll)

    def wait_until(self, condition, timeout=DEADLINE, what="the condition"):
        """Waits until condition() is true, and returns its value."""
        return self._until(condition, timeout, lambda: f"{what} did not come true")

    def wait_for(self, name, key, value, timeout=DEADLINE, window=None):
        """Waits until a property of a part has the value (or until value(actual) is true), and returns it."""
        last = {}

        def reached():
            last.update(self.get(name, window))
            actual = last.get(key)
            return value(actual) if callable(value) else actual == value

        self._until(reached, timeout, lambda: f"{name}.{key} is {last.get(key)!r}, not {value!r}")
        return last.get(key)

    def wait_message(self, timeout=DEADLINE, title=None):
        """Waits for a message box (of that title) and returns it."""
        def shown():
            box = self.message()
            return box if box is not None and title in (None, box["title"]) else None

        return self._until(shown, timeout, lambda: f"no message box {title or ''}")

    def settle(self):
        """Waits until what was done to the program has been handled, or has opened a box or a dialog."""
        mark = self.request("mark")["mark"]
        self.wait_until(lambda: self.request("marked")["mark"] >= mark, what="the end of what was done")

    def wait_window(self, name, timeout=DEADLINE):
        return self._until(lambda: self.windows().get(name), timeout, lambda: f"no window {name}")


class PluginWindow(Window):
    """Base of the drivers that ask the plugin beside this file, through a socket."""

    _socket = None
    _stream = None
    first_paint = None

    def watch(self, name, key, value, window=None):
        """From now on it is noted when a part is painted, enabled or disabled with a value, for however short a time."""
        self.request("watch", name=name, key=key, value=value, window=window)

    def wait_watched(self):
        """Waits until that has been noted."""
        self.wait_until(lambda: self.request("watched")["time"], what="what is watched")

    def _use(self, connection):
        self._socket = connection
        self._stream = connection.makefile("rw", encoding="utf-8", newline="\n")

    def _disconnect(self):
        for closing in (self._stream, self._socket):
            try:
                if closing is not None:
                    closing.close()
            except OSError:
                pass

    def request(self, what, timeout=DEADLINE, **arguments):
        """One request and its reply, which comes when the program handles events."""
        message = {"do": what, **given(arguments)}
        try:
            self._socket.settimeout(timeout)
            self._stream.write(json.dumps(message) + "\n")
            self._stream.flush()
            line = self._stream.readline()
        except TimeoutError:
            raise DriverError(f"no reply to {message} for {timeout} s") from None
        except OSError as error:
            raise ProgramEnded(f"at {message}: {error}\n{self.output()}") from None
        if not line:
            raise ProgramEnded(f"at {message}\n{self.output()}")
        reply = json.loads(line)
        if "error" in reply:
            raise DriverError(f"{message}: {reply['error']}")
        self.first_paint = reply.get("firstPaint") or None
        return reply


class LocalProgram(Window):
    """Base of the drivers whose program is a process of this machine, with a folder `home` that goes with it, and the
    program's own `folder` in there."""

    process = None
    error_output = subprocess.STDOUT  # of the next start
    _output = None
    _temporary = None

    def _launch(self, command, environment):
        self._output = open(self.home / "output.txt", "ab")
        end = time.monotonic() + DEADLINE
        while self.process is None or self.process.returncode is not None:
            self.started = time.monotonic()
            try:
                self.process = subprocess.Popen(command, env=environment, cwd=self.home, stdin=subprocess.DEVNULL,
                                                stdout=self._output, stderr=self.error_output)
            except OSError as error:
                # What another test has just started has this one's copy of the program open, until it is that program.
                if error.errno != errno.ETXTBSY or time.monotonic() > end:
                    raise
                time.sleep(0.01)

    def write(self, name, contents):
        """Puts a file into the program folder at once, so that the program never sees half of it.
        None takes it away."""
        target = self.folder / name
        if contents is None:
            target.unlink(missing_ok=True)
            return
        part = target.with_name(target.name + ".part")
        part.write_bytes(contents)
        part.replace(target)

    def start(self):
        raise NotImplementedError

    def restart(self):
        """Once more in the same folder, after the first run has ended."""
        self._output.close()
        self.start()

    def output(self):
        """Empty before the first start."""
        file = self.home / "output.txt"
        return file.read_text(encoding="utf-8", errors="replace") if file.exists() else ""

    def running(self):
        return self.process.poll() is None

    def processor_seconds(self):
        """What the program has used of the processors so far, which a busy machine does not change."""
        fields = Path(f"/proc/{self.process.pid}/stat").read_text(encoding="utf-8", errors="replace")
        ticks = fields.rpartition(")")[2].split()[11:13]
        return sum(map(int, ticks)) / os.sysconf("SC_CLK_TCK")

    def _expect_running(self):
        if not self.running():
            raise ProgramEnded(f"ended with status {self.process.returncode}:\n{self.output()}")

    def exit_status(self, timeout=DEADLINE):
        """Waits for the end. A signal is a negative number."""
        try:
            return self.process.wait(timeout)
        except subprocess.TimeoutExpired:
            raise DriverError(f"still running after {timeout} s") from None

    def stop(self):
        if self.process is not None:
            if self.running():
                self.process.kill()
            self.process.wait()
            self._output.close()
        self._temporary.cleanup()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stop()


def given(arguments):
    """Those that are not None."""
    return {name: value for name, value in arguments.items() if value is not None}
