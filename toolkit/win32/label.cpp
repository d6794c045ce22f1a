#include "toolkit/label.h"

#include "toolkit/shown_text.h"
#include "toolkit/win32/binding.h"
#include "toolkit/win32/painting.h"
#include "toolkit/win32/subclass.h"
#include "toolkit/win32/texts.h"

namespace toolkit::win32 {

namespace {

UINT alignment(LONG_PTR style) {
    switch (style & SS_TYPEMASK) {
    case SS_RIGHT:
        return DT_RIGHT;
    case SS_CENTER:
        return DT_CENTER;
    default:
        return DT_LEFT;
    }
}

/// Draws the text itself: lines break inside of a word, too, when the word is too long for one, and what has
/// no room ends in dots and is in the tool tip as a whole.
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
        if (bound()) showToolTip();
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
        default:
            return next(message, wParam, lParam);
        }
    }

    UINT flags() const {
        return alignment(GetWindowLongPtrW(part(), GWL_STYLE)) | DT_WORDBREAK | DT_EDITCONTROL | DT_NOPREFIX |
               DT_EXPANDTABS;
    }

    void paint(HDC context, const RECT& room) const {
        FillRect(context, &room, backgroundOf(part(), context));
        const ChosenFont font(context, part());
        const int color = IsWindowEnabled(part()) != FALSE ? COLOR_BTNTEXT : COLOR_GRAYTEXT;
        drawText(context, windowText(part()), room, flags() | DT_END_ELLIPSIS, GetSysColor(color));
    }

    bool isCut() const {
        if (label_.caption().empty()) return false;
        RECT room{};
        GetClientRect(part(), &room);
        RECT needed{0, 0, room.right, 0};
        const std::wstring all = windowText(part());
        DrawTextW(Measuring(part()).get(), all.c_str(), static_cast<int>(all.size()), &needed,
                  flags() | DT_CALCRECT);
        return needed.bottom > room.bottom || needed.right > room.right;
    }

    void showCaption() {
        setWindowText(part(), fromUtf8(shownText(label_.caption())));
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
};

} // namespace

std::unique_ptr<Adaptor> adaptLabel(Control& control, const Place& place) {
    return adaptPart<LabelAdaptor, Label>(control, place, WC_STATICW);
}

} // namespace toolkit::win32
