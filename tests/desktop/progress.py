"""A long job, seen: it always moves, it answers, and it says what came of it, on the taskbar and beside it, too."""

import re
import time

import access
import pixels
from bus import Notes
from household import CONFIRMATION, FIRMWARE, SUCCESS, TITLE, Household, ended, silent, truncated
from session import Session, german
from waiting import wait

PAIRS = 9  # of pictures, 2 s apart
APART = 2  # seconds
PINGS = 5
MEGABYTE = 1024 * 1024
SHARE = re.compile(r"Firmware \d+ % \(\d+,\d von 64,0 MB, noch etwa \d+ (s|min)\)")
SILENCE = re.compile(r"Server antwortet nicht, warte noch \d+ s")
INCOMPLETE = "Achtung: Firmware unvollständig (1,0 von 64,0 MB). Bitte das Update wiederholen."
CHECKED = "Geprüft: 4 Dateien stimmen überein."


def start_job(session):
    """From the loaded program to the download, by keys."""
    screen = session.screen
    access.wait_loaded()
    screen.wait_active(TITLE)
    screen.press("Alt+U")
    screen.wait_active(CONFIRMATION)
    screen.press("Return")
    wait(lambda: CONFIRMATION not in screen.windows(), "the end of the question")


def signs_of_life(check, session, box):
    """The time between two pictures is what a user waits before wondering; more of it cannot make them equal."""
    before, least = session.contents(box), None
    for _ in range(PAIRS):
        time.sleep(APART)
        now = session.contents(box)
        changed = pixels.different(before, now)
        least = changed if least is None else min(least, changed)
        before = now
    check.figure = f"at least {least} pixels changed from each of {PAIRS + 1} pictures {APART} s apart to the next"
    check.that(least > 0, "nothing moved")


def slow_download(report, session):
    """64 MB at 1 MB/s, of which a third is watched."""
    with Household(session) as household:
        notes = session.notes
        household.serve_slowly("sr200.abs.txt", 64)
        program = household.start()
        start_job(session)
        window = session.screen.wait_window(TITLE)
        with report.check("slow download, signs of life") as check:
            signs_of_life(check, session, session.screen.inside(window))
        with report.check("slow download, the bar's text") as check:
            check.figure = wait(lambda: access.said(SHARE), f"a text like {SHARE.pattern!r}", timeout=10)
        with report.check("slow download, the icon on the taskbar") as check:
            shares = [entry["progress"] for entry in notes.launcher if entry.get("progress-visible")]
            check.figure = f"{len(shares)} shares told" + (f", the last {shares[-1]:.2f}" if shares else "")
            check.that(shares and shares == sorted(shares) and 0 < shares[-1] < 1, "no growing share")
        with report.check("slow download, closed") as check:
            session.screen.close_window(window)
            started = time.monotonic()
            status = ended(program)
            check.figure = f"ended with status {status} after {time.monotonic() - started:.2f} s"
            check.that(status == 0, "not an end as it should be")


def silent_server(report, session):
    """1 MB, then nothing; the program waits 30 s for more."""
    with Household(session) as household:
        household.serve("sr200.abs.txt", silent(FIRMWARE * (MEGABYTE // len(FIRMWARE)), 64 * MEGABYTE))
        program = household.start()
        start_job(session)
        screen = session.screen
        window = screen.wait_window(TITLE)
        wait(lambda: "sr200.abs.txt" in household.downloads(), "the download")
        with report.check("silent server, asked whether it is alive") as check:
            expect_answers(check, screen, window)
        with report.check("silent server, covered and uncovered") as check:
            expect_repainted(check, session, window)
        with report.check("silent server, the bar's text") as check:
            check.figure = wait(lambda: access.said(SILENCE), f"a text like {SILENCE.pattern!r}", timeout=15)
        with report.check("silent server, closed") as check:
            screen.close_window(window)
            started = time.monotonic()
            status = ended(program)
            check.figure = f"ended with status {status} after {time.monotonic() - started:.2f} s"
            check.that(status == 0 and time.monotonic() - started < 10, "it waited for the server")


def expect_answers(check, screen, window):
    times = []
    while len(times) < PINGS:
        times.append(screen.ping(window))
        check.that(times[-1] is not None, "no answer within 10 s")
    check.figure = f"{PINGS} answers, after {max(times) * 1000:.0f} ms at the most"


def expect_repainted(check, session, window):
    """Of the window's upper half, which shows nothing of the download."""
    x, y, width, height = session.screen.inside(window)
    box = (x, y, width, height // 2)
    before = session.contents(box)
    session.screen.open_window("Davor", box)
    wait(lambda: pixels.different(before, session.contents(box)) > width, "the window before it")
    session.screen.close_other()
    started = time.monotonic()
    wait(lambda: session.contents(box).tobytes() == before.tobytes(), "the window's picture", timeout=10)
    check.figure = f"painted again {(time.monotonic() - started) * 1000:.0f} ms later"


def incomplete(report, session):
    """The server closes after 1 of 64 MB; somebody else's window is active when the job ends."""
    with Household(session) as household:
        household.serve("sr200.abs.txt",
                        truncated((FIRMWARE * (MEGABYTE // len(FIRMWARE) + 1))[:MEGABYTE], 64 * MEGABYTE))
        household.start()
        start_job(session)
        session.screen.wait_window(SUCCESS)
        with report.check("incomplete, told by the bar") as check:
            check.figure = wait(lambda: access.said(INCOMPLETE), f"{INCOMPLETE!r}", timeout=10)
        session.screen.activate(session.screen.wait_window(SUCCESS))
        session.screen.wait_active(SUCCESS)
        session.screen.press("Return")
        with report.check("incomplete, told after the box") as check:
            wait(lambda: SUCCESS not in session.screen.windows(), "the end of the box")
            check.figure = wait(lambda: access.said(INCOMPLETE), f"{INCOMPLETE!r}", timeout=10)


def unwatched(report, session):
    """A job that ends while the user is elsewhere."""
    with Household(session) as household:
        household.serve_slowly("sr200.abs.txt", 2)
        household.start()
        start_job(session)
        session.screen.open_window("Woanders", (100, 100, 300, 200))
        session.screen.activate(session.screen.wait_window("Woanders"))
        session.screen.wait_active("Woanders")
        session.screen.wait_window(SUCCESS)
        with report.check("unwatched, files read back") as check:
            check.figure = wait(lambda: access.said(CHECKED), f"{CHECKED!r}", timeout=10)
        with report.check("unwatched, notification") as check:
            wait(lambda: session.notes.notifications, "a notification", timeout=10)
            check.figure = " ".join(session.notes.notifications[-1])
            check.that("Update abgeschlossen" in check.figure, "not the end of the job")
        session.screen.close_other()


def play(report):
    with Session("openbox", environment=german()) as session:
        access.enter(session)
        session.notes = Notes(session)
        report.camera = session.picture
        for episode in (slow_download, silent_server, incomplete, unwatched):
            try:
                episode(report, session)
            except Exception:
                with report.check(f"{episode.__name__.replace('_', ' ')}, to its end"):
                    raise


