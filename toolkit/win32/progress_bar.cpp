#include "toolkit/progress_bar.h"

#include "platform/taskbar.h"
#include "toolkit/shown_text.h"
#include "toolkit/win32/accessible_text.h"
#include "toolkit/win32/binding.h"
#include "toolkit/win32/painting.h"
#include "toolkit/win32/placement.h"
#include "toolkit/win32/resource_names.h"
#include "toolkit/win32/subclass.h"
#include "toolkit/win32/texts.h"
#include "toolkit/win32/tool_tips.h"

#include <cmath>
#include <utility>

namespace toolkit::win32 {

namespace {

constexpr int fullBar = 1000;
constexpr int gap = 2; ///< pixels at 96 a inch between the text and the bar

constexpr UINT_PTR settledTimer = 1;
constexpr UINT settledMilliseconds = 400;

UINT textFlags(bool oneLine) {
    return DT_LEFT | DT_NOPREFIX | DT_END_ELLIPSIS | (oneLine ? DT_SINGLELINE | DT_VCENTER : DT_WORDBREAK);
}

LONG wantedHeight(HDC context, const std::wstring& text, const RECT& room) {
    RECT wanted{0, 0, room.right, 0};
    return DrawTextW(context, text.c_str(), static_cast<int>(text.size()), &wanted,
                     DT_LEFT | DT_NOPREFIX | DT_WORDBREAK | DT_CALCRECT);
}

RECT placeOf(HWND window) {
    RECT place{};
    GetWindowRect(window, &place);
    return place;
}

/// The text above a bar, in a part of its own. It is one line; where there is no bar it has as many as have
/// room, in the middle.
class BarText : private Subclass {
public:
    explicit BarText(HWND part) : Subclass(part) { speakChanges(part); }

    /// A screen reader asks for the text when it gets round to it, and would say the last one as often as it
    /// was told of one. So a step that is soon followed by another is not said.
    void sayWhenSettled() { SetTimer(subclassed(), settledTimer, settledMilliseconds, nullptr); }
    void sayAtOnce() {
        dontSay();
        sayNow(subclassed());
    }
    void dontSay() { KillTimer(subclassed(), settledTimer); }

    bool isCut() const {
        RECT room{};
        GetClientRect(subclassed(), &room);
        const std::wstring text = windowText(subclassed());
        return !text.empty() && wantedHeight(Measuring(subclassed()).get(), text, room) > room.bottom;
    }

private:
    LRESULT received(UINT message, WPARAM wParam, LPARAM lParam) override {
        switch (message) {
        case WM_PAINT:
            paintWindow(subclassed(), [this](HDC context, const RECT& room) { paint(context, room); });
            return 0;
        case WM_ERASEBKGND:
            return TRUE;
        case WM_TIMER:
            sayAtOnce();
            return 0;
        case WM_SETTEXT: { // the native control would paint it at once, in its own way
            const LRESULT result = DefWindowProcW(subclassed(), message, wParam, lParam);
            InvalidateRect(subclassed(), nullptr, FALSE);
            return result;
        }
        default:
            return next(message, wParam, lParam);
        }
    }

    void paint(HDC context, RECT room) const {
        FillRect(context, &room, backgroundOf(subclassed(), context));
        const ChosenFont font(context, subclassed());
        const std::wstring text = windowText(subclassed());
        const LONG wanted = wantedHeight(context, text, room);
        const bool oneLine = wanted > room.bottom;
        if (!oneLine) room.top += (room.bottom - wanted) / 2;
        drawText(context, text, room, textFlags(oneLine), GetSysColor(COLOR_BTNTEXT));
    }
};

/// The bar, and the part of its name and "Text" above it.
class ProgressBarAdaptor : public PartAdaptor {
public:
    ProgressBarAdaptor(ProgressBar& bar, FormWindow& window, HWND part)
        : PartAdaptor(bar, window, part),
          bar_(bar),
          textPart_(GetDlgItem(window.handle(), resourceNumber(bar.name() + "Text"))),
          text_(textPart_) {
        SendMessageW(part, PBM_SETRANGE32, 0, fullBar);
        shows(Property::Value, [this] { showValue(); });
        shows(Property::Text, [this] { showText(); });
        showsChanges({Property::Alert}, [this] { alert(); });
    }

    void rescale() override {
        if (bound()) giveRoom();
    }

    void release() override {
        if (bound()) forgetSpoken(textPart_);
        PartAdaptor::release();
    }

private:
    void showValue() {
        const bool busy = bar_.state() == ProgressState::UnknownShare;
        if (busy != moving_) setMoving(busy);
        if (!busy) setPosition(std::lround(bar_.share() * fullBar));
        showInTaskbar();
        const bool shown = bar_.state() != ProgressState::None;
        if (shown == hasBar_) return;
        hasBar_ = shown;
        giveRoom();
        ShowWindow(part(), shown ? SW_SHOWNA : SW_HIDE);
    }

    /// Screen readers are told of each call, whether anything changes or not.
    void setPosition(LRESULT position) {
        if (SendMessageW(part(), PBM_GETPOS, 0, 0) != position)
            SendMessageW(part(), PBM_SETPOS, static_cast<WPARAM>(position), 0);
    }

    /// Of a bar that has not been used yet nobody need be told.
    void showInTaskbar() {
        using platform::TaskbarProgress;
        const TaskbarProgress progress = bar_.state() == ProgressState::None ? TaskbarProgress::None
                                         : moving_                           ? TaskbarProgress::UnknownShare
                                                                             : TaskbarProgress::KnownShare;
        if (progress == inTaskbar_ && progress != TaskbarProgress::KnownShare) return;
        inTaskbar_ = progress;
        platform::showInTaskbar(reinterpret_cast<std::intptr_t>(part()), progress, bar_.share());
    }

    void setMoving(bool moving) {
        moving_ = moving;
        const LONG_PTR style = GetWindowLongPtrW(part(), GWL_STYLE);
        SetWindowLongPtrW(part(), GWL_STYLE, moving ? style | PBS_MARQUEE : style & ~LONG_PTR{PBS_MARQUEE});
        SendMessageW(part(), PBM_SETMARQUEE, moving ? TRUE : FALSE, 0);
    }

    /// The text ends above the bar, or where that ends.
    void giveRoom() {
        RECT text = placeOf(textPart_);
        const RECT bar = placeOf(part());
        const LONG bottom = hasBar_ ? bar.top - scaled(part(), gap) : bar.bottom;
        SetWindowPos(textPart_, nullptr, 0, 0, text.right - text.left, bottom - text.top,
                     SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
        InvalidateRect(textPart_, nullptr, FALSE);
    }

    /// The bar has the text as well, as its name.
    void showText() {
        const std::wstring text = fromUtf8(shownText(bar_.text()));
        setWindowText(textPart_, text);
        setWindowText(part(), text);
        tellScreenReaders(text);
        window().toolTips().set(textPart_, text_.isCut() ? bar_.text() : std::string());
    }

    /// Figures that change are nothing new; those of the bar itself screen readers know as its value.
    void tellScreenReaders(const std::wstring& text) {
        const std::wstring meaning = text.substr(0, text.find_first_of(L"0123456789"));
        if (std::exchange(told_, meaning) == meaning) return;
        if (text.empty())
            text_.dontSay();
        else if (bar_.state() == ProgressState::None)
            text_.sayAtOnce();
        else
            text_.sayWhenSettled();
    }

    /// The text itself was told when it appeared.
    void alert() { NotifyWinEvent(EVENT_SYSTEM_ALERT, textPart_, OBJID_CLIENT, CHILDID_SELF); }

    ProgressBar& bar_;
    HWND textPart_;
    BarText text_;
    platform::TaskbarProgress inTaskbar_ = platform::TaskbarProgress::None;
    std::wstring told_; ///< what screen readers were told last, up to its first figure
    bool moving_ = false;
    bool hasBar_ = true; ///< as in the layout
};

} // namespace

std::unique_ptr<Adaptor> adaptProgressBar(Control& control, const Place& place) {
    return adaptPart<ProgressBarAdaptor, ProgressBar>(control, place, PROGRESS_CLASSW);
}

} // namespace toolkit::win32
