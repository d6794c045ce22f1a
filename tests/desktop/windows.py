"""The program for Windows, under Wine: the same demands, where they apply."""

import wine
from boxes import off_middle
from contrast import TEXT
from focus import around
from household import ASSISTANT, CONFIRMATION, COPIED_NAMES, DIALOG, QUESTION_TITLE, REPORT_TITLE, SUCCESS, TITLE
from pixels import text_contrast
from placement import MIDDLE, Size, expect_inside
from progress import signs_of_life
from session import Session
from waiting import wait

SIZES = [Size(1024, 600), Size(1366, 768, 1.5), Size(1920, 1080, 2)]


def placement(report, size):
    with Session("openbox", (size.width, size.height)) as session, \
            wine.WindowsHousehold(session, size.scale) as household:
        screen, report.camera = session.screen, session.picture
        household.start(drives=household.table("EF"))
        with report.check(f"{size}, drive dialog") as check:
            frame, area = expect_inside(check, screen, DIALOG)
            off = off_middle(frame, area)
            check.figure += f", {off[0]:.0f}, {off[1]:.0f} off the middle"
            check.that(max(off) <= MIDDLE * size.scale, "not in the middle")
        screen.wait_active(DIALOG)
        screen.press("Down", "Return")
        with report.check(f"{size}, main window") as check:
            expect_inside(check, screen, TITLE)
        screen.wait_active(TITLE)
        screen.press("Alt+A")
        with report.check(f"{size}, assistant") as check:
            expect_inside(check, screen, ASSISTANT)


def contrasts(report, session, parts):
    """Before the search for updates has ended the main button tells of it, disabled."""
    picture = session.still()
    found = {part.name: part for part in parts()}
    for name, label in (("cmdChoose", "disabled main button"), ("StatusBar1_1", "panel 1"), ("Label15", "heading")):
        with report.check(f"contrast, {label}") as check:
            check.least(text_contrast(picture, found[name].box), TEXT, f": 1 ({found[name].description!r})")


def assistant(report, session, household, program):
    screen = session.screen
    with report.check("assistant, the formatter", needed=True) as check:
        screen.press("Alt+A")
        screen.wait_active(ASSISTANT)
        screen.press("Return")
        program.wait_for("Label3", "text", "Schritt 2:", window="Form1")
        household.plug(program, "Eh")
        program.wait_for("Label3", "text", "Schritt 3:", window="Form1")
        screen.press("Alt+W")
        screen.wait_active(QUESTION_TITLE)
        screen.press("Escape")
        wait(lambda: QUESTION_TITLE not in screen.windows(), "the end of the question")
        wait(lambda: screen.active() == ASSISTANT, "the assistant as the active window", timeout=10)
        screen.press("Alt+W")
        screen.wait_active(QUESTION_TITLE)
        screen.press("Return")
        screen.wait_active(REPORT_TITLE)
        screen.press("Return")
        wait(lambda: ASSISTANT not in screen.windows(), "the assistant's end")
        check.figure = " ".join((household.note(program, note) or "").strip() for note in ("called", "answered"))
        check.that(check.figure == "-c64 H: y", "not what the formatter has to be told")
    with report.check("assistant, the main window is active after it") as check:
        wait(lambda: program.windows()["frmMain"]["active"], "the main window", timeout=10)
        check.figure = f"active to the window manager: {screen.active()!r}"
    screen.activate(screen.wait_window(TITLE))  # Wine does not always tell the window manager
    screen.wait_active(TITLE)


def job(report, session, household):
    screen = session.screen
    household.serve_slowly("sr200.abs.txt", 24)
    with report.check("slow download, signs of life") as check:
        screen.press("Alt+U")
        screen.wait_active(CONFIRMATION)
        screen.press("Return")
        wait(lambda: CONFIRMATION not in screen.windows(), "the end of the question")
        signs_of_life(check, session, screen.inside(screen.wait_window(TITLE)))
    with report.check("job by keys, the stick") as check:
        screen.wait_active(SUCCESS)
        names = {path.name: path.stat().st_size for path in household.stick.iterdir() if path.name[0] != "."}
        check.figure = " ".join(sorted(names))
        check.that(sorted(names) == sorted(["sr200.abs", "sr200_at.sdx", *COPIED_NAMES]), "not what has to be there")
        check.that(names["sr200.abs"] == 24 * 1024 * 1024, "not the whole firmware")


def play(report):
    with report.check("built", needed=True) as check:
        check.that(wine.built(), "there is no program for Windows; tests/desktop/run builds it")
    for size in SIZES:
        placement(report, size)
    with Session("openbox") as session, wine.WindowsHousehold(session) as household:
        report.camera = session.picture
        program = household.start(drives=household.table("E"))
        household.stick = household.folder("E")
        parts = wine.parts_of(program)
        session.screen.wait_active(TITLE)
        contrasts(report, session, parts)
        program.wait_for("StatusBar1_2", "text", "Updates geladen.")
        around(report, session, parts)
        assistant(report, session, household, program)
        job(report, session, household)
    report.camera = None
