#include "toolkit/win32/message_loop.h"

#include "toolkit/scoped_flag.h"
#include "toolkit/win32/form_window.h"
#include "toolkit/win32/tool_tips.h"

#include <algorithm>
#include <array>
#include <vector>

namespace toolkit::win32 {

namespace {

bool ended = false;
bool arrowKey = false;

std::vector<HWND>& openBoxes() {
    static std::vector<HWND> boxes;
    return boxes;
}

bool isArrowKey(const MSG& message) {
    return message.message == WM_KEYDOWN && message.wParam >= VK_LEFT && message.wParam <= VK_DOWN;
}

/// Does a dialog take it as one of its keys?
bool isDialogKey(HWND dialog, MSG& message) {
    if (!isArrowKey(message)) return IsDialogMessageW(dialog, &message) != FALSE;
    const ScopedFlag moving(arrowKey);
    return IsDialogMessageW(dialog, &message) != FALSE;
}

void handleUnframed(MSG& message) {
    HWND const root = message.hwnd == nullptr ? nullptr : GetAncestor(message.hwnd, GA_ROOT);
    if (FormWindow* const window = FormWindow::of(root)) {
        window->toolTips().follow(message);
        if (window->handleEnter(message) || window->handleHelp(message) || isDialogKey(root, message)) return;
    }
    TranslateMessage(&message);
    DispatchMessageW(&message);
}

void handle(MSG& message) {
    handleUnframed(message);
    if (FormWindow* const window = FormWindow::of(GetActiveWindow())) window->frameFocus();
}

} // namespace

void startLoops() {
    ended = false;
}

/// The note in the queue is for the system's own loops: a box, a menu, a window being dragged. Not all of
/// them pass it on.
void endLoops() {
    ended = true;
    EndMenu();
    for (HWND box : openBoxes())
        EndDialog(box, IDCANCEL);
    PostQuitMessage(0);
}

bool loopsEnd() {
    return ended;
}

void loopUntil(const std::function<bool()>& done) {
    MSG message;
    while (!ended && !done()) {
        const BOOL result = GetMessageW(&message, nullptr, 0, 0);
        if (result == -1) continue;
        if (message.message == WM_QUIT) return PostQuitMessage(0);
        handle(message);
    }
}

void handlePending(std::chrono::milliseconds longest) {
    const ULONGLONG start = GetTickCount64();
    MSG message;
    while (!ended && PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
        if (message.message == WM_QUIT) return PostQuitMessage(0);
        handle(message);
        if (GetTickCount64() - start > static_cast<ULONGLONG>(longest.count())) return;
    }
}

namespace {

/// Messages that are handled while something is waited for; timers tell those whom they belong to, who may
/// wait.
struct Kind {
    UINT first;
    UINT last;
    UINT flags;
};

constexpr std::array paintingKinds = {
    Kind{0, 0, PM_QS_SENDMESSAGE},
    Kind{0, 0, PM_QS_PAINT},
    Kind{WM_TIMER, WM_TIMER, 0},
    Kind{WM_NCMOUSEMOVE, WM_NCXBUTTONDBLCLK, 0},
    Kind{WM_NCMOUSEHOVER, WM_NCMOUSELEAVE, 0},
    Kind{WM_SYSCOMMAND, WM_SYSCOMMAND, 0}, // from the taskbar
    Kind{WM_CLOSE, WM_CLOSE, 0},           // from a task manager
};

HANDLE paintingEnded() {
    static HANDLE const event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    return event;
}

/// True when there was one.
bool handlePaintingMessage() {
    return std::any_of(paintingKinds.begin(), paintingKinds.end(), [](const Kind& kind) {
        MSG message;
        if (PeekMessageW(&message, nullptr, kind.first, kind.last, PM_REMOVE | kind.flags) == FALSE)
            return false;
        DispatchMessageW(&message);
        return true;
    });
}

} // namespace

void handlePaintingOnly(std::chrono::milliseconds longest) {
    const ULONGLONG end = GetTickCount64() + static_cast<ULONGLONG>(longest.count());
    HANDLE const over = paintingEnded();
    for (ULONGLONG now = GetTickCount64(); !ended && now < end; now = GetTickCount64()) {
        if (handlePaintingMessage()) continue;
        const DWORD result =
            MsgWaitForMultipleObjects(1, &over, FALSE, static_cast<DWORD>(end - now), QS_ALLINPUT);
        if (result != WAIT_OBJECT_0 + 1) return;
    }
}

void endPainting() {
    SetEvent(paintingEnded());
}

bool arrowKeyMoves() {
    return arrowKey;
}

OpenBox::OpenBox(HWND box) : box_(box) {
    openBoxes().push_back(box);
}

OpenBox::~OpenBox() {
    std::erase(openBoxes(), box_);
}

} // namespace toolkit::win32
