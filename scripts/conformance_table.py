#!/usr/bin/env python3
"""Tables what the conformance tests came to on both backends, from GoogleTest's XML results.

scripts/conformance_table.py --write|--check PAGE LINUX_RESULTS WINDOWS_RESULTS

The results are folders of XML files. --check fails when the page differs from what it would be. Both fail when a
function of Windows that the program stands on is not called by its service, or has no case that passed.
"""

import pathlib
import re
import sys
import xml.etree.ElementTree

ROOT = pathlib.Path(__file__).resolve().parent.parent

INTRODUCTION = """\
# The services on both systems

Every case of `tests/conformance/*_test.cpp` and what it came to: on Linux against the services of `platform/linux`, on
Windows against those of `platform/windows`, that is, the system's own functions, run under Wine. Written by
`tests/wine/run --update`; `./test windows` checks that it is current. A number tells how many parameters a case ran
with. Where a system is known to answer otherwise than documented, the expectation is left out on it, and a note says
so. What the profile code of Linux does otherwise on purpose is listed in
[profile-differences.md](profile-differences.md).

The cases of `tests/conformance/linux` and `tests/conformance/windows` ask what one system alone can answer. Those of
Windows follow below the services, and then the functions that the services of Windows call, each with a case that
calls it. Message boxes, keys, lists and the other controls are asked by `tests/window`, on the program itself.
"""

# The function, the source in platform/windows that calls it, and a case that needs it.
FUNCTIONS = [
    ("InternetOpenA", "http", "Http.AgentTextIsSent"),
    ("InternetOpenUrlA", "http", "Http.ReloadAsksPastEveryCache"),
    ("InternetQueryDataAvailable", "http", "Http.SlowServerFillsTheBufferAllTheSame"),
    ("InternetReadFile", "http", "Http.EveryReadIsFullButTheLast"),
    ("InternetCloseHandle", "http", "Http.RequestThatIsClosedInMidFile"),
    ("GetLogicalDriveStringsA", "volumes", "Volumes.SixteenRootsDoNotFitInto64Characters"),
    ("GetDriveTypeA", "volumes", "Volumes.Types"),
    ("GetDiskFreeSpaceExA", "volumes", "Volumes.SizesAreThoseOfTheFolder"),
    ("GetVolumeInformationA", "volumes", "Volumes.LabelComesBackAsItWasSet"),
    ("SetVolumeLabelA", "volumes", "Volumes.LabelComesBackAsItWasSet"),
    ("FindFirstFileA", "file_search", "Search.AllOfTheRoot"),
    ("FindNextFileA", "file_search", "Search.ManyEntries"),
    ("FindClose", "file_search", "Search.MayBeLeftInTheMiddle"),
    ("GetFileAttributesA", "path", "Files.AReadOnlyFileHasTheReadOnlyBit"),
    ("CreateFileA", "files", "Files.WritesBytesAsTheyAre"),
    ("WriteFile", "files", "Files.WritesBytesAsTheyAre"),
    ("FlushFileBuffers", "files", "Files.WritesBytesAsTheyAre"),
    ("NtCreateFile", "path", "Files.TheDriveThatIsMeantIsWritten"),
    ("SetFileInformationByHandle", "files", "Files.ACopyReplacesAReadOnlyFile"),
    ("DeleteFileA", "files", "Files.DeletesFilesAlone"),
    ("GetPrivateProfileSectionA", "profile", "Profile.ASectionIsItsLines"),
    ("GetPrivateProfileSectionNamesA", "profile", "Profile.ACompleteAnswerLeavesTwoCharactersFree"),
    ("WritePrivateProfileStringA", "profile", "Profile.WritingMakesTheFile"),
    ("CreatePipe", "process", "Pipe.IsEmptyAtFirst"),
    ("CreateProcessA", "process", "Process.ArgumentsArriveOneByOne"),
    ("PeekNamedPipe", "process", "Process.OutputWaitsInThePipeWhenTheProgramHasEnded"),
    ("ReadFile", "process", "Process.OutputThatIsLargerThanAnyPipe"),
    ("WaitForSingleObject", "process", "Process.RunningProgramHasNotEndedAndIsEndedWithItsObject"),
    ("SendInput", "keystrokes", "Keystroke.ReachesTheProgramsWindow"),
    ("CloseHandle", "unique_handle", "Process.RunningProgramHasNotEndedAndIsEndedWithItsObject"),
    ("SetWindowLongPtrA", "device_events", "DeviceEvents.MessagesGoThroughTheProcedureAndOn"),
    ("CallWindowProcA", "device_events", "DeviceEvents.MessagesGoThroughTheProcedureAndOn"),
    ("SendMessageA", "device_events", "DeviceEvents.MessagesGoThroughTheProcedureAndOn"),
    ("GetDesktopWindow", "shell", "ShellStart.ADocumentIsOpenedByItsProgram"),
    ("ShellExecuteA", "shell", "ShellStart.ADocumentIsOpenedByItsProgram"),
    ("OpenAs_RunDLL", "shell", "ShellStart.TheChooserIsStarted"),
    ("Shell_NotifyIconA", "notify_icon", "NotificationArea.AnIconIsAddedChangedAndRemoved"),
    ("RegOpenKeyExA", "registry", "Registry.AMissingKeyIsNotFound"),
    ("RegCreateKeyExA", "registry", "Registry.CreatingTellsWhetherTheKeyWasThere"),
    ("RegFlushKey", "registry", "Registry.FlushingSucceeds"),
    ("RegCloseKey", "registry", "Registry.OpenHandlesAreCounted"),
    ("RegDeleteKeyA", "registry", "Registry.AKeyWithSubkeysIsNotDeleted"),
    ("RegDeleteValueA", "registry", "Registry.DeletingAMissingValueIsNotFound"),
    ("RegSetValueExA", "registry", "Registry.AValueComesBackAsItWasSet"),
    ("RegQueryValueExA", "registry", "Registry.ASmallBufferIsToldTheSizeThatWouldDo"),
    ("ADsGetObject", "accounts", "Accounts.MissingGroupHasNoMembersList"),
]


class Case:
    """One test case, all its parameters together."""

    def __init__(self):
        self.outcomes = []
        self.notes = []
        self.figures = {}

    def add(self, element):
        if element.find("failure") is not None:
            self.outcomes.append("failed")
        elif element.get("result") == "skipped" or element.find("skipped") is not None:
            self.outcomes.append("skipped")
        else:
            self.outcomes.append("passed")
        for note in element.iter("property"):
            if not note.get("name").startswith("known_difference"):
                self.figures[note.get("name")] = note.get("value")
            elif note.get("value") not in self.notes:
                self.notes.append(note.get("value"))

    def outcome(self):
        worst = next(o for o in ("failed", "skipped", "passed") if o in self.outcomes)
        return f"{worst} ({len(self.outcomes)})" if len(self.outcomes) > 1 else worst

    def passed(self):
        return set(self.outcomes) == {"passed"}


def test_of(element):
    """(folder, name) of the test source, the folder "" for one that both systems share; None for any other."""
    match = re.search(r"tests[/\\]conformance[/\\](?:(windows|linux)[/\\])?(\w+)_test\.cpp$", element.get("file", ""))
    return match and (match[1] or "", match[2])


def read(folder):
    """{(folder, name): {case name: Case}}"""
    tests = {}
    for file in sorted(pathlib.Path(folder).glob("*.xml")):
        for element in xml.etree.ElementTree.parse(file).iter("testcase"):
            test = test_of(element)
            if test:
                name = re.sub(r"/\d+$", "", f"{element.get('classname')}.{element.get('name')}")
                tests.setdefault(test, {}).setdefault(name, Case()).add(element)
    return tests


class Page:
    def __init__(self, linux, windows):
        self.linux, self.windows = linux, windows
        self.notes = []
        self.lines = []

    def cell(self, cases, name):
        if name not in cases:
            return "missing"
        text = cases[name].outcome()
        for note in cases[name].notes:
            if note not in self.notes:
                self.notes.append(note)
            text += f", but for [{self.notes.index(note) + 1}](#known-differences)"
        return text + "".join(f", {value} {name}" for name, value in cases[name].figures.items())

    def service(self, test):
        linux, windows = self.linux.get(test, {}), self.windows.get(test, {})
        self.lines += [f"## {test[1]}", "", "| case | Linux | Windows |", "|---|---|---|"]
        for name in list(linux) + [name for name in windows if name not in linux]:
            self.lines.append(f"| `{name}` | {self.cell(linux, name)} | {self.cell(windows, name)} |")
        self.lines.append("")

    def windows_alone(self):
        self.lines += ["## Windows alone", "", "| test | case | Windows |", "|---|---|---|"]
        for test in sorted(test for test in self.windows if test[0]):
            for name in self.windows[test]:
                self.lines.append(f"| {test[1]} | `{name}` | {self.cell(self.windows[test], name)} |")
        self.lines.append("")

    def functions(self):
        cases = {name: case for test in self.windows.values() for name, case in test.items()}
        self.lines += ["## Functions of Windows", "", "| function | called in | case |", "|---|---|---|"]
        for function, source, case in FUNCTIONS:
            result = cases[case].outcome() if case in cases else "missing"
            self.lines.append(f"| `{function}` | `{source}` | `{case}`: {result} |")
        self.lines.append("")

    def text(self):
        for test in sorted(test for test in set(self.linux) | set(self.windows) if not test[0]):
            self.service(test)
        self.windows_alone()
        self.functions()
        self.lines += ["## Known differences", ""]
        self.lines += [f"{number}. {note}" for number, note in enumerate(self.notes, 1)]
        return INTRODUCTION + "\n" + "\n".join(self.lines) + "\n"


def uncovered(windows):
    """What is wrong with FUNCTIONS, in words."""
    passed = {name for test in windows.values() for name, case in test.items() if case.passed()}
    for function, source, case in FUNCTIONS:
        sources = [ROOT / "platform" / "windows" / (source + suffix) for suffix in (".cpp", ".h")]
        if not any(re.search(rf"\b{function}\b", file.read_text()) for file in sources if file.exists()):
            yield f"{function} is not called in platform/windows/{source}"
        if case not in passed:
            yield f"{function}: {case} did not pass"


def main(mode, path, linux, windows):
    linux, windows = read(linux), read(windows)
    wrong = list(uncovered(windows))
    print("".join(line + "\n" for line in wrong), end="", file=sys.stderr)
    text = Page(linux, windows).text()
    file = pathlib.Path(path)
    if mode == "--write":
        file.write_text(text, encoding="utf-8")
    elif not file.exists() or file.read_text(encoding="utf-8") != text:
        wrong.append(path)
        print(f"{path} is not current: tests/wine/run --update", file=sys.stderr)
    return 1 if wrong else 0


if __name__ == "__main__":
    if len(sys.argv) != 5 or sys.argv[1] not in ("--write", "--check"):
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
