"""The whole job and the assistant for hard disks by keys alone; the stick and the formatter's notes are the judges."""

import re

import access
import pixels
import placement
from household import (ASSISTANT, CONFIRMATION, COPIED_NAMES, QUESTION_TITLE, REPORT_TITLE, SUCCESS, TITLE, Household,
                       ended)
from session import Session, german
from waiting import wait

DESKTOPS = {"openbox": {}, "xfwm4": {"panel": True, "theme": "gtk3", "environment": german}}
BUSY = "Wird formatiert – Platte nicht abziehen"
FOUND = "USB-Festplatte gefunden!"
MOST_TABS = 40
# It plays the formatter until it is told that it is done.
PATIENT = 'read -r answer\nprintf "%s\\n" "$answer" > answered\nwhile [ ! -e go ]; do sleep 0.05; done\necho Done\n'


def tab_to(session, wanted):
    """Presses Tab until the part for which wanted(part) is true has the focus, and returns how often."""
    for presses in range(MOST_TABS):
        part = wait(access.focused, "a part with the focus")
        if wanted(part):
            return presses
        session.screen.press("Tab")
        wait(lambda: (access.focused() or part).box != part.box, "the next stop")
    raise AssertionError("the tab key does not lead there")


def expect_active(check, screen, title):
    try:
        wait(lambda: screen.active() == title, f"{title!r} as the active window", timeout=10)
    finally:
        check.figure = f"active is {screen.active()!r}, keys go to {screen.keys_go_to()!r}"


def assistant(report, session, household, program):
    screen = session.screen
    with report.check("assistant, opened", needed=True) as check:
        presses = tab_to(session, lambda part: part.name == "USB-HDD Format Assistent")
        screen.press("Return")
        screen.wait_active(ASSISTANT)
        check.figure = f"{presses} times Tab, then Return"
    with report.check("assistant, the disk that was found") as check:
        screen.press("Return")
        access.wait_part(lambda part: part.name.startswith("Schließen Sie jetzt"), what="the second step")
        household.plug(program, "Eh")
        access.wait_part(lambda part: FOUND in part.name, what="the third step")
        check.figure = wait(lambda: access.said(re.compile(r".*STICK h.*")), "a line with the disk's label", timeout=10)
    with report.check("assistant, active again after the question") as check:
        tab_to(session, lambda part: part.name == "Weiter")
        screen.press("Return")
        screen.wait_active(QUESTION_TITLE)
        screen.press("Escape")
        wait(lambda: QUESTION_TITLE not in screen.windows(), "the end of the question")
        expect_active(check, screen, ASSISTANT)
    screen.activate(screen.wait_window(ASSISTANT))  # as somebody does with the mouse where the check failed
    with report.check("assistant, it shows that it formats") as check:
        screen.wait_active(ASSISTANT)
        screen.press("Return")
        screen.wait_active(QUESTION_TITLE)
        screen.press("Return")
        household.child(program)
        check.figure = wait(lambda: access.said(BUSY), f"{BUSY!r}", timeout=10)
    with report.check("assistant, signs of life while it formats") as check:
        box = screen.inside(screen.wait_window(ASSISTANT))
        before = session.contents(box)
        changed = wait(lambda: pixels.different(before, session.contents(box)), "a change", timeout=10, poll=0.5)
        check.figure = f"{changed} pixels changed"
    (program.folder / "go").touch()
    with report.check("assistant, the formatter", needed=True) as check:
        screen.wait_active(REPORT_TITLE)
        screen.press("Return")
        wait(lambda: ASSISTANT not in screen.windows(), "the assistant's end")
        check.figure = " ".join((household.note(program, note) or "").strip() for note in ("called", "answered"))
        check.that(check.figure == "-c64 H: y", "not what the formatter has to be told")
    with report.check("assistant, the main window is active after it") as check:
        expect_active(check, screen, TITLE)


def job(report, session, household):
    screen = session.screen
    with report.check("job, receiver and list", needed=True) as check:
        presses = tab_to(session, lambda part: part.role == "radio button" and part.description == "Receivertype")
        screen.press("Down")
        access.wait_part(lambda part: part.name == "SR 300 PVR" and part.checked, what="the receiver")
        presses += tab_to(session, lambda part: part.role == "radio button" and part.description != "Receivertype")
        screen.press("space")
        access.wait_part(lambda part: part.name == "Deutschland" and part.checked, what="the list")
        check.figure = f"{presses} times Tab, Down, the space bar and Return"
        screen.press("Return")
        screen.wait_active(CONFIRMATION)
    with report.check("job, question") as check:
        placement.expect_inside(check, screen, CONFIRMATION)
    with report.check("job, the stick", needed=True) as check:
        screen.press("Return")
        screen.wait_active(SUCCESS)
        names = sorted(path.name for path in household.stick.iterdir())
        check.figure = " ".join(names)
        check.that(names == sorted(["sr300.abs", "sr300_de.sdx", *COPIED_NAMES]), "not what has to be there")
        household.expect_stick({"sr300.abs": household.firmware, "sr300_de.sdx": household.list,
                                **dict.fromkeys(COPIED_NAMES)})
    with report.check("job, the main window is active after it") as check:
        screen.press("Return")
        wait(lambda: SUCCESS not in screen.windows(), "the end of the box")
        expect_active(check, screen, TITLE)


def taskbar(report, screen):
    """Of a panel: the window is listed, and the tray stays as it is, for no icon is ever put into it."""
    with report.check("panel") as check:
        check.figure = f"on the taskbar: {screen.is_on_taskbar(screen.wait_window(TITLE))}, " \
                       f"{screen.tray_icons('tint2')} icons in the tray"
        check.that(check.figure == "on the taskbar: True, 0 icons in the tray", "not as it has to be")


def play(report, window_manager):
    settings = dict(DESKTOPS[window_manager])
    settings["environment"] = settings.pop("environment", dict)()
    with Session(window_manager, **settings) as session, Household(session) as household:
        access.enter(session)
        report.camera = session.picture
        program = household.start(drives=household.table("E"), formatter=PATIENT,
                                  files={"Settings.ini": b"[USB Tool]\r\nchkAuto=1\r\ncmbSize=0\r\n"})
        household.stick = household.folder("E")
        access.wait_loaded()
        session.screen.wait_active(TITLE)
        if "panel" in settings:
            taskbar(report, session.screen)
        assistant(report, session, household, program)
        job(report, session, household)
        with report.check("closed") as check:
            session.screen.close_window(session.screen.wait_window(TITLE))
            status = ended(program)
            check.figure = f"status {status}"
            check.that(status == 0, "not an end as it should be")
