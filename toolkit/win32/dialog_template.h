#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace toolkit::win32 {

/// A copy of a dialog template in which the size of the letters can be changed: all measures of the window
/// follow them.
class DialogTemplate {
public:
    /// The template of that name in the resources.
    explicit DialogTemplate(const std::wstring& name);

    /// Creates the window. Null when there is no such template.
    HWND create(DLGPROC procedure, LPARAM parameter) const;

    /// Makes the letters smaller by a point; false when they are as small as they may be at that resolution
    /// (dots an inch).
    bool shrink(unsigned dpi);

private:
    std::vector<WORD> words_; ///< empty when there is no such template
    std::size_t points_ = 0;  ///< where the size of the letters stands
};

} // namespace toolkit::win32
