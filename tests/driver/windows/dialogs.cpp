#include "tests/driver/windows/dialogs.h"

#include "tests/driver/windows/input.h"
#include "tests/driver/windows/inspect.h"
#include "tests/driver/windows/json.h"
#include "tests/driver/windows/request.h"

#include <algorithm>
#include <vector>

namespace probe {

namespace {

using json::boolean;
using json::number;
using json::quoted;

constexpr int pointsPerInch = 72;

HWND dialog() {
    std::vector<HWND> windows = otherWindows();
    const auto found = std::find_if(windows.begin(), windows.end(), [](HWND window) {
        return className(window) == "#32770" && IsWindowEnabled(window) != FALSE;
    });
    return found == windows.end() ? nullptr : *found;
}

/// Those of pages that lie in the dialog, too.
std::vector<HWND> visibleControls(HWND window) {
    std::vector<HWND> controls;
    EnumChildWindows(
        window,
        [](HWND control, LPARAM list) -> BOOL {
            if (IsWindowVisible(control) != FALSE)
                reinterpret_cast<std::vector<HWND>*>(list)->push_back(control);
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&controls));
    return controls;
}

std::string describeControl(HWND control) {
    const RECT place = screenRectangle({"", control});
    const bool button = className(control) == "Button";
    return json::object({{"class", quoted(className(control))},
                         {"text", quoted(textOf(control))},
                         {"enabled", boolean(IsWindowEnabled(control) != FALSE)},
                         {"checked", boolean(button && ask(control, BM_GETCHECK) == BST_CHECKED)},
                         {"left", number(place.left)},
                         {"top", number(place.top)},
                         {"width", number(place.right - place.left)},
                         {"height", number(place.bottom - place.top)}});
}

std::wstring withoutMark(std::wstring_view caption) {
    std::wstring text(caption);
    std::erase(text, L'&');
    return text;
}

} // namespace

std::string describeDialog() {
    const HWND window = dialog();
    if (window == nullptr) return json::object({{"dialog", std::string(json::null)}});
    std::vector<std::string> controls;
    for (const HWND control : visibleControls(window))
        controls.push_back(describeControl(control));
    return json::object(
        {{"dialog", json::object({{"title", quoted(textOf(window))}, {"controls", json::array(controls)}})}});
}

void pressInDialog(std::wstring_view caption) {
    const HWND window = dialog();
    if (window == nullptr) throw Failure("no dialog");
    for (const HWND control : visibleControls(window)) {
        if (className(control) != "Button" || withoutMark(textOf(control)) != withoutMark(caption)) continue;
        clickPart({"", control}, 1);
        return;
    }
    throw Failure("no button of that caption");
}

std::string textSize(std::wstring_view text, int width, int points, bool bold) {
    const HDC screen = GetDC(nullptr);
    const int height = -MulDiv(points, GetDeviceCaps(screen, LOGPIXELSY), pointsPerInch);
    const HFONT font =
        CreateFontW(height, 0, 0, 0, bold ? FW_BOLD : FW_NORMAL, FALSE, FALSE, FALSE, DEFAULT_CHARSET,
                    OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY, DEFAULT_PITCH, L"Tahoma");
    const HGDIOBJ before = SelectObject(screen, font);
    RECT needed{0, 0, width, 0};
    DrawTextW(screen, text.data(), static_cast<int>(text.size()), &needed, DT_CALCRECT | DT_WORDBREAK);
    SelectObject(screen, before);
    DeleteObject(font);
    ReleaseDC(nullptr, screen);
    return json::object({{"width", number(needed.right)}, {"height", number(needed.bottom)}});
}

} // namespace probe
