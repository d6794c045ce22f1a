"""Where the keys go is seen: at every stop of the tab key one frame, at least 2 pixels wide, that differs by 3:1 from
what is there without it."""

import access
import pixels
from household import ASSISTANT, Household
from session import Session
from waiting import wait

FRAME = 2  # pixels
CONTRAST = 3
AROUND = 5  # pixels that a frame may stand outside of its part
SHARE = 0.85  # of a part's width and height that its frame surrounds at least
SHARE_OF_OPTIONS = 0.6  # their letters without the circle or box
LEAST_STOPS, MOST_STOPS = 12, 40
LOOKS = {"light": {}, "dark": {"dark": True}, "large": {"font_size": 18}}  # large letters make the window scroll


class Stop:
    """A part that has the focus, the picture of the screen meanwhile, and where all parts were."""

    def __init__(self, number, everything, picture):
        self.number, self.part, self.picture = number, everything[number], picture
        self.boxes = [part.box for part in everything]

    @property
    def label(self):
        return f"{self.part.role} {self.part.name or self.part.description}".strip()

    def other(self, stops):
        """The picture of another stop, with this part in the same place."""
        same = [stop for stop in stops if stop.number != self.number and len(stop.boxes) == len(self.boxes)
                and stop.boxes[self.number] == self.part.box]
        if not same:
            raise AssertionError("there is no picture of it without the focus")
        return max(same, key=lambda stop: abs(stop.number - self.number)).picture


def focus_in(everything):
    return next((number for number, part in enumerate(everything) if part.focused and "showing" in part.states), None)


def here(session, parts, before=None):
    """The stop that has the focus now, which is another one than `before`."""
    def arrived():
        number = focus_in(parts())
        return number is not None and number != before
    wait(arrived, "the next stop")
    picture = session.still()
    everything = parts()
    return Stop(focus_in(everything), everything, picture)


def walk(session, parts):
    """Every stop, once around the window. parts is a function that returns what is in it, always in one order."""
    stops = [here(session, parts)]
    while len(stops) < MOST_STOPS:
        session.screen.press("Tab")
        stop = here(session, parts, before=stops[-1].number)
        if stop.number == stops[0].number:
            return stops
        stops.append(stop)
    raise AssertionError(f"no end of stops: {[stop.label for stop in stops]}")


def measure(check, stop, other):
    """`other` is a picture with the focus somewhere else."""
    mask = pixels.changed_mask(stop.picture, other, pixels.grown(stop.part.box, AROUND), CONTRAST)
    wide = pixels.frame_width(mask)
    _, _, width, height = pixels.bounds(mask)
    check.figure = f"frame of {wide} px around {width}×{height} of {stop.part.box[2]}×{stop.part.box[3]}"
    check.that(wide >= FRAME, f"less than {FRAME} px with {CONTRAST}:1")
    share = SHARE_OF_OPTIONS if stop.part.role in ("radio button", "check box") else SHARE
    check.that(width >= share * stop.part.box[2] and height >= share * stop.part.box[3], "not around the part")


def around(report, session, parts, least=LEAST_STOPS, window="main window"):
    """A check for every stop of the active window, and for their number."""
    with report.check(f"{window}, all stops", needed=True) as check:
        stops = walk(session, parts)
        check.figure = f"{len(stops)} stops"
        check.that(len(stops) >= least, "that is not all of the window")
    for stop in stops:
        report.camera = lambda path, picture=stop.picture: session.keep(picture, path)
        with report.check(f"{window}, {stop.label}") as check:
            measure(check, stop, stop.other(stops))
    report.camera = session.picture


def play(report, look):
    with Session("openbox", **LOOKS[look]) as session, Household(session) as household:
        access.enter(session)
        report.camera = session.picture
        household.start()
        access.wait_loaded()
        around(report, session, access.parts)
        session.screen.press("Alt+A")
        session.screen.wait_active(ASSISTANT)
        around(report, session, access.parts, least=2, window="assistant")
