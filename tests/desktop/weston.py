"""The job on Weston, by what the accessibility bus offers alone, for there is neither a keyboard nor a mouse."""

import access
import pixels
from compositor import Weston
from household import COPIED_NAMES, Household
from waiting import wait


def press(name):
    access.press(access.wait_part(lambda part: part.name == name and part.enabled and part.role == "push button",
                                  what=f"the button {name!r}"))


def play(report):
    with Weston((1366, 768)) as session, Household(session) as household:
        access.enter(session)
        report.camera = session.picture
        empty = session.picture()
        household.start()
        access.wait_loaded()
        with report.check("main window") as check:
            wait(lambda: pixels.different(empty, session.picture()) > 100_000, "its picture", poll=0.5)
            check.figure = f"{pixels.different(empty, session.picture())} pixels"
        with report.check("job by the accessibility bus, the stick") as check:
            press("Starte Update")
            access.wait_part(lambda part: "Updaten mit OK" in part.name + part.description, what="the question")
            press("OK")
            access.wait_part(lambda part: "Update abgeschlossen" in part.name and "KOSTENLOS" in part.name,
                             what="the success box")
            check.figure = " ".join(sorted(path.name for path in household.stick.iterdir()))
            household.expect_stick({"sr200.abs": household.firmware, "sr200_at.sdx": household.list,
                                    **dict.fromkeys(COPIED_NAMES)})
