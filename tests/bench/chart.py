"""Draws the table of figures: a bar for each row against 1.0, which is what it is compared with.

A row without a comparison is compared with its limit.
"""

import re
import textwrap
from html import escape

ROW, BAR, LEFT, WIDTH, SHOWN = 30, 13, 610, 300, 1.6  # the widest bar stands for SHOWN
STYLE = """
  text { font: 13px sans-serif; fill: #1f2328 }
  .value { font-weight: 600 }
  .axis { stroke: #57606a } .goal { stroke: #1f2328; stroke-width: 2 }
  .reached { fill: #2f81a8 } .missed { fill: #c4562a } .busy { opacity: .45 }
  @media (prefers-color-scheme: dark) {
    text { fill: #e6edf3 } .axis { stroke: #8d96a0 } .goal { stroke: #e6edf3 }
  }
"""


def number(text):
    found = re.search(r"\d+(\.\d+)?", text.replace(",", ""))
    return float(found.group()) if found else None


def bars(row):
    """What, the share of each figure of a row, the share of its goal, and whether that is reached; None without such."""
    what, against, goal, measured, reached = (cell.strip() for cell in row.strip("|").split("|"))
    limit = number(goal)
    if limit is None or goal.startswith("R²"):
        return None
    figures = [number(part) for part in measured.split("; with a busy core ")]
    compared = 1.0 if against != "—" else limit
    short = textwrap.shorten(what.replace("`", ""), 88, placeholder=" …")
    return short, [figure / compared for figure in figures], limit / compared, reached


def place(share):
    return LEFT + min(share, SHOWN) / SHOWN * WIDTH


def drawn_row(y, what, shares, goal, reached):
    height = BAR / len(shares)
    parts = [f'<text x="{LEFT - 12}" y="{y + BAR - 2}" text-anchor="end">{escape(what)}</text>']
    for i, share in enumerate(shares):
        kind = reached + (" busy" if i else "")
        parts.append(f'<rect class="{kind}" x="{LEFT}" y="{y + i * height:.1f}" width="{place(share) - LEFT:.1f}" '
                     f'height="{height:.1f}"/>')
    parts.append(f'<path class="goal" d="M{place(goal):.1f} {y - 3}v{BAR + 6}"/>')
    text = " / ".join(f"{share:.2f}" for share in shares)
    parts.append(f'<text class="value" x="{LEFT + WIDTH + 12}" y="{y + BAR - 2}">{text}</text>')
    return parts


def drawn(rows):
    shown = [bar for bar in map(bars, rows) if bar is not None]
    bottom = 40 + ROW * len(shown)
    parts = [f'<text x="{place(1):.1f}" y="16" text-anchor="middle">1.0</text>',
             f'<path class="axis" d="M{LEFT} 24V{bottom}M{place(1):.1f} 24V{bottom}"/>']
    for i, bar in enumerate(shown):
        parts += drawn_row(36 + i * ROW, *bar)
    parts.append(f'<text x="{LEFT - 12}" y="{bottom + 22}" text-anchor="end">shorter is better; the mark is the goal, the paler half of a bar '
                 "with a busy core</text>")
    size = f'width="1020" height="{bottom + 36}" viewBox="0 0 1020 {bottom + 36}"'
    lines = "\n".join(parts)
    return f'<svg xmlns="http://www.w3.org/2000/svg" {size}>\n<style>{STYLE}</style>\n{lines}\n</svg>\n'
