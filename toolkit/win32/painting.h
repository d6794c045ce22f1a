#pragma once

#include "toolkit/win32/colors.h"

#include <windows.h>

#include <functional>
#include <optional>
#include <string>

namespace toolkit::win32 {

/// Has a region painted in memory, in the target's own coordinates, and shows it when it is complete: nothing
/// flickers.
void paintBuffered(HDC target, const RECT& room, const std::function<void(HDC)>& paint);

/// The same for a window that is to be painted, the whole client area.
void paintWindow(HWND window, const std::function<void(HDC, const RECT&)>& paint);

/// What lies behind a part of a dialog.
HBRUSH backgroundOf(HWND part, HDC context);

/// Chooses a font as long as it lives.
class ChosenFont {
public:
    /// The font of a control.
    ChosenFont(HDC context, HWND control);
    ChosenFont(const ChosenFont&) = delete;
    ChosenFont& operator=(const ChosenFont&) = delete;
    ~ChosenFont() { SelectObject(context_, before_); }

private:
    HDC context_;
    HGDIOBJ before_;
};

/// A device context to measure texts with, which has the font of a control as long as it lives.
class Measuring {
public:
    explicit Measuring(HWND control);
    Measuring(const Measuring&) = delete;
    Measuring& operator=(const Measuring&) = delete;
    ~Measuring();

    HDC get() const noexcept { return context_; }

private:
    HDC context_;
    std::optional<ChosenFont> font_;
};

/// Draws a text with nothing behind it; the flags are those of `DrawText`.
void drawText(HDC context, const std::wstring& text, RECT room, UINT flags, COLORREF color);

} // namespace toolkit::win32
