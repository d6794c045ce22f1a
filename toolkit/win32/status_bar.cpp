#include "toolkit/status_bar.h"

#include "toolkit/shown_text.h"
#include "toolkit/win32/accessible_text.h"
#include "toolkit/win32/binding.h"
#include "toolkit/win32/painting.h"
#include "toolkit/win32/panel_picture.h"
#include "toolkit/win32/placement.h"
#include "toolkit/win32/resource.h"
#include "toolkit/win32/resource_names.h"
#include "toolkit/win32/subclass.h"
#include "toolkit/win32/texts.h"
#include "toolkit/win32/tool_tips.h"

#include <array>

namespace toolkit::win32 {

namespace {

constexpr int panelCount = 2;
constexpr int partCount = panelCount + 1; ///< the last one is the progress bar's place
constexpr int usualCharacters = 24;       ///< room in the first panel
constexpr int margin = 10;                ///< pixels at 96 a inch, as the next two
constexpr int gap = 6;
constexpr int smallestHeight = 32; ///< two lines of text

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

/// What has room in so many pixels, but for dots at the right.
std::wstring visibleText(HDC context, const StatusPanel& panel, LONG width) {
    if (panel.head() == 0) return panelText(panel);
    const auto fits = [context, width](const std::string& shown) {
        const std::wstring text = fromUtf8(shown);
        SIZE size{};
        GetTextExtentPoint32W(context, text.c_str(), static_cast<int>(text.size()), &size);
        return size.cx <= width;
    };
    return fromUtf8(shownEnd(panel.text(), panel.head(), fits));
}

/// Paints both panels, each with its picture and its text, which is cut with dots where the room ends. The
/// native control has the texts as well, for screen readers.
class StatusBarAdaptor : public PartAdaptor, private Subclass {
public:
    StatusBarAdaptor(StatusBar& bar, FormWindow& window, HWND part)
        : PartAdaptor(bar, window, part), Subclass(part), bar_(bar) {
        layOut();
        speakChanges(part);
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
        std::array<int, partCount> ends = {first, progressPlace() - scaled(part(), margin), -1};
        SendMessageW(part(), SB_SETPARTS, partCount, reinterpret_cast<LPARAM>(ends.data()));
        SendMessageW(part(), SB_SETMINHEIGHT, static_cast<WPARAM>(scaled(part(), smallestHeight)), 0);
        SendMessageW(part(), WM_SIZE, 0, 0);
    }

    /// Where the progress bar begins.
    int progressPlace() const {
        RECT place{};
        GetWindowRect(GetDlgItem(GetParent(part()), prgUpdate), &place);
        MapWindowPoints(nullptr, part(), reinterpret_cast<POINT*>(&place), 2);
        return place.left;
    }

    void paint(HDC context, const RECT& room) {
        FillRect(context, &room, GetSysColorBrush(COLOR_BTNFACE));
        RECT line = room;
        DrawEdge(context, &line, EDGE_ETCHED, BF_TOP);
        if (!bound()) return;
        const ChosenFont font(context, part());
        for (int i = 0; i < panelCount; ++i)
            paintPanel(context, panelPlace(part(), i), i);
        paintLine(context, panelPlace(part(), panelCount));
    }

    /// At the left of a panel.
    void paintLine(HDC context, RECT place) const {
        InflateRect(&place, 0, -scaled(part(), 2));
        DrawEdge(context, &place, EDGE_ETCHED, BF_LEFT);
    }

    void paintPanel(HDC context, RECT place, int index) {
        const StatusPanel& panel = bar_.panel(static_cast<std::size_t>(index) + 1);
        if (index > 0) paintLine(context, place);
        place.left += scaled(part(), margin);
        place.right -= scaled(part(), gap);
        const int size = pictureSize(part());
        const int top = (place.top + place.bottom - size) / 2;
        if (pictures_[static_cast<std::size_t>(index)].draw(context, panel, {place.left, top}, size))
            place.left += size + scaled(part(), gap);
        drawText(context, visibleText(context, panel, place.right - place.left), place,
                 DT_LEFT | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS,
                 panel.enabled() ? GetSysColor(COLOR_BTNTEXT) : disabledTextColor());
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
        tellScreenReaders();
    }

    /// One more dot is nothing new.
    void tellScreenReaders() {
        const std::string_view text = panel_.text();
        const std::string_view meaning = text.substr(0, text.find_last_not_of('.') + 1);
        if (told_ == meaning) return;
        told_ = meaning;
        sayNow(bar_, index_ + 1);
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
    std::string told_; ///< what screen readers were told last
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
