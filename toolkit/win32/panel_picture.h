#pragma once

#include "toolkit/status_bar.h"
#include "toolkit/win32/bitmap.h"

#include <windows.h>

namespace toolkit::win32 {

/// The small picture of a status panel: the panel's own, else the icon resource of the panel's name.
class PanelPicture {
public:
    PanelPicture() = default;
    PanelPicture(const PanelPicture&) = delete;
    PanelPicture& operator=(const PanelPicture&) = delete;

    /// Draws it in a square of that size; false when there is none.
    bool draw(HDC context, const StatusPanel& panel, POINT place, int size);

private:
    void fetch(const StatusPanel& panel, int size);

    Bitmap scaled_{0, 0};
    base::Picture source_; ///< what it was made from
    int size_ = 0;
};

} // namespace toolkit::win32
