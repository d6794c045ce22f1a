"""Where windows come up: wholly inside what panels leave of the screen, at every size of screens and letters."""

from typing import NamedTuple

from boxes import in_words, inside, off_middle
from household import ASSISTANT, DIALOG, TITLE, Household
from session import Session

MIDDLE = 24  # pixels that the middle of a window may be off: a frame's title bar


class Size(NamedTuple):
    """A screen in pixels, what the desktop enlarges everything by, and the size of its letters in points."""

    width: int
    height: int
    scale: float = 1
    points: int = 10

    def __str__(self):
        text = f"{self.width}×{self.height}"
        text += f" at {self.scale * 100:.0f} %" if self.scale != 1 else ""
        return text + (f" with {self.points} pt" if self.points != 10 else "")


SIZES = [Size(1024, 600), Size(1366, 768), Size(1366, 768, 1.5), Size(1920, 1080, 1.5), Size(1920, 1080, 2),
         Size(1366, 768, points=12), Size(1366, 768, points=18), Size(1024, 600, points=18)]
# Window managers of small desktops, one with a panel and the settings of Xfce.
DESKTOPS = {"openbox": {}, "xfwm4": {"panel": True, "theme": "gtk3"}}


def expect_inside(check, screen, title):
    frame, area = screen.resting_frame(screen.wait_window(title)), screen.work_area()
    check.figure = f"{in_words(frame)} in {in_words(area)}"
    check.that(inside(frame, area), "not wholly inside")
    return frame, area


def least_size(check, screen, size):
    """Small enough for the screen, and no smaller than what can still be used."""
    least = screen.least_size(screen.wait_window(TITLE))
    area = screen.work_area()
    check.figure = f"{least[0]}×{least[1]}"
    check.that(least[0] >= 320 * size.scale and least[1] >= 240 * size.scale, "smaller than can be used")
    check.that(least[0] <= area[2] and least[1] <= area[3], f"larger than {in_words(area)}")


def play_one(report, window_manager, size):
    where = str(size)
    scale = {} if size.scale == 1 else {"QT_SCALE_FACTOR": f"{size.scale}"}
    with Session(window_manager, (size.width, size.height), font_size=size.points, environment=scale,
                 **DESKTOPS[window_manager]) as session:
        screen = session.screen
        report.camera = session.picture
        with Household(session) as household:
            household.start(drives=household.table("EF"))
            with report.check(f"{where}, drive dialog") as check:
                frame, area = expect_inside(check, screen, DIALOG)
                off = min(off_middle(frame, area), off_middle(frame, (0, 0, size.width, size.height)))
                check.figure += f", {off[0]:.0f}, {off[1]:.0f} off the middle"
                check.that(max(off) <= MIDDLE, "not in the middle")
            screen.wait_active(DIALOG)
            screen.press("Down", "Return")
            with report.check(f"{where}, main window") as check:
                expect_inside(check, screen, TITLE)
            with report.check(f"{where}, least size") as check:
                least_size(check, screen, size)
            screen.wait_active(TITLE)
            screen.press("Alt+A")
            with report.check(f"{where}, assistant") as check:
                expect_inside(check, screen, ASSISTANT)
    report.camera = None


def play(report, window_manager):
    for size in SIZES:
        play_one(report, window_manager, size)
