"""The job by keys on sway: its windows are wholly on the screen, at twice the resolution, too."""

import access
from boxes import in_words, inside
from compositor import Sway
from household import ASSISTANT, CONFIRMATION, COPIED_NAMES, SUCCESS, TITLE, Household, ended
from session import german
from waiting import wait


def expect_inside(report, session, label, title):
    with report.check(label) as check:
        session.wait_window(title)
        frame = session.frame(session.wait_window(title))
        check.figure = f"{in_words(frame)} in {in_words(session.screen())}"
        check.that(inside(frame, session.screen()), "not wholly inside")


def job(report, session, household):
    with report.check("job by keys, the stick", needed=True) as check:
        access.wait_loaded()
        session.wait_active(TITLE)
        session.press("Alt+u")
        session.wait_active(CONFIRMATION)
        session.press("Return")
        session.wait_active(SUCCESS)
        check.figure = " ".join(sorted(path.name for path in household.stick.iterdir()))
        household.expect_stick({"sr200.abs": household.firmware, "sr200_at.sdx": household.list,
                                **dict.fromkeys(COPIED_NAMES)})
    with report.check("job, the main window is active after it") as check:
        session.press("Return")
        wait(lambda: SUCCESS not in session.windows(), "the end of the box")
        wait(lambda: session.active() == TITLE, "the main window", timeout=10)
    with report.check("closed") as check:
        program = household.program
        session.close_window(TITLE)
        check.figure = f"status {ended(program)}"
        check.that(check.figure == "status 0", "not an end as it should be")


def play_one(report, size, scale):
    where = f"{size[0]}×{size[1]} at {scale * 100:.0f} %"
    with Sway(size, scale, environment=german()) as session, Household(session) as household:
        report.camera = session.picture
        household.program = household.start()
        expect_inside(report, session, f"{where}, main window", TITLE)
        session.wait_active(TITLE)
        session.press("Alt+a")
        expect_inside(report, session, f"{where}, assistant", ASSISTANT)
        if scale == 1:
            session.close_window(ASSISTANT)
            wait(lambda: ASSISTANT not in session.windows(), "the assistant's end")
            access.enter(session)
            job(report, session, household)
    report.camera = None


def play(report):
    for size, scale in (((1366, 768), 1), ((1920, 1080), 1.5), ((1920, 1080), 2)):
        play_one(report, size, scale)
