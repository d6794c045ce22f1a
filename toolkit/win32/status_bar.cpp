#include "toolkit/status_bar.h"

#include "toolkit/shown_text.h"
#include "toolkit/win32/binding.h"
#include "toolkit/win32/painting.h"
#include "toolkit/win32/panel_picture.h"
#include "toolkit/win32/placement.h"
#include "toolkit/win32/resource_names.h"
#include "toolkit/win32/subclass.h"
#include "toolkit/win32/texts.h"
#include "toolkit/win32/tool_tips.h"

#include <array>

namespace toolkit::win32 {

namespace {

constexpr int panelCount = 2;
constexpr int usualCharacters = 24; ///< room in the first panel
constexpr int margin = 10;          ///< pixels at 96 a inch, as the next two
constexpr int gap = 6;
constexpr int smallestHeight = 24;

/// A panel's text may have thousands of characters and change thousands of times a second; what lies behind
/// these nobody sees.
constexpr std::size_t longestShown = 400;

struct Design {
    const char* text;
    const char* toolTip;
};

/// The panels have no place in a dialog template.
constexpr std::array<Design, panelCount> designs = {Design{"USB-Stick", "USB-Stick"}, Design{"Status", ""}};

int pictureSize(HWND bar) {
    return GetSystemMetricsForDpi(SM_CXSMICON, GetDpiForWindow(bar));
}

RECT panelPlace(HWND bar, int index) {
    RECT place{};
    SendMessageW(bar, SB_GETRECT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&place));
    return place;
}

std::wstring panelText(const StatusPanel& panel) {
    return fromUtf8(shownText(panel.text(), longestShown));
}

/// Paints both panels, each with its picture and its text, which is cut with dots where the room ends. The
/// native control has the texts as well, for screen readers.
class StatusBarAdaptor : public PartAdaptor, private Subclass {
public:
    StatusBarAdaptor(StatusBar& bar, FormWindow& window, HWND part)
        : PartAdaptor(bar, window, part), Subclass(part), bar_(bar) {
        layOut();
    }

    void rescale() override { layOut(); }

private:
    LRESULT received(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (message == WM_ERASEBKGND) return TRUE;
        if (message != WM_PAINT) return next(message, wParam, lParam);
        paintWindow(subclassed(), [this](HDC context, const RECT& room) { paint(context, room); });
        return 0;
    }

    void layOut() {
        TEXTMETRICW metrics{};
        GetTextMetricsW(Measuring(part()).get(), &metrics);
        const int first =
            scaled(part(), 2 * margin + gap) + pictureSize(part()) + usualCharacters * metrics.tmAveCharWidth;
        std::array<int, panelCount> ends = {first, -1};
        SendMessageW(part(), SB_SETPARTS, panelCount, reinterpret_cast<LPARAM>(ends.data()));
        SendMessageW(part(), SB_SETMINHEIGHT, static_cast<WPARAM>(scaled(part(), smallestHeight)), 0);
        SendMessageW(part(), WM_SIZE, 0, 0);
    }

    void paint(HDC context, const RECT& room) {
        FillRect(context, &room, GetSysColorBrush(COLOR_BTNFACE));
        RECT line = room;
        DrawEdge(context, &line, EDGE_ETCHED, BF_TOP);
        if (!bound()) return;
        const ChosenFont font(context, part());
        for (int i = 0; i < panelCount; ++i)
            paintPanel(context, panelPlace(part(), i), i);
    }

    void paintPanel(HDC context, RECT place, int index) {
        const StatusPanel& panel = bar_.panel(static_cast<std::size_t>(index) + 1);
        if (index > 0) {
            RECT line = place;
            InflateRect(&line, 0, -scaled(part(), 2));
            DrawEdge(context, &line, EDGE_ETCHED, BF_LEFT);
        }
        place.left += scaled(part(), margin);
        place.right -= scaled(part(), gap);
        const int size = pictureSize(part());
        const int top = (place.top + place.bottom - size) / 2;
        if (pictures_[static_cast<std::size_t>(index)].draw(context, panel, {place.left, top}, size))
            place.left += size + scaled(part(), gap);
        drawText(context, panelText(panel), place,
                 DT_LEFT | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS,
                 GetSysColor(panel.enabled() ? COLOR_BTNTEXT : COLOR_GRAYTEXT));
    }

    StatusBar& bar_;
    std::array<PanelPicture, panelCount> pictures_;
};

class StatusPanelAdaptor : public Adaptor {
public:
    StatusPanelAdaptor(StatusPanel& panel, FormWindow& window, HWND bar, int index)
        : Adaptor(panel, window), panel_(panel), bar_(bar), index_(index) {
        shows(Property::Text, [this] { showText(); });
        shows(Property::ToolTip, [this] { showToolTip(); });
        showsChanges(
            {Property::Enabled, Property::Picture, Property::Text, Property::ToolTip, Property::Visible},
            [this] { redraw(); });
    }

    void rescale() override {
        if (bound()) showToolTip();
    }

protected:
    void adoptDesign() override {
        const Design& design = designs[static_cast<std::size_t>(index_)];
        if (panel_.text().empty()) panel_.setText(design.text);
        if (panel_.toolTip().empty()) panel_.setToolTip(design.toolTip);
    }

private:
    void showText() {
        const std::wstring text = panelText(panel_);
        if (text == shown_) return;
        shown_ = text;
        SendMessageW(bar_, SB_SETTEXTW, static_cast<WPARAM>(index_) | SBT_NOBORDERS,
                     reinterpret_cast<LPARAM>(shown_.c_str()));
    }

    void showToolTip() {
        window().toolTips().setRegion(bar_, index_ + 1, panelPlace(bar_, index_), panel_.toolTip());
    }

    void redraw() {
        const RECT place = panelPlace(bar_, index_);
        InvalidateRect(bar_, &place, FALSE);
    }

    StatusPanel& panel_;
    HWND bar_;
    int index_;
    std::wstring shown_;
};

} // namespace

std::unique_ptr<Adaptor> adaptStatusBar(Control& control, const Place& place) {
    return adaptPart<StatusBarAdaptor, StatusBar>(control, place, STATUSCLASSNAMEW);
}

/// The panel of number n is called as its bar, and `_n`.
std::unique_ptr<Adaptor> adaptStatusPanel(Control& control, const Place& place) {
    auto* panel = dynamic_cast<StatusPanel*>(&control);
    if (panel == nullptr) return nullptr;
    const std::size_t end = control.name().rfind('_');
    const int bar = resourceNumber(control.name().substr(0, end));
    const int index = control.name().back() - '1';
    HWND const part = GetDlgItem(place.window.handle(), bar);
    if (!isOfClass(part, STATUSCLASSNAMEW) || index < 0 || index >= panelCount) return nullptr;
    return std::make_unique<StatusPanelAdaptor>(*panel, place.window, part, index);
}

} // namespace toolkit::win32
