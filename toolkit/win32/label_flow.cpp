#include "toolkit/win32/label_flow.h"

#include "toolkit/share_room.h"
#include "toolkit/win32/label_text.h"
#include "toolkit/win32/placement.h"
#include "toolkit/win32/resource.h"

#include <algorithm>
#include <array>
#include <vector>

namespace toolkit::win32 {

namespace {

constexpr int gap = 4; ///< pixels at 96 a inch
constexpr std::size_t most = 4;

/// From the top on; 0 is none. Together they reach from the first one's upper edge to the last one's lower
/// one.
constexpr std::array<std::array<int, most>, 3> groups = {{
    {lbl_news_0, lbl_news_1, lbl_news_2, lbl_news_3},
    {lbl_firmstand, lbl_Aenderung},
    {lbl_settstand, lbl_reihenfolge},
}};

std::vector<HWND> groupOf(HWND dialog, HWND label) {
    std::vector<HWND> labels;
    for (const auto& group : groups) {
        if (std::find(group.begin(), group.end(), GetDlgCtrlID(label)) == group.end()) continue;
        for (const int number : group)
            if (HWND const part = number == 0 ? nullptr : GetDlgItem(dialog, number)) labels.push_back(part);
    }
    return labels;
}

} // namespace

void flowLabels(HWND dialog, HWND label) {
    const std::vector<HWND> labels = groupOf(dialog, label);
    if (labels.empty()) return;
    const RECT first = placeIn(dialog, labels.front());
    const int between = scaled(dialog, gap);
    std::vector<int> needs;
    needs.reserve(labels.size());
    for (HWND part : labels)
        needs.push_back(std::max(textHeight(part, first.right - first.left), lineHeight(part)));
    const int room =
        placeIn(dialog, labels.back()).bottom - first.top - between * (static_cast<int>(labels.size()) - 1);
    const std::vector<int> heights = shareRoom(needs, room);
    int top = first.top;
    for (std::size_t i = 0; i < labels.size(); ++i) {
        SetWindowPos(labels[i], nullptr, first.left, top, first.right - first.left, heights[i],
                     SWP_NOZORDER | SWP_NOACTIVATE);
        InvalidateRect(labels[i], nullptr, FALSE);
        top += heights[i] + between;
    }
}

} // namespace toolkit::win32
