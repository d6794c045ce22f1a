// What a dialog template cannot say: the fonts of single parts.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace toolkit::win32 {

/// Gives the parts of a form's window that stand out fonts of their own, made from the window's font.
class Presentation {
public:
    /// Applies itself.
    Presentation(HWND dialog, std::string form);
    Presentation(const Presentation&) = delete;
    Presentation& operator=(const Presentation&) = delete;
    ~Presentation();

    /// Makes the fonts anew; the window has another resolution.
    void apply();

private:
    HWND dialog_;
    std::string form_;
    std::vector<HFONT> fonts_;
};

} // namespace toolkit::win32
