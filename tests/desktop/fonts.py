"""Machines with other fonts: those that fontconfig offers to the program are the ones of a folder of its own."""

import access
import pixels
from boxes import in_words, inside
from household import TITLE, Household
from session import Session

DEJAVU = "/usr/share/fonts/truetype/dejavu/"
SETS = {
    "sans alone": ["DejaVuSans.ttf", "DejaVuSans-Bold.ttf"],
    "serif alone": ["DejaVuSerif.ttf", "DejaVuSerif-Bold.ttf"],
    "fixed alone": ["DejaVuSansMono.ttf", "DejaVuSansMono-Bold.ttf"],
    "sans and fixed": ["DejaVuSans.ttf", "DejaVuSans-Bold.ttf", "DejaVuSansMono.ttf"],
}
CONFIGURATION = """<?xml version="1.0"?>
<!DOCTYPE fontconfig SYSTEM "fonts.dtd">
<fontconfig><dir>{fonts}</dir><cachedir>{cache}</cachedir></fontconfig>
"""
ALIGNED = 2  # pixels: digits do not fill their cells alike
LINES = 5


def make(folder, files):
    """The variable that makes fontconfig offer these files alone."""
    fonts = folder / "fonts"
    fonts.mkdir()
    for name in files:
        (fonts / name).symlink_to(DEJAVU + name)
    (folder / "fonts.conf").write_text(CONFIGURATION.format(fonts=fonts, cache=folder / "font-cache"),
                                       encoding="utf-8")
    return {"FONTCONFIG_FILE": str(folder / "fonts.conf")}


def runs(flags, least_gap):
    """[(first, last)] of what is set in a row, where gaps smaller than that are no gaps."""
    found = []
    for place, is_set in enumerate(flags):
        if not is_set:
            continue
        if found and place - found[-1][1] <= least_gap:
            found[-1][1] = place
        else:
            found.append([place, place])
    return found


def second_columns(picture, box):
    """For each line of the channel list the place where its second column begins, in pixels."""
    part = pixels.crop(picture, box)
    behind = pixels.ground(picture, box)
    ink = part.load()
    set_ = [[pixels.contrast(ink[x, y], behind) > 2 for x in range(part.width)] for y in range(part.height)]
    places = []
    for top, bottom in runs([any(row) for row in set_], 1):
        columns = [any(set_[y][x] for y in range(top, bottom + 1)) for x in range(part.width)]
        words = runs(columns, 1)
        gap, start = max(((after[0] - before[1], after[0]) for before, after in zip(words, words[1:])),
                         default=(0, 0))
        places.append(start if gap else None)
    return places


def play_one(report, session, name, files):
    with Household(session) as household:
        household.start(environment=make(household.home, files))
        access.wait_loaded()
        window = session.screen.wait_window(TITLE)
        picture = session.still()
        with report.check(f"{name}, columns of the channels") as check:
            part = access.wait_part(lambda part: "1. ORF 1" in part.name, what="the channels")
            places = second_columns(picture, part.box)
            check.figure = f"second column at {', '.join(map(str, places))}"
            check.that(len(places) == LINES and None not in places, f"not {LINES} lines of two columns")
            # The last number has two digits, and its dot stands below the others'.
            spread = max(places[:-1]) - min(places[:-1])
            check.that(spread <= ALIGNED and places[-1] < places[0], "not below each other")
        with report.check(f"{name}, window") as check:
            frame, area = session.screen.frame(window), session.screen.work_area()
            check.figure = f"{in_words(frame)} in {in_words(area)}"
            check.that(inside(frame, area), "not wholly inside")


def play(report):
    with Session("openbox") as session:
        access.enter(session)
        report.camera = session.picture
        for name, files in SETS.items():
            play_one(report, session, name, files)
