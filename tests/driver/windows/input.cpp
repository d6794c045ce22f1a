#include "tests/driver/windows/input.h"

#include "tests/driver/windows/common_controls.h"
#include "tests/driver/windows/inspect.h"
#include "tests/driver/windows/request.h"

#include <functional>

namespace probe {

namespace {

constexpr DWORD patience = 3000; // milliseconds
constexpr DWORD pause = 2;

/// Waits for what the program does with the input, and tells whether it did.
bool waitFor(const std::function<bool()>& condition, DWORD milliseconds = patience) {
    const ULONGLONG end = GetTickCount64() + milliseconds;
    while (!condition()) {
        if (GetTickCount64() >= end) return false;
        Sleep(pause);
    }
    return true;
}

/// Moves the mouse to a point of the screen, and presses or releases a button there. It is one event, because
/// the window under the mouse may just be telling where it saw it before.
void sendMouse(POINT point, DWORD flags = 0) {
    constexpr LONG whole = 65536;
    const LONG width = GetSystemMetrics(SM_CXSCREEN);
    const LONG height = GetSystemMetrics(SM_CYSCREEN);
    INPUT input{};
    input.type = INPUT_MOUSE;
    input.mi.dx = (point.x * whole + width - 1) / width;
    input.mi.dy = (point.y * whole + height - 1) / height;
    input.mi.dwFlags = MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE | flags;
    SendInput(1, &input, sizeof input);
}

HWND captureOf(HWND window) {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &info);
    return info.hwndCapture;
}

/// A button holds the mouse while it is pressed and lets it go before it tells that it was clicked, without
/// looking for messages in between. So whatever is asked of the program after that is answered after the
/// click.
bool holdsMouse(HWND control) {
    return className(control) == "Button" && IsWindowEnabled(control) != FALSE &&
           (GetWindowLongPtrW(control, GWL_STYLE) & BS_TYPEMASK) != BS_GROUPBOX;
}

bool pressed(HWND control, DWORD milliseconds) {
    return waitFor([control] { return captureOf(control) == control; }, milliseconds);
}

/// The thread of the window looks for messages.
bool answers(HWND window) {
    constexpr UINT soon = 200; // milliseconds
    DWORD_PTR result = 0;
    SetLastError(ERROR_SUCCESS);
    return SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_NORMAL, soon, &result) != 0 ||
           GetLastError() == ERROR_SUCCESS;
}

/// While the windows of a desktop change places the system may lose a click. Whoever sees that nothing
/// happens clicks again; a program that is only busy is left alone.
void pressButton(HWND control, POINT point) {
    constexpr int attempts = 3;
    constexpr DWORD longEnough = 1000; // milliseconds
    for (int i = 0; i < attempts; ++i) {
        sendMouse(point, MOUSEEVENTF_LEFTDOWN);
        if (pressed(control, longEnough)) return;
        if (!answers(control)) {
            pressed(control, patience);
            return;
        }
        sendMouse(point, MOUSEEVENTF_LEFTUP);
    }
    throw Failure("the click was lost; in front is " + className(GetForegroundWindow()) + ", at the mouse " +
                  className(WindowFromPoint(point)) + ", the mouse belongs to " +
                  className(captureOf(control)));
}

void pressAndRelease(HWND control, POINT point) {
    const bool holds = holdsMouse(control);
    if (holds)
        pressButton(control, point);
    else
        sendMouse(point, MOUSEEVENTF_LEFTDOWN);
    sendMouse(point, MOUSEEVENTF_LEFTUP);
    if (holds) waitFor([control] { return IsWindow(control) == FALSE || captureOf(control) != control; });
}

bool isUncovered(POINT point, HWND control) {
    const HWND hit = WindowFromPoint(point);
    return hit != nullptr && GetAncestor(hit, GA_ROOT) == GetAncestor(control, GA_ROOT);
}

/// A window that has just come under the mouse tells where it saw it, which may be where it no longer is.
/// That has to be over before a button is pressed, or it seems to be released elsewhere.
bool isMouseAtRest(POINT point, HWND control) {
    constexpr int looks = 3;
    constexpr DWORD between = 5; // milliseconds
    for (int i = 0; i < looks; ++i) {
        ask(control, WM_NULL);
        POINT now{};
        GetCursorPos(&now);
        if (now.x != point.x || now.y != point.y) {
            sendMouse(point);
            return false;
        }
        Sleep(between);
    }
    return true;
}

/// What is at that point has to be of the part's window; anything else would get the click instead. A system
/// may notice only when the mouse gets there which window is in front.
void moveOnto(HWND control, POINT point) {
    sendMouse(point);
    if (!waitFor([&] { return isMouseAtRest(point, control) && isUncovered(point, control); }))
        throw Failure("the part is covered by a window of the class " + className(WindowFromPoint(point)));
}

/// Two clicks at one place in a short time are a double click, so clicks that are none go to different
/// places.
LONG nextOffset() {
    static bool odd = false;
    odd = !odd;
    return odd ? GetSystemMetrics(SM_CXDOUBLECLK) : 0;
}

void clickAt(HWND control, POINT point, int clicks) {
    const HWND root = GetAncestor(control, GA_ROOT);
    if (IsWindowEnabled(root) == FALSE) return; // another window blocks it
    activate(root);
    moveOnto(control, point);
    for (int i = 0; i < clicks; ++i)
        pressAndRelease(control, point);
}

bool hasMark(HWND control) {
    const LONG_PTR kind = GetWindowLongPtrW(control, GWL_STYLE) & BS_TYPEMASK;
    return className(control) == "Button" && (kind == BS_CHECKBOX || kind == BS_AUTOCHECKBOX ||
                                              kind == BS_RADIOBUTTON || kind == BS_AUTORADIOBUTTON);
}

} // namespace

void activate(HWND window) {
    if (GetForegroundWindow() == window || IsWindowEnabled(window) == FALSE) return;
    if (IsIconic(window) != FALSE) ShowWindow(window, SW_RESTORE);
    SetForegroundWindow(window);
    waitFor([window] { return GetForegroundWindow() == window; });
}

void clickPart(const Part& part, int clicks) {
    const RECT r = screenRectangle(part);
    const LONG half = (r.bottom - r.top) / 2;
    const LONG x = hasMark(part.handle) ? r.left + half : (r.left + r.right) / 2;
    clickAt(part.handle, {x + nextOffset(), r.top + half}, clicks);
}

void clickRow(HWND list, int row, int clicks) {
    const RECT cell = rowRectangle(list, row);
    if (cell.right <= cell.left) throw Failure("no such row");
    constexpr LONG margin = 3;
    POINT point{cell.left + margin + nextOffset(), (cell.top + cell.bottom) / 2};
    ClientToScreen(list, &point);
    clickAt(list, point, clicks);
}

void moveMouse(const Part& part, const std::vector<MouseStep>& steps, bool rightButton) {
    const HWND root = part.window();
    if (IsWindowEnabled(root) == FALSE) return;
    activate(root);
    const RECT r = screenRectangle(part);
    for (const MouseStep& step : steps) {
        DWORD flags = 0;
        if (step.action == MouseAction::Press)
            flags = rightButton ? MOUSEEVENTF_RIGHTDOWN : MOUSEEVENTF_LEFTDOWN;
        if (step.action == MouseAction::Release)
            flags = rightButton ? MOUSEEVENTF_RIGHTUP : MOUSEEVENTF_LEFTUP;
        sendMouse({r.left + step.point.x, r.top + step.point.y}, flags);
    }
}

void focus(HWND control) {
    const HWND root = GetAncestor(control, GA_ROOT);
    activate(root);
    ask(root, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control), TRUE);
}

void chooseEntry(HWND box, int index) {
    if (IsWindowEnabled(box) == FALSE || IsWindowEnabled(GetAncestor(box, GA_ROOT)) == FALSE) return;
    focus(box);
    pressKey("F4");
    pressKey("Home");
    for (int i = 0; i < index; ++i)
        pressKey("Down");
    pressKey("Return");
}

} // namespace probe
