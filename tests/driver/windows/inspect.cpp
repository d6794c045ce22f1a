#include "tests/driver/windows/inspect.h"

#include "tests/driver/windows/common_controls.h"
#include "tests/driver/windows/json.h"
#include "tests/driver/windows/request.h"
#include "tests/driver/windows/screen.h"
#include "tests/driver/windows/text.h"

#include <commctrl.h>

#include <algorithm>
#include <array>
#include <set>

namespace probe {

namespace {

using json::boolean;
using json::number;
using json::quoted;

constexpr int messageText = 0xFFFF; // identifier in a message box

std::string rectangle(const RECT& r) {
    return json::array({number(r.left), number(r.top), number(r.right - r.left), number(r.bottom - r.top)});
}

bool hasStyle(HWND window, LONG_PTR style) {
    return (GetWindowLongPtrW(window, GWL_STYLE) & style) == style;
}

RECT clientOnScreen(HWND window) {
    RECT client{};
    GetClientRect(window, &client);
    MapWindowPoints(window, nullptr, reinterpret_cast<POINT*>(&client), 2);
    return client;
}

/// A picture at the left end of the title bar. Not every system tells the icon's handle to another program.
bool hasIcon(HWND window) {
    constexpr int plain = 8; // colours that a title bar itself may have
    RECT place{};
    GetWindowRect(window, &place);
    place.left += GetSystemMetrics(SM_CXFIXEDFRAME);
    place.top += GetSystemMetrics(SM_CYFIXEDFRAME);
    place.right = place.left + GetSystemMetrics(SM_CXSMICON);
    place.bottom = place.top + GetSystemMetrics(SM_CYSMICON);
    const std::vector<COLORREF> shown = pixels(window, place);
    return std::set<COLORREF>(shown.begin(), shown.end()).size() > plain;
}

bool isModal(HWND window) {
    const HWND owner = GetWindow(window, GW_OWNER);
    return owner != nullptr && IsWindowEnabled(owner) == FALSE;
}

std::string describeWindow(HWND window) {
    return json::object({{"name", quoted(className(window))},
                         {"title", quoted(textOf(window))},
                         {"visible", boolean(IsWindowVisible(window) != FALSE)},
                         {"modal", boolean(isModal(window))},
                         {"active", boolean(GetForegroundWindow() == window)},
                         {"enabled", boolean(IsWindowEnabled(window) != FALSE)},
                         {"minimized", boolean(IsIconic(window) != FALSE)},
                         {"hasIcon", boolean(hasIcon(window))},
                         {"dpi", number(GetDpiForWindow(window))},
                         {"geometry", rectangle(clientOnScreen(window))}});
}

HWND focusOf(HWND window) {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &info);
    return info.hwndFocus;
}

std::vector<std::string> quotedAll(const std::vector<std::wstring>& texts) {
    std::vector<std::string> result;
    for (const std::wstring& text : texts)
        result.push_back(quoted(text));
    return result;
}

void describeButton(HWND button, json::Members& members) {
    members.emplace_back("checked", boolean(ask(button, BM_GETCHECK) == BST_CHECKED));
    const wchar_t letter = mnemonic(textOf(button));
    members.emplace_back("shortcut",
                         quoted(letter == 0 ? std::wstring() : L"Alt+" + std::wstring(1, letter)));
    members.emplace_back("style", number(GetWindowLongPtrW(button, GWL_STYLE) & BS_TYPEMASK));
}

std::wstring entryOf(HWND box, WPARAM index) {
    const LRESULT length = ask(box, CB_GETLBTEXTLEN, index);
    if (length < 0) return {};
    std::wstring text(static_cast<std::size_t>(length) + 1, L'\0');
    ask(box, CB_GETLBTEXT, index, reinterpret_cast<LPARAM>(text.data()));
    text.pop_back();
    return text;
}

void describeComboBox(HWND box, json::Members& members) {
    const auto count = static_cast<WPARAM>(ask(box, CB_GETCOUNT));
    std::vector<std::string> items;
    for (WPARAM i = 0; i < count; ++i)
        items.push_back(quoted(entryOf(box, i)));
    members.emplace_back("items", json::array(items));
    members.emplace_back("index", number(ask(box, CB_GETCURSEL)));
}

void describeTextBox(HWND box, json::Members& members) {
    const auto selection = static_cast<DWORD>(ask(box, EM_GETSEL));
    const std::wstring text = textOf(box);
    const std::size_t begin = LOWORD(selection);
    const std::size_t end = HIWORD(selection);
    members.emplace_back("readOnly", boolean(hasStyle(box, ES_READONLY)));
    members.emplace_back("selectionStart", number(begin == end ? -1 : static_cast<long long>(begin)));
    members.emplace_back("selectedText", quoted(text.substr(std::min(begin, text.size()), end - begin)));
}

void describeList(HWND list, json::Members& members) {
    const ListContents contents = contentsOf(list);
    std::vector<std::string> widths;
    for (const int width : contents.widths)
        widths.push_back(number(width));
    std::vector<std::string> rows;
    for (const auto& cells : contents.rows)
        rows.push_back(json::array(quotedAll(cells)));
    members.emplace_back("headers", json::array(quotedAll(contents.headers)));
    members.emplace_back("columnWidths", json::array(widths));
    members.emplace_back("rows", json::array(rows));
    members.emplace_back("rowToolTips", json::array(quotedAll(contents.rowToolTips)));
    members.emplace_back("row", number(contents.row));
}

std::wstring shownText(HWND control, const std::string& kind) {
    const std::wstring text = textOf(control);
    const bool literal = kind == "Edit" || kind == "ComboBox" || GetAncestor(control, GA_ROOT) == control ||
                         (kind == "Static" && hasStyle(control, SS_NOPREFIX));
    return literal ? text : withoutMnemonic(text);
}

void describeState(HWND control, const std::string& kind, json::Members& members) {
    if (kind == "Button") describeButton(control, members);
    if (kind == "ComboBox") describeComboBox(control, members);
    if (kind == "Edit") describeTextBox(control, members);
    if (kind == "SysListView32") describeList(control, members);
    if (kind == "Static") members.emplace_back("plainText", boolean(hasStyle(control, SS_NOPREFIX)));
}

/// What the program has told the system for screen readers; see provider/accessible_service.h.
std::wstring spoken(HWND control, const wchar_t* property) {
    std::array<wchar_t, 256> text{};
    const auto atom = static_cast<ATOM>(reinterpret_cast<ULONG_PTR>(GetPropW(control, property)));
    const UINT length = atom == 0 ? 0 : GlobalGetAtomNameW(atom, text.data(), text.size());
    return {text.data(), length};
}

void describeSpoken(HWND control, json::Members& members) {
    const auto role = reinterpret_cast<LONG_PTR>(GetPropW(control, L"spoken.role"));
    const auto live = reinterpret_cast<LONG_PTR>(GetPropW(control, L"spoken.live"));
    members.emplace_back("spokenName", quoted(spoken(control, L"spoken.name")));
    members.emplace_back("spokenValue", quoted(spoken(control, L"spoken.value")));
    members.emplace_back("spokenDescription", quoted(spoken(control, L"spoken.description")));
    members.emplace_back("spokenRole", number(role));
    members.emplace_back("spokenLive", number(live));
}

RECT inWindow(RECT onScreen, HWND window) {
    MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&onScreen), 2);
    return onScreen;
}

/// A panel paints itself: a picture, if it has one, and a text beside it, in the colour of disabled ones if
/// it is.
std::string describePanel(const Part& part) {
    const PanelContents contents = contentsOf(part);
    RECT picture = screenRectangle(part);
    const LONG room = MulDiv(32, static_cast<int>(GetDpiForWindow(part.handle)), USER_DEFAULT_SCREEN_DPI);
    RECT text = picture;
    picture.left += room / 4; // behind the line between the panels
    text.left = picture.right = picture.left + room - room / 4;
    return json::object({{"name", quoted(part.name)},
                         {"class", quoted("panel")},
                         {"window", quoted(className(part.window()))},
                         {"text", quoted(contents.text)},
                         {"toolTip", quoted(contents.toolTip)},
                         {"visible", boolean(IsWindowVisible(part.handle) != FALSE)},
                         {"enabled", boolean(!drawnDisabled(pixels(part.handle, text)))},
                         {"focus", boolean(false)},
                         {"hasPicture", boolean(hasPicture(pixels(part.handle, picture)))},
                         {"geometry", rectangle(inWindow(screenRectangle(part), part.window()))}});
}

HWND openMessageBox() {
    for (const HWND window : forms())
        if (isMessageBox(window) && IsWindowEnabled(window) != FALSE) return window;
    return nullptr;
}

HWND iconOf(HWND box) {
    for (HWND child = GetWindow(box, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT))
        if (className(child) == "Static" && IsWindowVisible(child) != FALSE &&
            (GetWindowLongPtrW(child, GWL_STYLE) & SS_TYPEMASK) == SS_ICON)
            return child;
    return nullptr;
}

/// Also a box without one may have a place for it. One that has a picture shows it in the end.
int iconNumber(HWND icon) {
    constexpr int attempts = 100;
    if (icon == nullptr || ask(icon, STM_GETICON) == 0) return 0;
    for (int i = 0; i < attempts; ++i)
        if (const int number = systemIconAt(pixels(icon, clientOnScreen(icon)), clientOnScreen(icon));
            number != 0)
            return number;
    return 0;
}

std::vector<HWND> buttonsOf(HWND box) {
    std::vector<HWND> buttons;
    for (HWND child = GetWindow(box, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT))
        if (className(child) == "Button" && IsWindowVisible(child) != FALSE) buttons.push_back(child);
    return buttons;
}

std::string describeBox(HWND box) {
    std::vector<std::string> captions;
    for (const HWND button : buttonsOf(box))
        captions.push_back(quoted(withoutMnemonic(textOf(button))));
    const HWND text = GetDlgItem(box, messageText);
    const HWND icon = iconOf(box);
    return json::object({{"title", quoted(textOf(box))},
                         {"text", quoted(text == nullptr ? std::wstring() : textOf(text))},
                         {"plainText", boolean(text != nullptr && hasStyle(text, SS_NOPREFIX))},
                         {"icon", number(iconNumber(icon))},
                         {"buttons", json::array(captions)}});
}

/// A window may go while it is being looked at.
std::string unlessGone(HWND window, std::string otherwise, std::string (*describeIt)(HWND)) {
    try {
        return describeIt(window);
    } catch (const Failure&) {
        if (IsWindow(window) != FALSE && IsWindowVisible(window) != FALSE) throw;
        return otherwise;
    }
}

} // namespace

std::string describeWindows() {
    std::vector<std::string> windows;
    for (const HWND window : forms())
        if (!isMessageBox(window)) windows.push_back(unlessGone(window, {}, describeWindow));
    std::erase(windows, std::string());
    return json::array(windows);
}

RECT screenRectangle(const Part& part) {
    RECT rectangle{};
    if (part.panel < 0) {
        GetWindowRect(part.handle, &rectangle);
        return rectangle;
    }
    rectangle = contentsOf(part).rectangle;
    MapWindowPoints(part.handle, nullptr, reinterpret_cast<POINT*>(&rectangle), 2);
    return rectangle;
}

std::string describe(const Part& part) {
    if (part.panel >= 0) return describePanel(part);
    const HWND control = part.handle;
    const std::string kind = className(control);
    json::Members members{{"name", quoted(part.name)},
                          {"class", quoted(kind)},
                          {"window", quoted(className(part.window()))},
                          {"text", quoted(shownText(control, kind))},
                          {"visible", boolean(IsWindowVisible(control) != FALSE)},
                          {"enabled", boolean(IsWindowEnabled(control) != FALSE)},
                          {"focus", boolean(focusOf(control) == control)},
                          {"toolTip", quoted(toolTipOf(control))},
                          {"geometry", rectangle(inWindow(screenRectangle(part), part.window()))}};
    describeState(control, kind, members);
    describeSpoken(control, members);
    return json::object(members);
}

std::string describeMessageBox() {
    const HWND box = openMessageBox();
    return box == nullptr ? std::string(json::null) : unlessGone(box, std::string(json::null), describeBox);
}

HWND messageBoxButton(const std::wstring& caption) {
    if (const HWND box = openMessageBox(); box != nullptr)
        for (const HWND button : buttonsOf(box))
            if (withoutMnemonic(textOf(button)) == caption) return button;
    throw Failure("no message box with that button");
}

} // namespace probe
