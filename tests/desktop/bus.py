"""What the program tells the desktop over the session's bus: notifications, and the state of its icon on the taskbar.
A thread takes notes of both; the notifications come to it because it owns their service."""

import threading

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

NOTIFICATIONS = """<node><interface name="org.freedesktop.Notifications">
<method name="Notify"><arg type="s" direction="in"/><arg type="u" direction="in"/><arg type="s" direction="in"/>
<arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="as" direction="in"/>
<arg type="a{sv}" direction="in"/><arg type="i" direction="in"/><arg type="u" direction="out"/></method>
<method name="CloseNotification"><arg type="u" direction="in"/></method>
<method name="GetCapabilities"><arg type="as" direction="out"/></method>
<method name="GetServerInformation"><arg type="s" direction="out"/><arg type="s" direction="out"/>
<arg type="s" direction="out"/><arg type="s" direction="out"/></method>
</interface></node>"""

ANSWERS = {"Notify": "(1,)", "CloseNotification": "()", "GetCapabilities": "(['body'],)",
           "GetServerInformation": "('notes', 'notes', '1', '1.2')"}
TYPES = {"Notify": "(u)", "CloseNotification": "()", "GetCapabilities": "(as)", "GetServerInformation": "(ssss)"}


class Notes:
    """notifications  [(summary, body)]
    launcher       [{property: value}] of com.canonical.Unity.LauncherEntry
    """

    def __init__(self, session):
        self.notifications, self.launcher = [], []
        self._address = session.environment["DBUS_SESSION_BUS_ADDRESS"]
        self._ready = threading.Event()
        self._context = GLib.MainContext()
        self._loop = GLib.MainLoop(self._context)
        self._thread = threading.Thread(target=self._listen, daemon=True)
        self._thread.start()
        if not self._ready.wait(30):
            raise AssertionError("the service of notifications does not come up")

    def _listen(self):
        self._context.push_thread_default()
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        bus = Gio.DBusConnection.new_for_address_sync(self._address, flags, None, None)
        interface = Gio.DBusNodeInfo.new_for_xml(NOTIFICATIONS).interfaces[0]
        bus.register_object("/org/freedesktop/Notifications", interface, self._called, None, None)
        bus.signal_subscribe(None, "com.canonical.Unity.LauncherEntry", "Update", None, None,
                             Gio.DBusSignalFlags.NONE, self._signalled)
        bus.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
                      GLib.Variant("(su)", ("org.freedesktop.Notifications", 0)), None, Gio.DBusCallFlags.NONE, -1,
                      None)
        self._ready.set()
        self._loop.run()

    def _called(self, _bus, _sender, _path, _interface, method, arguments, invocation):
        if method == "Notify":
            self.notifications.append((arguments[3], arguments[4]))
        invocation.return_value(GLib.Variant.parse(GLib.VariantType(TYPES[method]), ANSWERS[method], None, None))

    def _signalled(self, _bus, _sender, _path, _interface, _signal, arguments):
        self.launcher.append(dict(arguments[1]))
