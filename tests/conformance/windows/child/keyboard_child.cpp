// A program with a window that waits for a key, and tells which it was; for the test of the answer by
// keystroke.

#include <windows.h>

#include <cstdio>

namespace {

constexpr UINT patience = 50'000; // milliseconds

LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_CHAR:
        std::printf("key %c", static_cast<int>(wParam));
        PostQuitMessage(0);
        return 0;
    case WM_TIMER:
        std::printf("no key");
        PostQuitMessage(1);
        return 0;
    default:
        return DefWindowProcA(window, message, wParam, lParam);
    }
}

} // namespace

int main() {
    WNDCLASSA description{};
    description.lpfnWndProc = procedure;
    description.hInstance = GetModuleHandleA(nullptr);
    description.lpszClassName = "KeyboardChild";
    RegisterClassA(&description);
    const HWND window = CreateWindowA("KeyboardChild", "", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 200, 100,
                                      nullptr, nullptr, description.hInstance, nullptr);
    SetForegroundWindow(window);
    SetFocus(window);
    SetTimer(window, 1, patience, nullptr);
    std::printf("ready ");
    std::fflush(stdout);
    MSG message;
    while (GetMessageA(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    return 0;
}
