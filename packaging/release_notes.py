"""Release notes from the log: what was committed since the last release, by the area that each commit names."""

import subprocess


def git(root, *words):
    return subprocess.run(["git", "-C", str(root), *words], check=False, text=True, capture_output=True)


def last_release(root):
    """The tag before the last commit; nothing before the first release."""
    found = git(root, "describe", "--tags", "--abbrev=0", "HEAD^")
    return found.stdout.strip() if found.returncode == 0 else None


def subjects(root, since):
    """The first lines of the commits, the oldest first, without merges."""
    commits = f"{since}..HEAD" if since else "HEAD"
    found = git(root, "log", "--reverse", "--no-merges", "--format=%s", commits)
    if found.returncode != 0:
        raise ValueError(found.stderr.strip())
    return found.stdout.splitlines()


def by_area(lines):
    """{area: [what]} of lines "area: what", the areas by name; those that name none come last."""
    areas = {}
    for line in lines:
        area, colon, what = line.partition(": ")
        areas.setdefault(area if colon else "", []).append(what if colon else line)
    return dict(sorted(areas.items(), key=lambda entry: (entry[0] == "", entry[0])))


def notes(root, version, since=None):
    since = since or last_release(root)
    parts = [f"# Orvanta USB-Stick Internetupdate Tool {version}\n",
             f"Changes since {since}:\n" if since else "All changes:\n"]
    for area, changes in by_area(subjects(root, since)).items():
        parts.append(f"## {area or 'other'}\n")
        parts.append("\n".join(f"- {change}" for change in changes) + "\n")
    return "\n".join(parts)
