#!/usr/bin/env python3
"""Who may include whom: no source includes a header of a folder that stands above its own, and no unit, a header and
its source, is part of a circle of includes. The table of docs/architecture.md has to be this one.

    check_layers.py [FOLDER]     the repository, unless another folder is given
"""

import re
import sys
from pathlib import Path

ROOMS = "platform/linux/"

# From the roof to the ground: a folder, and the folders that its sources may include besides their own. The first
# folder that a path begins with is its own, so a backend stands in front of the seam that it is in.
LAYERS = {
    "app": ["job", "format", "drive", "online", "widgets", "window", "toolkit", "platform", "base"],
    "job": ["drive", "online", "widgets", "window", "toolkit", "platform", "base"],
    "format": ["drive", "online", "widgets", "window", "toolkit", "platform", "base"],
    "drive": ["online", "widgets", "window", "toolkit", "platform", "base"],
    "online": ["window", "toolkit", "platform", "base"],
    "widgets": ["window", "toolkit", "platform", "base"],
    "window": ["toolkit", "platform", "base"],
    "toolkit/qt": ["toolkit", "platform", "base"],
    "toolkit/win32": ["toolkit", "platform", "base"],
    "platform/linux/process": [ROOMS + "files", ROOMS + "drives", ROOMS + "base", "platform", "base"],
    "platform/linux/registry": [ROOMS + "files", ROOMS + "drives", ROOMS + "base", "platform", "base"],
    "platform/linux/files": [ROOMS + "drives", ROOMS + "base", "platform", "base"],
    "platform/linux/drives": [ROOMS + "base", "platform", "base"],
    "platform/linux/base": ["platform", "base"],
    "platform/linux": [ROOMS + "process", ROOMS + "registry", ROOMS + "files", ROOMS + "drives", ROOMS + "base",
                       "platform", "base"],
    "platform/windows": ["platform", "base"],
    "toolkit": ["base"],
    "platform": ["base"],
    "base": [],
    "tools/fat32format/linux": ["tools/fat32format", ROOMS + "base", "base"],
    "tools/fat32format/windows": ["tools/fat32format", "platform/windows", "base"],
    "tools/fat32format": ["base"],
    "tests/fake": ["toolkit", "platform", "base"],
}

# The portable folders, which know no system and no toolkit of one.
PORTABLE = {"app", "job", "format", "drive", "online", "widgets", "window", "toolkit", "platform", "base",
            "tools/fat32format"}

# What the build makes for all of them, as if it lay in `base`.
GENERATED = {"build_choices.h"}

SOURCES = (".h", ".cpp")
INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]', re.MULTILINE)
STANDARD = re.compile(r"[a-z0-9_]+")  # <string>, <cmath>; what is a system's has a dot, a folder or a capital
CONDITIONAL = re.compile(r"^\s*#\s*(if|ifdef|ifndef|elif)\b", re.MULTILINE)


def layer_of(path):
    """The folder of the table that a path is in; None for what the table does not speak of."""
    return next((layer for layer in LAYERS if path.startswith(layer + "/")), None)


def allowed(path, header):
    own, other = layer_of(path), layer_of(header)
    if own == other or header in GENERATED:
        return True
    if other is None:  # what the build makes has no folder
        return "/" not in header and own not in PORTABLE
    return any(header.startswith(folder + "/") and (other == folder or folder.startswith(other + "/"))
               for folder in LAYERS[own])


def read(root):
    """Path and text of each source that the table speaks of."""
    found = {}
    for top in sorted({layer.split("/")[0] for layer in LAYERS}):
        for path in sorted((root / top).rglob("*")):
            name = path.relative_to(root).as_posix()
            if path.suffix in SOURCES and layer_of(name):
                found[name] = path.read_text(encoding="utf-8")
    return found


def wrong_includes(sources):
    for path, text in sources.items():
        for quote, header in INCLUDE.findall(text):
            if quote == '"' and not allowed(path, header):
                yield f"{path} includes {header}: {layer_of(path)} is not above {layer_of(header) or 'it'}"
            if quote == "<" and layer_of(path) in PORTABLE and not STANDARD.fullmatch(header):
                yield f"{path} includes {header}: {layer_of(path)} knows no system"
        if layer_of(path) in PORTABLE and CONDITIONAL.search(text):
            yield f"{path} is compiled otherwise under a condition: the build alone chooses a backend"


def unit_of(path):
    return path.rsplit(".", 1)[0]


def graph_of(sources):
    graph = {unit_of(path): set() for path in sources}
    for path, text in sources.items():
        for _, header in INCLUDE.findall(text):
            if header in sources and unit_of(header) != unit_of(path):
                graph[unit_of(path)].add(unit_of(header))
    return graph


def circles(graph):
    """The units that include each other, directly or by way of others: strongly connected ones, by Tarjan's way."""
    number, lowest, path, found = {}, {}, [], []

    def visit(unit):
        number[unit] = lowest[unit] = len(number)
        path.append(unit)
        for other in sorted(graph[unit]):
            if other not in number:
                visit(other)
                lowest[unit] = min(lowest[unit], lowest[other])
            elif other in path:
                lowest[unit] = min(lowest[unit], number[other])
        if lowest[unit] == number[unit]:
            at = path.index(unit)
            if len(path) - at > 1:
                found.append(sorted(path[at:]))
            del path[at:]

    sys.setrecursionlimit(10000)
    for unit in sorted(graph):
        if unit not in number:
            visit(unit)
    return found


def table_of(document):
    """The table whose head is "folder" and "may include"."""
    table = {}
    inside = False
    for line in document.splitlines():
        cells = [cell.strip() for cell in line.strip().strip("|").split("|")]
        if cells[:2] == ["folder", "may include"]:
            inside = True
        elif not line.startswith("|"):
            inside = False
        elif inside and not set(cells[0]) <= {"-"}:
            folders = re.findall(r"`([^`]+)`", cells[1])
            for folder in re.findall(r"`([^`]+)`", cells[0]):
                table[folder] = folders
    return table


def wrong_table(document):
    table = table_of(document)
    for folder in sorted(LAYERS.keys() | table.keys()):
        if set(table.get(folder, ["not there"])) != set(LAYERS.get(folder, ["not there"])):
            yield f"docs/architecture.md says of {folder}: {table.get(folder)}; the check: {LAYERS.get(folder)}"


def main(root):
    sources = read(root)
    problems = list(wrong_includes(sources))
    problems += ["a circle of includes: " + ", ".join(circle) for circle in circles(graph_of(sources))]
    problems += wrong_table((root / "docs/architecture.md").read_text(encoding="utf-8"))
    print("\n".join(problems) if problems else f"layers: {len(sources)} sources.")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parents[1]))
