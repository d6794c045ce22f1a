"""The program as the accessibility bus shows it, which is what screen readers know of it.

Libraries look for that bus once, so a process asks one session only, after enter().
"""

import re

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, Gio, GLib  # noqa: E402

from part import Part  # noqa: E402
from waiting import wait  # noqa: E402

ANSWER = 2000  # milliseconds that a program has for an answer
PROGRAM = "orvanta-usbtool"


def enter(session):
    """From now on this process belongs to the session, and the session's programs tell what they show, as when a screen
    reader has been started."""
    session.enter()
    bus = Gio.bus_get_sync(Gio.BusType.SESSION)
    enabled = GLib.Variant("(ssv)", ("org.a11y.Status", "IsEnabled", GLib.Variant("b", True)))
    bus.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.freedesktop.DBus.Properties", "Set", enabled, None,
                  Gio.DBusCallFlags.NONE, -1, None)


def value(part):
    """(least, current, largest) of a part that has a value; None of any other."""
    thing = part.object
    if "Value" not in thing.get_interfaces():
        return None
    return thing.get_minimum_value(), thing.get_current_value(), thing.get_maximum_value()


def _part(thing):
    box = thing.get_extents(Atspi.CoordType.SCREEN)
    states = frozenset(state.value_nick for state in thing.get_state_set().get_states())
    return Part(thing.get_role_name(), thing.get_name() or "", thing.get_description() or "", states,
                (box.x, box.y, box.width, box.height), thing)


def _below(thing):
    """Everything that belongs to it, in the order of the tree."""
    for number in range(thing.get_child_count()):
        child = thing.get_child_at_index(number)
        if child is not None:
            yield child
            yield from _below(child)


def application():
    """The program on the bus; None before it is there."""
    Atspi.set_timeout(ANSWER, ANSWER)
    desk = Atspi.get_desktop(0)
    desk.clear_cache()  # nobody tells this process of changes
    for number in range(desk.get_child_count()):
        found = desk.get_child_at_index(number)
        # On a desktop of GTK its library says in the program's name that there is nothing.
        if found is not None and found.get_name() == PROGRAM and found.get_toolkit_name() == "Qt":
            found.set_cache_mask(Atspi.Cache.NONE)
            return found
    return None


def parts():
    """All parts of all windows of the program. What vanished while it was looked at is left out."""
    found = []
    try:
        program = application()
        for thing in _below(program) if program is not None else ():
            found.append(_part(thing))
    except GLib.Error:
        pass
    return found


def find(name, role=None):
    """The first part whose name is `name`, or for which name(part) is true; None when there is none."""
    for part in parts():
        if (name(part) if callable(name) else part.name == name) and role in (None, part.role):
            return part
    return None


def wait_part(name, role=None, what=None):
    return wait(lambda: find(name, role), what or f"the part {name!r}", poll=0.1)


def said(pattern):
    """The first name or description on the accessibility bus that matches."""
    wanted = pattern if isinstance(pattern, re.Pattern) else re.compile(re.escape(pattern))
    for part in parts():
        for text in (part.name, part.description):
            found = wanted.search(text)
            if found:
                return found.group(0)
    return None


def focused():
    """What gets the keys; None while nothing says so."""
    return next((part for part in parts() if part.focused and "showing" in part.states), None)


def wait_loaded():
    """Until the search for updates has ended well."""
    return wait_part(lambda part: part.name == "Starte Update" and part.enabled, what="the main button")


def press(part):
    """As a screen reader presses it for its user."""
    Atspi.Action.do_action(part.object, 0)
