#include "widgets/cLV.h"

std::int32_t cLV::GetHeaderHandle(const toolkit::ListView& CListView) const {
    return CListView.headerHandle();
}

std::int32_t cLV::FlatListView(toolkit::ListView& CListView, const toolkit::Form& /*COwner*/) const {
    const std::uint32_t style = CListView.headerStyle() ^ toolkit::ListView::HeaderButtons;
    if (style != 0) CListView.setHeaderStyle(style);
    return 0;
}

void cLV::OptimalHeaderWidth(toolkit::ListView& CListView) const {
    for (std::size_t i = 1; i < CListView.columns().size(); ++i)
        CListView.setColumnWidth(i, toolkit::ListView::FitColumn);
}
