#include "tests/driver/windows/screen.h"

#include "tests/driver/windows/request.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace probe {

namespace {

/// A memory bitmap of the screen's kind.
class Canvas {
public:
    Canvas(int width, int height) : width_(width), height_(height), screen_(GetDC(nullptr)) {
        BITMAPINFO info{};
        info.bmiHeader.biSize = sizeof info.bmiHeader;
        info.bmiHeader.biWidth = width;
        info.bmiHeader.biHeight = -height; // the top row first
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        bitmap_ = CreateDIBSection(screen_, &info, DIB_RGB_COLORS, &bits_, nullptr, 0);
        memory_ = CreateCompatibleDC(screen_);
        before_ = SelectObject(memory_, bitmap_);
        if (bits_ == nullptr) throw Failure("no bitmap of that size");
    }
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;
    ~Canvas() {
        SelectObject(memory_, before_);
        DeleteDC(memory_);
        DeleteObject(bitmap_);
        ReleaseDC(nullptr, screen_);
    }

    HDC dc() const { return memory_; }
    void copyScreen(int x, int y) { BitBlt(memory_, 0, 0, width_, height_, screen_, x, y, SRCCOPY); }
    std::vector<COLORREF> colors() const {
        GdiFlush();
        const auto* quads = static_cast<const RGBQUAD*>(bits_);
        std::vector<COLORREF> result(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_));
        std::transform(quads, quads + result.size(), result.begin(),
                       [](const RGBQUAD& q) { return RGB(q.rgbRed, q.rgbGreen, q.rgbBlue); });
        return result;
    }

private:
    int width_;
    int height_;
    HDC screen_;
    HDC memory_ = nullptr;
    HBITMAP bitmap_ = nullptr;
    HGDIOBJ before_ = nullptr;
    void* bits_ = nullptr;
};

/// As a message box shows it; without a name the box's own ground.
std::vector<COLORREF> drawnIcon(LPCWSTR name, int width, int height) {
    const Canvas canvas(width, height);
    const RECT all{0, 0, width, height};
    FillRect(canvas.dc(), &all, GetSysColorBrush(COLOR_BTNFACE));
    if (name != nullptr)
        DrawIconEx(canvas.dc(), 0, 0, LoadIconW(nullptr, name), width, height, 0, nullptr, DI_NORMAL);
    return canvas.colors();
}

int distance(COLORREF a, COLORREF b) {
    return std::abs(GetRValue(a) - GetRValue(b)) + std::abs(GetGValue(a) - GetGValue(b)) +
           std::abs(GetBValue(a) - GetBValue(b));
}

long long difference(const std::vector<COLORREF>& a, const std::vector<COLORREF>& b) {
    long long sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        sum += distance(a[i], b[i]);
    return sum;
}

} // namespace

std::vector<COLORREF> pixels(HWND window, const RECT& rectangle) {
    constexpr DWORD pause = 20; // milliseconds
    constexpr int attempts = 50;
    RedrawWindow(GetAncestor(window, GA_ROOT), nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
    Canvas canvas(rectangle.right - rectangle.left, rectangle.bottom - rectangle.top);
    std::vector<COLORREF> before;
    for (int i = 0; i < attempts; ++i) {
        canvas.copyScreen(rectangle.left, rectangle.top);
        std::vector<COLORREF> now = canvas.colors();
        if (now == before) break;
        before = std::move(now);
        Sleep(pause); // what was painted may be on its way to the screen
    }
    return before;
}

int systemIconAt(const std::vector<COLORREF>& shown, const RECT& rectangle) {
    struct Kind {
        LPCWSTR name;
        int number;
    };
    const std::array<Kind, 4> kinds{{{IDI_ERROR, MB_ICONERROR},
                                     {IDI_WARNING, MB_ICONWARNING},
                                     {IDI_INFORMATION, MB_ICONINFORMATION},
                                     {nullptr, 0}}};
    const auto other = [&](const Kind& kind) {
        return difference(
            shown, drawnIcon(kind.name, rectangle.right - rectangle.left, rectangle.bottom - rectangle.top));
    };
    return std::min_element(kinds.begin(), kinds.end(),
                            [&](const Kind& a, const Kind& b) { return other(a) < other(b); })
        ->number;
}

bool drawnDisabled(const std::vector<COLORREF>& shown) {
    return std::find(shown.begin(), shown.end(), GetSysColor(COLOR_BTNTEXT)) == shown.end();
}

bool hasPicture(const std::vector<COLORREF>& shown) {
    const auto isColored = [](COLORREF c) {
        constexpr int grey = 24; // what letters and edges may have
        return std::abs(GetRValue(c) - GetGValue(c)) > grey || std::abs(GetGValue(c) - GetBValue(c)) > grey;
    };
    return std::any_of(shown.begin(), shown.end(), isColored);
}

} // namespace probe
