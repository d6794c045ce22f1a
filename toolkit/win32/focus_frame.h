#pragma once

#include <windows.h>

#include <array>

namespace toolkit::win32 {

/// A frame around the part of a window that has the keyboard: what the system draws is thin, and not there
/// before a key was pressed. Its sides go with the window.
class FocusFrame {
public:
    explicit FocusFrame(HWND dialog) : dialog_(dialog) {}
    FocusFrame(const FocusFrame&) = delete;
    FocusFrame& operator=(const FocusFrame&) = delete;
    ~FocusFrame();

    /// Shows it around that part of the window; nowhere for anything else.
    void surround(HWND part);

    /// Is that window one of the sides?
    bool has(HWND side) const;
    HBRUSH brush() const noexcept { return brush_; }

private:
    void create();

    HWND dialog_;
    HWND part_ = nullptr;
    RECT place_{};
    std::array<HWND, 4> sides_{};
    HBRUSH brush_ = nullptr;
};

} // namespace toolkit::win32
