#!/usr/bin/env python3
"""Tables what the conformance tests came to on both backends, from GoogleTest's XML results.

scripts/conformance_table.py --write|--check PAGE LINUX_RESULTS WINDOWS_RESULTS

The results are folders of XML files. --check fails when the page differs from what it would be.
"""

import pathlib
import re
import sys
import xml.etree.ElementTree

INTRODUCTION = """\
# The services on both systems

Every case of `tests/conformance/*_test.cpp` and what it came to: on Linux against the services of `platform/linux`, on
Windows against those of `platform/windows`, that is, the system's own functions, run under Wine. Written by
`tests/windows/run --update`; `./test windows` checks that it is current. A number tells how many parameters a case ran
with. Where a system is known to answer otherwise than documented, the expectation is left out on it, and a note says so.
What the profile code of Linux does otherwise on purpose is listed in [profile-differences.md](profile-differences.md).
"""


class Case:
    """One test case, all its parameters together."""

    def __init__(self):
        self.outcomes = []
        self.notes = []

    def add(self, element):
        if element.find("failure") is not None:
            self.outcomes.append("failed")
        elif element.get("result") == "skipped" or element.find("skipped") is not None:
            self.outcomes.append("skipped")
        else:
            self.outcomes.append("passed")
        for note in element.iter("property"):
            if note.get("name").startswith("known_difference") and note.get("value") not in self.notes:
                self.notes.append(note.get("value"))

    def outcome(self):
        worst = next(o for o in ("failed", "skipped", "passed") if o in self.outcomes)
        return f"{worst} ({len(self.outcomes)})" if len(self.outcomes) > 1 else worst


def service_of(element):
    """Name of the shared test source, without "_test.cpp"; None for a case that one system has alone."""
    match = re.search(r"tests[/\\]conformance[/\\](\w+)_test\.cpp$", element.get("file", ""))
    return match and match[1]


def read(folder):
    """{service: {case name: Case}}"""
    services = {}
    for file in sorted(pathlib.Path(folder).glob("*.xml")):
        for element in xml.etree.ElementTree.parse(file).iter("testcase"):
            service = service_of(element)
            if not service:
                continue
            name = re.sub(r"/\d+$", "", f"{element.get('classname')}.{element.get('name')}")
            services.setdefault(service, {}).setdefault(name, Case()).add(element)
    return services


def section(service, linux, windows, notes):
    lines = [f"## {service}", "", "| case | Linux | Windows |", "|---|---|---|"]
    for name in list(linux) + [name for name in windows if name not in linux]:
        cells = [cases[name].outcome() if name in cases else "missing" for cases in (linux, windows)]
        for note in windows[name].notes if name in windows else []:
            if note not in notes:
                notes.append(note)
            cells[1] += f", but for [{notes.index(note) + 1}](#known-differences)"
        lines.append(f"| `{name}` | {cells[0]} | {cells[1]} |")
    return lines + [""]


def page(linux, windows):
    notes = []
    lines = []
    for service in sorted(set(linux) | set(windows)):
        lines += section(service, linux.get(service, {}), windows.get(service, {}), notes)
    lines += ["## Known differences", ""]
    lines += [f"{number}. {note}" for number, note in enumerate(notes, 1)]
    return INTRODUCTION + "\n" + "\n".join(lines) + "\n"


def main(mode, path, linux, windows):
    text = page(read(linux), read(windows))
    file = pathlib.Path(path)
    if mode == "--write":
        file.write_text(text, encoding="utf-8")
        return 0
    if file.exists() and file.read_text(encoding="utf-8") == text:
        return 0
    print(f"{path} is not current: tests/windows/run --update", file=sys.stderr)
    return 1


if __name__ == "__main__":
    if len(sys.argv) != 5 or sys.argv[1] not in ("--write", "--check"):
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
