// What lists, status bars and tool tips show.
#pragma once

#include "tests/driver/windows/target.h"

#include <string>
#include <vector>

namespace probe {

struct ListContents {
    std::vector<std::wstring> headers;
    std::vector<int> widths; ///< in pixels
    std::vector<std::vector<std::wstring>> rows;
    std::vector<std::wstring> rowToolTips;
    int row = -1; ///< the selected one
};

ListContents contentsOf(HWND list);
/// Where a row's first cell is, in the list's client coordinates; empty when there is no such row.
RECT rowRectangle(HWND list, int row);

struct PanelContents {
    std::wstring text;
    std::wstring toolTip;
    RECT rectangle{};
};

PanelContents contentsOf(const Part& panel);

/// The tool tip that a control of a window has.
std::wstring toolTipOf(HWND control);

} // namespace probe
