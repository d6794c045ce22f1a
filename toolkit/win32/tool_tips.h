#pragma once

#include <windows.h>

#include <map>
#include <string>
#include <string_view>

namespace toolkit::win32 {

/// The tool tips of a form's window, by part. A part that is disabled, or does not look at the mouse, leaves
/// the mouse to the window, so every tip is known to both.
class ToolTips {
public:
    explicit ToolTips(HWND dialog);

    /// The tip of a part, as UTF-8; none when the text is empty.
    void set(HWND part, std::string_view text);
    /// The tip of a region of a part, in the part's coordinates; regions are told apart by a number from 1.
    void setRegion(HWND part, int number, const RECT& region, std::string_view text);
    /// The parts have other places.
    void rescale();
    /// To be told of every message that the loop gets for the window or a part of it.
    void follow(const MSG& message) const;

private:
    void setShown(HWND part, const std::wstring& text);
    void setTool(HWND owner, UINT_PTR number, const RECT& region, std::wstring text);

    HWND dialog_;
    HWND tips_;
    std::map<std::pair<HWND, UINT_PTR>, bool> known_;
    std::map<HWND, std::wstring> texts_;
};

/// The tip that the resources hold for a part; UTF-8.
std::string designToolTip(HWND part);

} // namespace toolkit::win32
