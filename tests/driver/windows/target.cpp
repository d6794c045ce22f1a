#include "tests/driver/windows/target.h"

#include "tests/driver/windows/names.h"
#include "tests/driver/windows/request.h"
#include "tests/driver/windows/text.h"

#include <algorithm>
#include <array>

namespace probe {

namespace {

constexpr std::wstring_view programFile = L"orvanta-usbtool.exe";
constexpr UINT patience = 20000; // milliseconds

bool isProgram(DWORD process) {
    const HANDLE handle = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, process);
    if (handle == nullptr) return false;
    std::array<wchar_t, MAX_PATH> path{};
    DWORD length = path.size();
    const bool known = QueryFullProcessImageNameW(handle, 0, path.data(), &length) != FALSE;
    CloseHandle(handle);
    const std::wstring_view text(path.data(), known ? length : 0);
    return text.size() > programFile.size() && text.substr(text.size() - programFile.size()) == programFile;
}

bool belongsToProgram(HWND window) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    return isProgram(process);
}

std::vector<HWND> topLevelWindows() {
    std::vector<HWND> all;
    EnumWindows(
        [](HWND window, LPARAM list) -> BOOL {
            reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&all));
    return all;
}

bool isForm(HWND window) {
    const std::string name = className(window);
    return name == "frmMain" || name == "frmAuswahl" || name == "Form1";
}

/// A panel's name is that of its status bar and a number.
Part panelOf(HWND window, std::string_view name) {
    constexpr std::string_view bar = "StatusBar1";
    if (name.size() != bar.size() + 2 || name.substr(0, bar.size()) != bar || name[bar.size()] != '_')
        return {};
    return {std::string(name), GetDlgItem(window, identifierOf(bar)), name.back() - '1'};
}

Part partOf(HWND window, std::string_view name) {
    if (className(window) == name) return {std::string(name), window};
    if (const Part panel = panelOf(window, name); panel.handle != nullptr) return panel;
    const int identifier = identifierOf(name);
    return {std::string(name), identifier == 0 ? nullptr : GetDlgItem(window, identifier)};
}

} // namespace

HWND mainWindow() {
    const std::vector<HWND> windows = topLevelWindows();
    const auto found = std::find_if(windows.begin(), windows.end(), [](HWND window) {
        return className(window) == "frmMain" && belongsToProgram(window);
    });
    if (found == windows.end()) throw Failure("no main window");
    return *found;
}

std::vector<HWND> programWindows() {
    std::vector<HWND> windows = topLevelWindows();
    std::erase_if(windows,
                  [](HWND window) { return IsWindowVisible(window) == FALSE || !belongsToProgram(window); });
    return windows;
}

std::vector<HWND> otherWindows() {
    std::vector<HWND> windows = topLevelWindows();
    std::erase_if(windows,
                  [](HWND window) { return IsWindowVisible(window) == FALSE || belongsToProgram(window); });
    return windows;
}

std::vector<HWND> forms() {
    std::vector<HWND> windows = programWindows();
    std::erase_if(windows, [](HWND window) { return !isForm(window) && !isMessageBox(window); });
    return windows;
}

bool isMessageBox(HWND window) {
    return className(window) == "#32770";
}

std::string className(HWND window) {
    std::array<wchar_t, 64> name{};
    const int length = GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    return utf8({name.data(), static_cast<std::size_t>(length)});
}

HWND findWindow(std::string_view name) {
    const std::vector<HWND> windows = forms();
    const auto wanted = [name](HWND window) {
        return name.empty() ? IsWindowEnabled(window) != FALSE : className(window) == name;
    };
    const auto found = std::find_if(windows.begin(), windows.end(), wanted);
    if (found != windows.end()) return *found;
    if (!name.empty() || windows.empty()) throw Failure("no window " + std::string(name));
    return windows.front();
}

Part findPart(std::string_view window, std::string_view name) {
    if (const Part part = partOf(findWindow(window), name); part.handle != nullptr) return part;
    if (window.empty())
        for (const HWND other : forms())
            if (const Part part = partOf(other, name); part.handle != nullptr) return part;
    throw Failure("no part of the name " + std::string(name));
}

std::vector<Part> partsOf(HWND window) {
    std::vector<Part> parts;
    for (HWND child = GetWindow(window, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        const std::string name(nameOf(GetDlgCtrlID(child)));
        if (name.empty() || IsWindowVisible(child) == FALSE) continue;
        if (name != "StatusBar1") {
            parts.push_back({name, child});
            continue;
        }
        for (int panel = 0; panel < 2; ++panel)
            parts.push_back({name + "_" + std::to_string(panel + 1), child, panel});
    }
    return parts;
}

LRESULT ask(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    // Wine also returns 0 when it is the answer that is 0, but leaves the error alone then.
    DWORD_PTR result = 0;
    SetLastError(ERROR_SUCCESS);
    if (SendMessageTimeoutW(window, message, wParam, lParam, SMTO_NORMAL, patience, &result) == 0 &&
        GetLastError() != ERROR_SUCCESS)
        throw Failure("a window is gone or does not answer");
    return static_cast<LRESULT>(result);
}

std::wstring textOf(HWND window) {
    constexpr LRESULT longest = 65536;
    const LRESULT length = std::min(ask(window, WM_GETTEXTLENGTH), longest);
    std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
    const LRESULT got = ask(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<std::size_t>(got));
    return text;
}

} // namespace probe
