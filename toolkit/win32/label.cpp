#include "toolkit/label.h"

#include "toolkit/scoped_flag.h"
#include "toolkit/shown_text.h"
#include "toolkit/win32/accessible_text.h"
#include "toolkit/win32/binding.h"
#include "toolkit/win32/label_flow.h"
#include "toolkit/win32/label_text.h"
#include "toolkit/win32/painting.h"
#include "toolkit/win32/subclass.h"
#include "toolkit/win32/texts.h"

#include <algorithm>
#include <array>
#include <utility>

namespace toolkit::win32 {

namespace {

constexpr int linesAWheel = 3;

struct ScrollKey {
    WPARAM key;
    UINT code;
};

constexpr std::array scrollKeys = {ScrollKey{VK_UP, SB_LINEUP},    ScrollKey{VK_DOWN, SB_LINEDOWN},
                                   ScrollKey{VK_PRIOR, SB_PAGEUP}, ScrollKey{VK_NEXT, SB_PAGEDOWN},
                                   ScrollKey{VK_HOME, SB_TOP},     ScrollKey{VK_END, SB_BOTTOM}};

bool isFigure(HWND label) {
    return isOfClass(label, WC_STATICW) && (GetWindowLongPtrW(label, GWL_STYLE) & SS_TYPEMASK) == SS_RIGHT;
}

/// A bare figure says nothing to who cannot see what stands beside it. In a layout a label that is aligned to
/// the right is a figure; it comes between what it is called and its unit.
void speakFigure(HWND changed) {
    HWND const figure = isFigure(changed) ? changed : GetWindow(changed, GW_HWNDPREV);
    if (!isFigure(figure)) return;
    std::wstring phrase = windowText(GetWindow(figure, GW_HWNDPREV));
    if (const std::wstring number = windowText(figure); !number.empty())
        phrase += L' ' + number + L' ' + windowText(GetWindow(figure, GW_HWNDNEXT));
    speak(figure, Spoken::Name, phrase);
}

/// Draws the text itself. What has no room can be scrolled to, by the keyboard as well, where there are at
/// least two lines; in one line it ends in dots, and is in the tool tip as a whole.
class LabelAdaptor : public PartAdaptor, private Subclass {
public:
    LabelAdaptor(Label& label, FormWindow& window, HWND part)
        : PartAdaptor(label, window, part), Subclass(part), label_(label) {
        shows(Property::Caption, [this] { showCaption(); });
        shows(Property::BackColor, [this] { showBackColor(); });
    }

    ~LabelAdaptor() override { DeleteObject(brush_); }

    HBRUSH background() const override { return brush_; }

    void rescale() override {
        if (!bound()) return;
        flowLabels(window().handle(), part());
        showScrollBar();
        showToolTip();
    }

protected:
    void adoptDesign() override {
        PartAdaptor::adoptDesign();
        if (label_.caption().empty()) label_.setCaption(toUtf8(windowText(part())));
    }

    std::string toolTip() const override {
        return label_.toolTip().empty() && isCut() ? label_.caption() : label_.toolTip();
    }

private:
    LRESULT received(UINT message, WPARAM wParam, LPARAM lParam) override {
        switch (message) {
        case WM_PAINT:
            paintWindow(subclassed(), [this](HDC context, const RECT& room) { paint(context, room); });
            return 0;
        case WM_PRINTCLIENT: {
            RECT room{};
            GetClientRect(subclassed(), &room);
            paint(reinterpret_cast<HDC>(wParam), room);
            return 0;
        }
        case WM_ERASEBKGND:
            return TRUE;
        case WM_SETTEXT: // the native control would paint it at once, in its own way
        case WM_ENABLE: {
            const LRESULT result = DefWindowProcW(subclassed(), message, wParam, lParam);
            InvalidateRect(subclassed(), nullptr, FALSE);
            return result;
        }
        case WM_SIZE:
            if (!sizing_) showScrollBar();
            return next(message, wParam, lParam);
        default:
            return scrolls_ ? scrolled(message, wParam, lParam) : next(message, wParam, lParam);
        }
    }

    /// A native label knows neither mouse nor keyboard.
    LRESULT scrolled(UINT message, WPARAM wParam, LPARAM lParam) {
        switch (message) {
        case WM_NCHITTEST:
            return DefWindowProcW(subclassed(), message, wParam, lParam);
        case WM_GETDLGCODE:
            return DLGC_WANTARROWS;
        case WM_LBUTTONDOWN:
            SetFocus(subclassed());
            return 0;
        case WM_VSCROLL:
            scrollBy(distanceOf(LOWORD(wParam)));
            return 0;
        case WM_MOUSEWHEEL:
            scrollBy(-linesAWheel * lineHeight(subclassed()) * GET_WHEEL_DELTA_WPARAM(wParam) / WHEEL_DELTA);
            return 0;
        case WM_KEYDOWN:
            for (const auto [key, code] : scrollKeys)
                if (wParam == key) scrollBy(distanceOf(code));
            return 0;
        default:
            return next(message, wParam, lParam);
        }
    }

    RECT clientRoom() const {
        RECT room{};
        GetClientRect(subclassed(), &room);
        return room;
    }

    void paint(HDC context, const RECT& room) const {
        FillRect(context, &room, backgroundOf(subclassed(), context));
        const bool enabled = IsWindowEnabled(subclassed()) != FALSE;
        // Half a line at the lower edge is drawn, and nothing behind it: it takes time.
        const LONG bottom = scrolls_ ? room.bottom + 2 * lineHeight(subclassed()) : room.bottom;
        const RECT place{room.left, room.top - offset_, room.right, bottom};
        paintText(subclassed(), context, place, enabled ? GetSysColor(COLOR_BTNTEXT) : disabledTextColor(),
                  !scrolls_);
    }

    bool isCut() const {
        if (scrolls_) return true;
        const RECT room = clientRoom();
        const SIZE needed = textSize(part(), room.right);
        return needed.cy > room.bottom || needed.cx > room.right;
    }

    /// The bar takes some of the width, so that the text may need more lines.
    void showScrollBar() {
        const ScopedFlag sizing(sizing_);
        RECT whole{};
        GetWindowRect(subclassed(), &whole);
        const LONG height = whole.bottom - whole.top;
        const bool scrolls = height >= 2 * lineHeight(subclassed()) &&
                             textHeight(subclassed(), whole.right - whole.left) > height;
        if (scrolls != scrolls_) {
            scrolls_ = scrolls;
            ShowScrollBar(subclassed(), SB_VERT, scrolls ? TRUE : FALSE);
            const LONG_PTR style = GetWindowLongPtrW(subclassed(), GWL_STYLE);
            SetWindowLongPtrW(subclassed(), GWL_STYLE,
                              scrolls ? style | WS_TABSTOP : style & ~LONG_PTR{WS_TABSTOP});
        }
        offset_ = 0;
        if (scrolls) scrollBy(0);
    }

    LONG distanceOf(UINT code) const {
        const LONG line = lineHeight(subclassed());
        const LONG page = std::max(line, clientRoom().bottom - line);
        SCROLLINFO bar{};
        bar.cbSize = sizeof bar;
        bar.fMask = SIF_TRACKPOS;
        switch (code) {
        case SB_LINEUP:
            return -line;
        case SB_LINEDOWN:
            return line;
        case SB_PAGEUP:
            return -page;
        case SB_PAGEDOWN:
            return page;
        case SB_TOP:
            return -offset_;
        case SB_BOTTOM:
            return SHRT_MAX;
        case SB_THUMBTRACK:
            GetScrollInfo(subclassed(), SB_VERT, &bar);
            return bar.nTrackPos - offset_;
        default:
            return 0;
        }
    }

    void scrollBy(LONG distance) {
        const RECT room = clientRoom();
        const bool guess = distance == 0;
        const LONG needed =
            guess ? textHeight(subclassed(), room.right) : textSize(subclassed(), room.right).cy;
        offset_ = std::clamp(offset_ + distance, 0L, std::max(0L, needed - room.bottom));
        SCROLLINFO bar{};
        bar.cbSize = sizeof bar;
        bar.fMask = SIF_RANGE | SIF_PAGE | SIF_POS;
        bar.nMax = needed - 1;
        bar.nPage = static_cast<UINT>(room.bottom);
        bar.nPos = offset_;
        SetScrollInfo(subclassed(), SB_VERT, &bar, TRUE);
        InvalidateRect(subclassed(), nullptr, FALSE);
    }

    void showCaption() {
        setWindowText(part(), fromUtf8(shownText(label_.caption())));
        speakFigure(part());
        flowLabels(window().handle(), part());
        showScrollBar();
        showToolTip();
    }

    void showBackColor() {
        if (!label_.backColor()) return;
        DeleteObject(brush_);
        brush_ = CreateSolidBrush(toNative(*label_.backColor()));
        redraw();
    }

    Label& label_;
    HBRUSH brush_ = nullptr;
    LONG offset_ = 0; ///< pixels of the text above the upper edge
    bool scrolls_ = false;
    bool sizing_ = false;
};

} // namespace

std::unique_ptr<Adaptor> adaptLabel(Control& control, const Place& place) {
    return adaptPart<LabelAdaptor, Label>(control, place, WC_STATICW);
}

} // namespace toolkit::win32
