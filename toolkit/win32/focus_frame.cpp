#include "toolkit/win32/focus_frame.h"

#include "toolkit/win32/colors.h"
#include "toolkit/win32/placement.h"

#include <commctrl.h>

#include <algorithm>

namespace toolkit::win32 {

namespace {

constexpr int thickness = 2; ///< pixels at 96 a inch
constexpr int distance = 3;  ///< of its outer edge from the part's

} // namespace

FocusFrame::~FocusFrame() {
    DeleteObject(brush_);
}

void FocusFrame::create() {
    for (HWND& side : sides_)
        side = CreateWindowExW(WS_EX_NOPARENTNOTIFY, WC_STATICW, nullptr, WS_CHILD | WS_DISABLED | SS_LEFT, 0,
                               0, 0, 0, dialog_, nullptr, GetModuleHandleW(nullptr), nullptr);
}

bool FocusFrame::has(HWND side) const {
    return std::find(sides_.begin(), sides_.end(), side) != sides_.end();
}

void FocusFrame::surround(HWND part) {
    if (part == dialog_ || IsChild(dialog_, part) == FALSE) part = nullptr;
    const RECT place = part == nullptr ? RECT{} : placeIn(dialog_, part);
    if (part == part_ && EqualRect(&place, &place_) != FALSE) return;
    part_ = part;
    place_ = place;
    if (sides_.front() == nullptr) create();
    DeleteObject(brush_);
    brush_ = CreateSolidBrush(focusColor());
    const int away = scaled(dialog_, distance);
    const int wide = scaled(dialog_, thickness);
    const RECT outer{place.left - away, place.top - away, place.right + away, place.bottom + away};
    const std::array<RECT, 4> strips = {
        RECT{outer.left, outer.top, outer.right, outer.top + wide},
        RECT{outer.left, outer.bottom - wide, outer.right, outer.bottom},
        RECT{outer.left, outer.top, outer.left + wide, outer.bottom},
        RECT{outer.right - wide, outer.top, outer.right, outer.bottom},
    };
    for (std::size_t i = 0; i < sides_.size(); ++i) {
        const RECT& strip = strips[i];
        SetWindowPos(sides_[i], HWND_TOP, strip.left, strip.top, strip.right - strip.left,
                     strip.bottom - strip.top,
                     SWP_NOACTIVATE | (part == nullptr ? SWP_HIDEWINDOW : SWP_SHOWWINDOW));
        InvalidateRect(sides_[i], nullptr, TRUE);
    }
}

} // namespace toolkit::win32
