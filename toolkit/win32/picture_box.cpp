#include "toolkit/picture_box.h"

#include "toolkit/win32/accessible_text.h"
#include "toolkit/win32/binding.h"
#include "toolkit/win32/painting.h"
#include "toolkit/win32/placement.h"
#include "toolkit/win32/texts.h"

#include <cmath>
#include <utility>

namespace toolkit::win32 {

namespace {

/// From the scale of the box to pixels: neighbours that share an edge neither overlap nor leave a gap.
class Scale {
public:
    explicit Scale(const RECT& room)
        : room_(room),
          x_((room.right - room.left) / PictureBox::ScaleWidth),
          y_((room.bottom - room.top) / PictureBox::ScaleHeight) {}

    RECT rectangle(const PictureBox::Rectangle& r) const {
        return {x(r.left), y(r.top), x(r.right), y(r.bottom)};
    }

    /// A region of the room's size around the middle of a text.
    RECT around(const PictureBox::Text& t) const {
        RECT place = room_;
        OffsetRect(&place, x(t.x + t.size.width / 2) - (room_.left + room_.right) / 2,
                   y(t.y + t.size.height / 2) - (room_.top + room_.bottom) / 2);
        return place;
    }

private:
    int x(double value) const { return static_cast<int>(room_.left + std::lround(value * x_)); }
    int y(double value) const { return static_cast<int>(room_.top + std::lround(value * y_)); }

    RECT room_;
    double x_;
    double y_;
};

class PictureBoxAdaptor : public PartAdaptor, private PictureBox::Measure {
public:
    PictureBoxAdaptor(PictureBox& box, FormWindow& window, HWND part)
        : PartAdaptor(box, window, part), box_(box) {
        box_.setMeasure(this);
        speakAsProgressBar(part);
        shows(Property::Drawing, [this] { showDrawing(); });
    }

    void release() override {
        if (bound()) box_.setMeasure(nullptr);
        PartAdaptor::release();
    }

    void draw(const DRAWITEMSTRUCT& item) override {
        paintBuffered(item.hDC, item.rcItem, [&](HDC context) { paint(context, item.rcItem); });
        tellScreenReaders();
    }

protected:
    /// Its text is a value, so its tip is its name.
    void adoptDesign() override {
        PartAdaptor::adoptDesign();
        speak(part(), Spoken::Name, fromUtf8(box_.toolTip()));
    }

private:
    PictureBox::Size textSize(const std::string& text) const override {
        const std::wstring wide = fromUtf8(text);
        RECT room{};
        SIZE size{};
        GetClientRect(part(), &room);
        if (IsRectEmpty(&room) != FALSE) return {};
        GetTextExtentPoint32W(Measuring(part()).get(), wide.c_str(), static_cast<int>(wide.size()), &size);
        return {size.cx * PictureBox::ScaleWidth / room.right,
                size.cy * PictureBox::ScaleHeight / room.bottom};
    }

    /// Comes once for each of some hundred rectangles, so nothing is painted here. The part does not paint
    /// its text.
    void showDrawing() {
        redraw();
        std::string spoken;
        for (const PictureBox::Text& text : box_.texts())
            spoken += text.text;
        setWindowText(part(), fromUtf8(spoken));
    }

    /// A drawing is complete when it is painted.
    void tellScreenReaders() {
        const std::wstring text = windowText(part());
        if (std::exchange(told_, text) != text) speak(part(), Spoken::Value, text);
    }

    void paint(HDC context, const RECT& room) const {
        FillRect(context, &room, GetSysColorBrush(COLOR_WINDOW));
        if (!bound()) return;
        const Scale scale(room);
        for (const PictureBox::Rectangle& r : box_.rectangles())
            fill(context, scale.rectangle(r), r.color);
        const ChosenFont font(context, part());
        for (const PictureBox::Text& text : box_.texts())
            drawEdgedText(context, fromUtf8(text.text), scale.around(text), text.color);
    }

    /// White letters may stand on any colour, so they have a dark edge.
    void drawEdgedText(HDC context, const std::wstring& text, const RECT& place, Color color) const {
        constexpr UINT flags = DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX;
        const int edge = color == white ? scaled(part(), 1) : 0;
        for (int x = -edge; x <= edge; ++x)
            for (int y = -edge; y <= edge; ++y) {
                RECT beside = place;
                OffsetRect(&beside, x, y);
                if (x != 0 || y != 0) drawText(context, text, beside, flags, toNative(black));
            }
        drawText(context, text, place, flags, toNative(color));
    }

    static void fill(HDC context, const RECT& place, Color color) {
        SetDCBrushColor(context, toNative(color));
        FillRect(context, &place, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
    }

    PictureBox& box_;
    std::wstring told_; ///< what screen readers were told last
};

} // namespace

std::unique_ptr<Adaptor> adaptPictureBox(Control& control, const Place& place) {
    return adaptPart<PictureBoxAdaptor, PictureBox>(control, place, WC_STATICW);
}

} // namespace toolkit::win32
