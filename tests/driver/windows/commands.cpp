#include "tests/driver/windows/commands.h"

#include "tests/driver/windows/command_line.h"
#include "tests/driver/windows/dialogs.h"
#include "tests/driver/windows/drives.h"
#include "tests/driver/windows/input.h"
#include "tests/driver/windows/inspect.h"
#include "tests/driver/windows/json.h"
#include "tests/driver/windows/names.h"
#include "tests/driver/windows/said.h"
#include "tests/driver/windows/screen.h"
#include "tests/driver/windows/text.h"
#include "tests/support/wine_drives.h"

#include <commctrl.h>
#include <tlhelp32.h>

#include <algorithm>
#include <map>
#include <sstream>

namespace probe {

namespace {

const std::string done = "{}";

Part partOf(const Request& request) {
    return findPart(request.text("window"), request.text("name"));
}

std::string listWindows(const Request&) {
    return json::object({{"windows", describeWindows()}});
}

std::string get(const Request& request) {
    return json::object({{"part", describe(partOf(request))}});
}

std::string all(const Request& request) {
    std::vector<std::string> parts;
    for (const Part& part : partsOf(findWindow(request.text("window"))))
        parts.push_back(describe(part));
    return json::object({{"parts", json::array(parts)}});
}

std::string click(const Request& request) {
    clickPart(partOf(request), request.number("clicks", 1));
    return done;
}

std::string clickListRow(const Request& request) {
    clickRow(partOf(request).handle, request.number("row"), request.number("clicks", 1));
    return done;
}

/// Steps of a mouse over one part: "press 3 4 move 10 4 release 10 4".
std::string mouse(const Request& request) {
    std::istringstream words(request.text("steps"));
    std::vector<MouseStep> steps;
    std::string what;
    MouseStep step;
    while (words >> what >> step.point.x >> step.point.y) {
        step.action = what == "press"     ? MouseAction::Press
                      : what == "release" ? MouseAction::Release
                                          : MouseAction::Move;
        steps.push_back(step);
    }
    moveMouse(partOf(request), steps, request.text("button") == "right");
    return done;
}

std::string choose(const Request& request) {
    chooseEntry(partOf(request).handle, request.number("index"));
    return done;
}

std::string giveFocus(const Request& request) {
    focus(partOf(request).handle);
    return done;
}

/// Types a text, then presses keys, which blanks separate.
std::string type(const Request& request) {
    typeText(wide(request.text("text")));
    std::istringstream keys(request.text("keys"));
    for (std::string key; keys >> key;)
        pressKey(key);
    return done;
}

std::string composeText(const Request& request) {
    compose(wide(request.text("text")));
    return done;
}

std::string messageBox(const Request&) {
    return json::object({{"box", describeMessageBox()}});
}

std::string answer(const Request& request) {
    clickPart({"", messageBoxButton(wide(request.text("button")))}, 1);
    return done;
}

/// The close box; for a window that another one blocks, what a task manager sends.
std::string close(const Request& request) {
    const HWND window = findWindow(request.text("window"));
    if (IsWindowEnabled(window) != FALSE)
        PostMessageW(window, WM_SYSCOMMAND, SC_CLOSE, 0);
    else
        PostMessageW(window, WM_CLOSE, 0, 0);
    return done;
}

std::string resize(const Request& request) {
    const HWND window = findWindow(request.text("window"));
    RECT frame{};
    RECT client{};
    GetWindowRect(window, &frame);
    GetClientRect(window, &client);
    SetWindowPos(window, nullptr, 0, 0, frame.right - frame.left - client.right + request.number("width"),
                 frame.bottom - frame.top - client.bottom + request.number("height"),
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    return done;
}

std::string minimize(const Request& request) {
    PostMessageW(findWindow(request.text("window")), WM_SYSCOMMAND, SC_MINIMIZE, 0);
    return done;
}

/// How long the window takes to answer at the worst, asked again and again for that many milliseconds.
std::string longestAnswer(const Request& request) {
    constexpr UINT patience = 60'000;
    const HWND window = findWindow(request.text("window"));
    const ULONGLONG end = GetTickCount64() + static_cast<ULONGLONG>(request.number("milliseconds"));
    ULONGLONG longest = 0;
    while (GetTickCount64() < end) {
        const ULONGLONG asked = GetTickCount64();
        DWORD_PTR answer = 0;
        SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_NORMAL, patience, &answer);
        longest = std::max(longest, GetTickCount64() - asked);
        Sleep(20);
    }
    return json::object({{"milliseconds", json::number(static_cast<long>(longest))}});
}

std::string clipboard(const Request& request) {
    const std::wstring text = wide(request.text("text"));
    const std::size_t size = (text.size() + 1) * sizeof(wchar_t);
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, size);
    std::copy_n(text.c_str(), text.size() + 1, static_cast<wchar_t*>(GlobalLock(memory)));
    GlobalUnlock(memory);
    if (OpenClipboard(GetDesktopWindow()) == FALSE) throw Failure("the clipboard is in use");
    EmptyClipboard();
    SetClipboardData(CF_UNICODETEXT, memory);
    CloseClipboard();
    return done;
}

/// The session ends, as Windows tells every window of the program that is not owned by another.
std::string endSession(const Request&) {
    const HWND window = mainWindow();
    const LRESULT agreed = ask(window, WM_QUERYENDSESSION);
    SendNotifyMessageW(window, WM_ENDSESSION, static_cast<WPARAM>(agreed), 0);
    return json::object({{"agreed", json::boolean(agreed != 0)}});
}

std::string deviceMessage(const Request& request) {
    const HWND window = mainWindow();
    const auto event = static_cast<WPARAM>(request.number("event"));
    const std::string letters = request.text("letters");
    if (!letters.empty())
        sendVolumeEvent(window, event, letters);
    else
        PostMessageW(window, WM_DEVICECHANGE, event, 0);
    return done;
}

std::string menu(const Request& request) {
    const int identifier = identifierOf(request.text("name"));
    if (identifier == 0) throw Failure("no menu item of that name");
    PostMessageW(mainWindow(), WM_COMMAND, static_cast<WPARAM>(identifier), 0);
    return done;
}

std::string defineDrives(const Request& request) {
    const std::string letter = request.text("letter");
    if (letter.size() == 1 && request.has("folder"))
        wine::defineDrive(letter[0], static_cast<ULONG>(request.number("type")), request.text("folder"));
    else if (letter.size() == 1)
        wine::undefineDrive(letter[0]);
    return json::object({{"letters", json::quoted(driveLetters())}});
}

/// The names of all processes' files.
std::string processes(const Request&) {
    std::vector<std::string> names;
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32FirstW(snapshot, &entry); more != FALSE;
         more = Process32NextW(snapshot, &entry))
        names.push_back(json::quoted(std::wstring_view(entry.szExeFile)));
    CloseHandle(snapshot);
    return json::object({{"names", json::array(names)}});
}

/// The user's settings change: what stands between a number's whole part and the rest.
std::string decimalSeparator(const Request& request) {
    const std::wstring text = wide(request.text("text"));
    if (SetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, text.c_str()) == FALSE)
        throw Failure("the separator cannot be set");
    return done;
}

/// The colours that there are in a part, each with the number of its pixels.
std::string colors(const Request& request) {
    std::map<COLORREF, long long> counts;
    const Part part = partOf(request);
    for (const COLORREF color : pixels(part.handle, screenRectangle(part)))
        ++counts[color];
    std::vector<std::string> list;
    for (const auto& [color, count] : counts)
        list.push_back(json::array({json::number(GetRValue(color)), json::number(GetGValue(color)),
                                    json::number(GetBValue(color)), json::number(count)}));
    return json::object({{"colors", json::array(list)}});
}

/// The tool tip that is on the screen; empty when there is none.
std::string shownToolTip(const Request&) {
    std::wstring text;
    for (const HWND window : programWindows())
        if (className(window) == TOOLTIPS_CLASSA) text = textOf(window);
    return json::object({{"text", json::quoted(text)}});
}

/// Name and text of the parts that screen readers were to say since this was asked last.
std::string said(const Request&) {
    std::vector<std::string> list;
    for (const Said& one : takeSaid())
        list.push_back(json::array({json::quoted(one.name), json::quoted(one.text)}));
    return json::object({{"said", json::array(list)}});
}

/// Class and title of the windows that other programs show; `close` asks them to go.
std::string others(const Request& request) {
    std::vector<std::string> list;
    for (const HWND window : otherWindows()) {
        list.push_back(json::array({json::quoted(className(window)), json::quoted(textOf(window))}));
        if (request.has("close")) PostMessageW(window, WM_CLOSE, 0, 0);
    }
    return json::object({{"windows", json::array(list)}});
}

std::string run(const Request& request) {
    return runCommandLine(wide(request.text("command")), request.has("plain"));
}

std::string start(const Request& request) {
    return startCommandLine(wide(request.text("command")), request.has("plain"));
}

/// Has a file open that nobody else can delete or replace then, until the next request of the kind; none
/// without a name.
std::string hold(const Request& request) {
    static HANDLE held = INVALID_HANDLE_VALUE;
    if (held != INVALID_HANDLE_VALUE) CloseHandle(held);
    held = INVALID_HANDLE_VALUE;
    if (!request.has("file")) return done;
    held = CreateFileW(wide(request.text("file")).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                       OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (held == INVALID_HANDLE_VALUE) throw Failure("the file cannot be opened");
    return done;
}

std::string dialog(const Request&) {
    return describeDialog();
}

std::string press(const Request& request) {
    pressInDialog(wide(request.text("button")));
    return done;
}

std::string measure(const Request& request) {
    return textSize(wide(request.text("text")), request.number("width"), request.number("points"),
                    request.has("bold"));
}

} // namespace

std::string perform(const Request& request) {
    static const std::map<std::string, std::string (*)(const Request&), std::less<>> commands = {
        {"windows", listWindows},
        {"get", get},
        {"all", all},
        {"click", click},
        {"clickRow", clickListRow},
        {"mouse", mouse},
        {"choose", choose},
        {"focus", giveFocus},
        {"type", type},
        {"compose", composeText},
        {"messageBox", messageBox},
        {"answer", answer},
        {"close", close},
        {"resize", resize},
        {"minimize", minimize},
        {"longestAnswer", longestAnswer},
        {"clipboard", clipboard},
        {"endSession", endSession},
        {"deviceMessage", deviceMessage},
        {"menu", menu},
        {"drives", defineDrives},
        {"colors", colors},
        {"shownToolTip", shownToolTip},
        {"decimalSeparator", decimalSeparator},
        {"said", said},
        {"others", others},
        {"processes", processes},
        {"run", run},
        {"start", start},
        {"hold", hold},
        {"dialog", dialog},
        {"press", press},
        {"textSize", measure},
    };
    const auto command = commands.find(request.what());
    if (command == commands.end()) throw Failure("unknown request");
    return command->second(request);
}

} // namespace probe
