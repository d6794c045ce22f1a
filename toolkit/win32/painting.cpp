#include "toolkit/win32/painting.h"

namespace toolkit::win32 {

void paintBuffered(HDC target, const RECT& room, const std::function<void(HDC)>& paint) {
    const int width = room.right - room.left;
    const int height = room.bottom - room.top;
    HDC const memory = CreateCompatibleDC(target);
    HBITMAP const bitmap = CreateCompatibleBitmap(target, width, height);
    HGDIOBJ const before = SelectObject(memory, bitmap);
    SetViewportOrgEx(memory, -room.left, -room.top, nullptr);
    paint(memory);
    BitBlt(target, room.left, room.top, width, height, memory, room.left, room.top, SRCCOPY);
    SelectObject(memory, before);
    DeleteObject(bitmap);
    DeleteDC(memory);
}

void paintWindow(HWND window, const std::function<void(HDC, const RECT&)>& paint) {
    PAINTSTRUCT painting{};
    RECT room{};
    HDC const context = BeginPaint(window, &painting);
    GetClientRect(window, &room);
    paintBuffered(context, room, [&](HDC memory) { paint(memory, room); });
    EndPaint(window, &painting);
}

HBRUSH backgroundOf(HWND part, HDC context) {
    const LRESULT brush = SendMessageW(GetParent(part), WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(context),
                                       reinterpret_cast<LPARAM>(part));
    return brush == 0 ? GetSysColorBrush(COLOR_BTNFACE) : reinterpret_cast<HBRUSH>(brush);
}

ChosenFont::ChosenFont(HDC context, HWND control)
    : context_(context),
      before_(SelectObject(context, reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0)))) {}

Measuring::Measuring(HWND control) : control_(control), context_(GetDC(control)) {
    font_.emplace(context_, control);
}

Measuring::~Measuring() {
    font_.reset();
    ReleaseDC(control_, context_);
}

void drawText(HDC context, const std::wstring& text, RECT room, UINT flags, COLORREF color) {
    SetBkMode(context, TRANSPARENT);
    SetTextColor(context, color);
    DrawTextW(context, text.c_str(), static_cast<int>(text.size()), &room, flags);
}

} // namespace toolkit::win32
