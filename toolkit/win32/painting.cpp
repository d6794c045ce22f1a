#include "toolkit/win32/painting.h"

#include "toolkit/win32/bitmap.h"

#include <algorithm>
#include <utility>

namespace toolkit::win32 {

namespace {

/// Memory to paint in, as large as the largest part so far. One serves them all: to make one for each part
/// takes longer than to paint the part.
class Canvas {
public:
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    static HDC forRoom(int width, int height) {
        static Canvas canvas;
        canvas.enlarge(width, height);
        return canvas.context_;
    }

private:
    Canvas() : context_(CreateCompatibleDC(nullptr)), before_(GetCurrentObject(context_, OBJ_BITMAP)) {}

    ~Canvas() {
        SelectObject(context_, before_);
        DeleteDC(context_);
    }

    void enlarge(int width, int height) {
        if (width <= bitmap_.width() && height <= bitmap_.height()) return;
        Bitmap larger(std::max(width, bitmap_.width()), std::max(height, bitmap_.height()));
        if (larger.handle() == nullptr) return; // no memory: what has no room is not seen
        SelectObject(context_, larger.handle());
        bitmap_ = std::move(larger);
    }

    HDC context_;
    HGDIOBJ before_;
    Bitmap bitmap_{0, 0};
};

} // namespace

void paintBuffered(HDC target, const RECT& room, const std::function<void(HDC)>& paint) {
    const int width = room.right - room.left;
    const int height = room.bottom - room.top;
    HDC const memory = Canvas::forRoom(width, height);
    SetViewportOrgEx(memory, -room.left, -room.top, nullptr);
    paint(memory);
    BitBlt(target, room.left, room.top, width, height, memory, room.left, room.top, SRCCOPY);
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

Measuring::Measuring(HWND control) : context_(CreateCompatibleDC(nullptr)) {
    font_.emplace(context_, control);
}

Measuring::~Measuring() {
    font_.reset();
    DeleteDC(context_);
}

void drawText(HDC context, const std::wstring& text, RECT room, UINT flags, COLORREF color) {
    SetBkMode(context, TRANSPARENT);
    SetTextColor(context, color);
    DrawTextW(context, text.c_str(), static_cast<int>(text.size()), &room, flags);
}

} // namespace toolkit::win32
