"""What a picture of the screen tells: contrasts as WCAG 2.1 defines them, and what changed between two pictures.

Boxes are x, y, width, height on the screen.
"""

from functools import lru_cache

SURE = 3  # pixels of a colour: less is a corner


def _linear(channel):
    share = channel / 255
    return share / 12.92 if share <= 0.04045 else ((share + 0.055) / 1.055) ** 2.4


@lru_cache(maxsize=None)
def luminance(colour):
    red, green, blue = (_linear(channel) for channel in colour)
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue


@lru_cache(maxsize=None)
def contrast(one, other):
    """1 for equal colours to 21 for black and white."""
    light, dark = sorted((luminance(one), luminance(other)), reverse=True)
    return (light + 0.05) / (dark + 0.05)


def crop(picture, box):
    x, y, width, height = box
    return picture.crop((max(x, 0), max(y, 0), min(x + width, picture.width), min(y + height, picture.height)))


def grown(box, by):
    x, y, width, height = box
    return x - by, y - by, width + 2 * by, height + 2 * by


def ground(picture, box):
    """The colour that most of the box has."""
    return max(colours(picture, box))[1]


def colours(picture, box):
    """[(number of pixels, colour)]."""
    part = crop(picture, box)
    return part.getcolors(part.width * part.height + 1)


def text_contrast(picture, box):
    """Of the letters in a box with its ground: that of their strongest strokes."""
    behind = ground(picture, box)
    return max((contrast(colour, behind) for count, colour in colours(picture, box) if count >= SURE), default=1)


def outline_contrast(picture, box, reach=3):
    """How well the outline of a part is told from what lies around it: of each side the median along it of the
    strongest pixel within `reach` of the edge; the weakest side counts."""
    behind = ground(picture, _surroundings(box))
    x, y, width, height = box
    corner = 5
    across = range(x + corner, x + width - corner)
    down = range(y + corner, y + height - corner)
    sides = [
        [[(i, y + d) for d in range(reach)] for i in across],
        [[(i, y + height - 1 - d) for d in range(reach)] for i in across],
        [[(x + d, i) for d in range(reach)] for i in down],
        [[(x + width - 1 - d, i) for d in range(reach)] for i in down],
    ]
    return min(_median([max(contrast(picture.getpixel(at), behind) for at in line) for line in side])
               for side in sides if side)


def _surroundings(box):
    """A line above the part."""
    x, y, width, _ = box
    return x, y - 2, width, 1


def _median(values):
    return sorted(values)[len(values) // 2]


def different(one, other):
    """How many pixels two pictures of a size differ in."""
    return sum(a != b for a, b in zip(one.getdata(), other.getdata()))


def changed_mask(one, other, box, least):
    """{(x, y)} of the pixels in a box that differ by at least that contrast between two pictures."""
    a, b = crop(one, box), crop(other, box)
    left, top = max(box[0], 0), max(box[1], 0)
    first, second = a.load(), b.load()
    return {(left + x, top + y) for x in range(a.width) for y in range(a.height)
            if first[x, y] != second[x, y] and contrast(first[x, y], second[x, y]) >= least}


def bounds(mask):
    """The box that all of these pixels lie in."""
    if not mask:
        return 0, 0, 0, 0
    left, top = min(x for x, _ in mask), min(y for _, y in mask)
    return left, top, max(x for x, _ in mask) - left + 1, max(y for _, y in mask) - top + 1


def frame_width(mask):
    """How many pixels wide the frame of changed pixels is, at the weakest of its sides; 0 when it is none."""
    if not mask:
        return 0
    left, top, width, height = bounds(mask)
    right, bottom = left + width - 1, top + height - 1
    across = [left + (right - left) * share // 8 for share in (2, 3, 5, 6)]
    down = [top + (bottom - top) * share // 8 for share in (2, 3, 5, 6)]
    sides = [[_run(mask, x, top, 0, 1) for x in across], [_run(mask, x, bottom, 0, -1) for x in across],
             [_run(mask, left, y, 1, 0) for y in down], [_run(mask, right, y, -1, 0) for y in down]]
    return min(_median(side) for side in sides)


def _run(mask, x, y, step_x, step_y):
    """Changed pixels in a row, from one on the outside inwards."""
    length = 0
    while (x, y) in mask:
        length, x, y = length + 1, x + step_x, y + step_y
    return length
