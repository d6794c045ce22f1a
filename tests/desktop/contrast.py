"""What is written and drawn can be told from its ground: measured on the screen, light and dark."""

import access
import pixels
from household import Household
from session import Session
from waiting import wait

TEXT, OUTLINE = 4.5, 3
AUTOMATIC = {"Settings.ini": b"[USB Tool]\r\nchkAuto=1\r\ncmbSize=0\r\n"}
WHITE = 0.9  # luminance
NEAR = 2  # pixels


def showing(role=None, condition=lambda part: True):
    return [part for part in access.parts() if role in (None, part.role) and "showing" in part.states
            and part.box[2] > 0 and condition(part)]


def one_text(report, label, part, picture):
    with report.check(label) as check:
        check.least(pixels.text_contrast(picture, part.box), TEXT, f": 1 ({part.name!r})")


def weakest(report, label, measured, least):
    """measured: {name: contrast}."""
    with report.check(label) as check:
        check.that(measured, "there are none")
        name = min(measured, key=measured.get)
        check.least(measured[name], least, f": 1, the weakest of {len(measured)} ({name!r})")


def disabled(report, session):
    """No stick: the main button says what to do, and the panel what is missing."""
    access.wait_part("Updates geladen.")
    button = access.wait_part(lambda part: part.name == "Starte Update" and not part.enabled, what="the main button")
    panel = access.wait_part("No Stick")
    picture = session.still()
    for label, part in (("disabled main button", button), ("disabled panel", panel)):
        one_text(report, label, part, picture)


def indicator(part):
    """The circle or the box of an option, at its left."""
    x, y, _, height = part.box
    return x, y, height, height


def halo(picture, box):
    """Of the white letters on a coloured ground with the darkest pixel near each of them: the median."""
    x, y, width, height = pixels.grown(box, -3)
    dark = []
    for column in range(x, x + width):
        for row in range(y, y + height):
            colour = picture.getpixel((column, row))
            if pixels.luminance(colour) > WHITE:
                around = {picture.getpixel((column + i, row + j)) for i in range(-NEAR, NEAR + 1)
                          for j in range(-NEAR, NEAR + 1)}
                dark.append(max(pixels.contrast(colour, other) for other in around))
    if not dark:
        raise AssertionError("no white letters")
    return sorted(dark)[len(dark) // 2]


def enabled(report, picture):
    def texts(role):
        return {part.name: pixels.text_contrast(picture, part.box)
                for part in showing(role, lambda part: part.name.strip() and part.enabled and part.box[3] > 8
                                    and not part.name.startswith("Farbe"))}

    for role, label in (("label", "texts"), ("push button", "buttons"), ("radio button", "options"),
                        ("check box", "check box")):
        weakest(report, label, texts(role), TEXT)
    for role, label in (("radio button", "circles of options"), ("check box", "box of the check box")):
        measured = {part.name: pixels.text_contrast(picture, indicator(part))
                    for part in showing(role, lambda part: part.enabled and not part.checked)}
        weakest(report, label, measured, OUTLINE)
    for role, label in (("text", "outlines of text boxes"), ("combo box", "outline of the list of units")):
        measured = {part.name: pixels.outline_contrast(picture, part.box)
                    for part in showing(role, lambda part: part.enabled)}
        weakest(report, label, measured, OUTLINE)
    with report.check("percent, halo of the white letters") as check:
        bar = next(part for part in showing() if part.name == "Belegter Anteil des Speicherplatzes")
        check.least(halo(picture, bar.box), TEXT, ": 1")


def play(report, look):
    with Session("openbox", dark=look == "dark") as session, Household(session) as household:
        access.enter(session)
        report.camera = session.picture
        program = household.start(drives=household.drives(stick=None), files=AUTOMATIC)
        disabled(report, session)
        program.set_drives(household.drives(free=2 * 1024**3))
        access.wait_loaded()
        wait(lambda: access.find("ORVANTA") or access.find("USB Stick"), "the stick")
        access.press(access.wait_part(lambda part: part.role == "check box"))
        access.wait_part(lambda part: part.role == "check box" and not part.checked)
        enabled(report, session.still())
