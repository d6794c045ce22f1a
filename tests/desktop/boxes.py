"""Rectangles on a screen: x, y, width, height."""


def inside(inner, outer):
    return (inner[0] >= outer[0] and inner[1] >= outer[1] and inner[0] + inner[2] <= outer[0] + outer[2]
            and inner[1] + inner[3] <= outer[1] + outer[3])


def in_words(box):
    return f"{box[2]}×{box[3]} at {box[0]},{box[1]}"


def off_middle(inner, outer):
    """How far the middles of two rectangles are apart, across and down."""
    return (abs(2 * inner[0] + inner[2] - 2 * outer[0] - outer[2]) / 2,
            abs(2 * inner[1] + inner[3] - 2 * outer[1] - outer[3]) / 2)
