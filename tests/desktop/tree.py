"""What the accessibility bus shows of the windows: roles, names, values."""

import re

import access
from household import ASSISTANT, DIALOG, TITLE, Household
from session import Session, german
from waiting import wait

# (role, name); a role of None is any one.
MAIN = [
    ("frame", TITLE),
    ("push button", "USB-Stick finden / aktualisieren"),
    ("push button", "Inhalt anzeigen"),
    ("text", "Bezeichnung"),
    ("push button", "Benennen"),
    ("text", "Dateisystem"),
    ("combo box", "MB"),
    ("text", "Standard Pfad"),
    ("push button", "speichern"),
    ("check box", "autom. erkennen von neuen Laufwerken"),
    ("push button", "USB-HDD Format Assistent"),
    *[("radio button", name) for name in ("SR 100", "SR 200 CI", "SR 300 PVR", "SR 400 Twin", "SR 500 HD",
                                          "SR 600 HD CI", "SR 700 HD Twin", "SR 800 HD PVR", "SR 900 UHD")],
    *[("radio button", name) for name in ("Österreich", "Deutschland", "Italia", "France", "Spain")],
    ("push button", "Starte Update"),
    ("push button", "Hilfe"),
    ("notification", "USB Stick"),
    ("notification", "Updates geladen."),
    (None, "Laufwerkspfad E:\\"),
    (None, "Speicherplatz: 4096,00 MB"),
    (None, "Belegt: 0,00 MB"),
    (None, "Frei: 4096,00 MB"),
    (None, "Stand: 14.03.2026 (V1.32)"),
    (None, "Änderung: Größere Schrift"),
]
CAPACITY = "Belegter Anteil des Speicherplatzes"
WITHOUT_NAME = re.compile(r"filler|panel|list|scroll bar")  # they hold others, or belong to one that has a name


def expect(report, label, everything, role, name):
    with report.check(f"{label}, {name}") as check:
        found = [part for part in everything if part.name == name]
        roles = [part.role for part in found]
        check.figure = ", ".join(roles) or "not there"
        check.that(roles if role is None else role in roles, f"no {role or 'part'} of this name")


def main_window(report):
    everything = access.parts()
    for role, name in MAIN:
        expect(report, "main window", everything, role, name)
    with report.check("main window, value of the capacity bar") as check:
        value = access.value(next(part for part in everything if part.name == CAPACITY))
        check.figure = str(value)
        check.that(value is not None and value[0] <= value[1] <= value[2] and value[2] == 100, "no share of 100")
    with report.check("main window, stops with a name") as check:
        stops = [part for part in everything if "focusable" in part.states and "showing" in part.states]
        nameless = [part.role for part in stops if not part.name and not WITHOUT_NAME.fullmatch(part.role)]
        check.figure = f"{len(stops) - len(nameless)} of {len(stops)}"
        check.that(not nameless, f"without one: {nameless}")


def dialogs(report, household, session):
    """The choice of drives comes up before the main window, with two sticks."""
    household.start(drives=household.table("EF"))
    session.screen.wait_window(DIALOG)
    wait(lambda: access.find(DIALOG), "the drive dialog on the bus", poll=0.1)
    everything = access.parts()
    expect(report, "drive dialog", everything, "dialog", DIALOG)
    expect(report, "drive dialog", everything, None, "Gefundene Laufwerke")
    with report.check("drive dialog, rows") as check:
        rows = [part.name for part in everything if part.name.startswith("STICK") or part.name in ("E:", "F:")]
        check.figure = " | ".join(rows)
        check.that({"STICK E", "STICK F"} <= set(rows), "the sticks are not told")
    session.screen.wait_active(DIALOG)
    session.screen.press("Return")
    session.screen.wait_active(TITLE)
    session.screen.press("Alt+A")
    session.screen.wait_active(ASSISTANT)
    everything = access.parts()
    for role, name in (("dialog", ASSISTANT), ("push button", "Weiter"), ("push button", "Zurück"),
                       (None, "Schritt 1:")):
        expect(report, "assistant", everything, role, name)


def play(report):
    with Session("openbox", environment=german()) as session:
        access.enter(session)
        report.camera = session.picture
        with Household(session) as household:
            household.start()
            access.wait_loaded()
            main_window(report)
        with Household(session) as household:
            dialogs(report, household, session)
