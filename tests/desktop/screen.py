"""One screen of X11 as its user has it: windows with their frames, keys, pictures. It knows nothing of the program."""

import time

from PIL import Image, ImageGrab
from Xlib import XK, X, Xatom
from Xlib.display import Display
from Xlib.error import BadDrawable, BadWindow
from Xlib.ext import xtest
from Xlib.protocol import event

from waiting import wait

MODIFIERS = {"Alt": "Alt_L", "Ctrl": "Control_L", "Shift": "Shift_L"}
GONE = (BadWindow, BadDrawable)


class Screen:
    def __init__(self, name):
        self.name = name
        self._display = Display(name)
        self._root = self._display.screen().root
        self._root.change_attributes(event_mask=X.StructureNotifyMask)  # answers to ping() come to it

    def close(self):
        self._display.close()

    # What the window manager says

    def _property(self, window, name, kind=X.AnyPropertyType):
        try:
            value = window.get_full_property(self._display.intern_atom(name), kind)
        except GONE:
            return None
        return None if value is None else value.value

    def managed(self):
        """Whether a window manager is there."""
        return bool(self._property(self._root, "_NET_SUPPORTING_WM_CHECK")) and self.work_area() is not None

    def work_area(self):
        """x, y, width, height of what panels leave."""
        area = self._property(self._root, "_NET_WORKAREA")
        return tuple(area[:4]) if area else None

    def windows(self):
        """{title: window} of those that are managed and shown."""
        found = {}
        for number in self._property(self._root, "_NET_CLIENT_LIST") or []:
            window = self._display.create_resource_object("window", number)
            title = self.title(window)
            try:
                if title and window.get_attributes().map_state == X.IsViewable:
                    found[title] = window
            except GONE:
                pass
        return found

    def title(self, window):
        name = self._property(window, "_NET_WM_NAME")
        return name.decode() if name else ""

    def active(self):
        """The title of the window that the window manager shows as active."""
        number = self._property(self._root, "_NET_ACTIVE_WINDOW")
        if not number or not number[0]:
            return ""
        return self.title(self._display.create_resource_object("window", number[0]))

    def keys_go_to(self):
        """The title of the window that has the focus of the screen."""
        window = self._display.get_input_focus().focus
        while not isinstance(window, int) and window != self._root:
            title = self.title(window)
            if title:
                return title
            window = window.query_tree().parent
        return ""

    def wait_window(self, title):
        return wait(lambda: self.windows().get(title), f"the window {title!r}")

    def wait_active(self, title):
        wait(lambda: self.active() == title, f"the active window {title!r}")

    def inside(self, window):
        """x, y, width, height of a window without its frame."""
        size = window.get_geometry()
        corner = window.translate_coords(self._root, 0, 0)
        return -corner.x, -corner.y, size.width, size.height

    def frame(self, window):
        """The same with its frame."""
        extents = self._property(window, "_NET_FRAME_EXTENTS")
        left, right, top, bottom = extents if extents is not None else (0, 0, 0, 0)
        x, y, width, height = self.inside(window)
        return x - left, y - top, width + left + right, height + top + bottom

    def resting_frame(self, window):
        """The frame after the window manager has placed it: the same at two looks, with extents."""
        last = None

        def rests():
            nonlocal last
            before, last = last, self.frame(window)
            return before == last and self._property(window, "_NET_FRAME_EXTENTS") is not None

        wait(rests, "a window that stands still", poll=0.1)
        return last

    def least_size(self, window):
        """(width, height) that the window asks not to be made smaller than; 0, 0 when it does not care."""
        hints = window.get_wm_normal_hints()
        return (hints.min_width, hints.min_height) if hints else (0, 0)

    def is_on_taskbar(self, window):
        states = self._property(window, "_NET_WM_STATE", Xatom.ATOM)
        return self._display.intern_atom("_NET_WM_STATE_SKIP_TASKBAR") not in (states if states is not None else [])

    def class_of(self, window):
        """Instance and class, by which a panel knows whose window it is."""
        return window.get_wm_class() or ()

    def icon_of(self, window, size):
        """The one of that many pixels a side; None when there is none."""
        left = list(self._property(window, "_NET_WM_ICON") or [])
        while len(left) > 2:
            width, height = left[:2]
            points, left = left[2:2 + width * height], left[2 + width * height:]
            if (width, height) == (size, size):
                image = Image.new("RGBA", (size, size))
                image.putdata([(p >> 16 & 255, p >> 8 & 255, p & 255, p >> 24 & 255) for p in points])
                return image
        return None

    def tray_icons(self, panel):
        """How many icons the tray of the panel with that title holds."""
        if not self._display.get_selection_owner(self._display.intern_atom("_NET_SYSTEM_TRAY_S0")):
            raise AssertionError("there is no tray")
        return len(self._embedded(self.windows()[panel]))

    def _embedded(self, window):
        try:
            children = window.query_tree().children
        except GONE:
            return []
        found = [child for child in children if self._property(child, "_XEMBED_INFO") is not None]
        for child in children:
            found += self._embedded(child)
        return found

    # What can be done with windows

    def _tell(self, window, receiver, kind, *data):
        numbers = list(data) + [0] * (5 - len(data))
        message = event.ClientMessage(window=window, client_type=self._display.intern_atom(kind),
                                      data=(32, numbers))
        mask = (X.SubstructureRedirectMask | X.SubstructureNotifyMask) if receiver == self._root else 0
        receiver.send_event(message, event_mask=mask)
        self._display.flush()

    def ping(self, window, timeout=10):
        """Seconds until the program answered whether it is alive; None when it did not within the time-out."""
        while self._display.pending_events():
            self._display.next_event()
        stamp = int(time.monotonic() * 1000) % 2**31
        protocols = self._display.intern_atom("WM_PROTOCOLS")
        started = time.monotonic()
        self._tell(window, window, "WM_PROTOCOLS", self._display.intern_atom("_NET_WM_PING"), stamp, window.id)
        while time.monotonic() < started + timeout:
            while self._display.pending_events():
                answer = self._display.next_event()
                if answer.type & 0x7F == X.ClientMessage and answer.client_type == protocols:
                    if answer.data[1][1] == stamp:
                        return time.monotonic() - started
            time.sleep(0.002)
        return None

    def close_window(self, window):
        """As the button of the frame does."""
        self._tell(window, self._root, "_NET_CLOSE_WINDOW", 0, 2)

    def activate(self, window):
        """As a click in the taskbar does."""
        self._tell(window, self._root, "_NET_ACTIVE_WINDOW", 2)

    def open_window(self, title, box):
        """A window of somebody else's, which gets the keys; close_other() takes it away."""
        x, y, width, height = box
        screen = self._display.screen()
        self._other = self._root.create_window(x, y, width, height, 0, screen.root_depth,
                                               background_pixel=screen.black_pixel)
        self._other.set_wm_name(title)
        self._other.change_property(self._display.intern_atom("_NET_WM_NAME"),
                                    self._display.intern_atom("UTF8_STRING"), 8, title.encode())
        self._other.map()
        self._display.sync()
        self.wait_window(title)

    def close_other(self):
        self._other.destroy()
        self._display.sync()

    # Keys

    def press(self, *keys):
        """Keys such as "Tab" or "Alt+F4", one after the other."""
        for key in keys:
            *modifiers, last = key.split("+")
            codes = [self._code(MODIFIERS[name]) for name in modifiers] + [self._code(last)]
            for code in codes:
                xtest.fake_input(self._display, X.KeyPress, code)
            for code in reversed(codes):
                xtest.fake_input(self._display, X.KeyRelease, code)
        self._display.sync()

    def _code(self, name):
        return self._display.keysym_to_keycode(XK.string_to_keysym(name))

    # Pictures

    def picture(self):
        return ImageGrab.grab(xdisplay=self.name)
