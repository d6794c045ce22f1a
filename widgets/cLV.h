#pragma once

#include "toolkit/form.h"
#include "toolkit/list_view.h"

#include <cstdint>

/// Small operations on a list in report view and its header. (As a type it is also known as "CListView".)
class cLV {
public:
    /// Gives the header a flat look, or its buttons back: it is a toggle, on purpose. Always returns 0.
    std::int32_t FlatListView(toolkit::ListView& CListView, const toolkit::Form& COwner) const;

    /// Fits every column but the first to what it shows.
    void OptimalHeaderWidth(toolkit::ListView& CListView) const;

    /// The header's handle; 0 for a list that has none. Windows: the answer to LVM_GETHEADER.
    std::int32_t GetHeaderHandle(const toolkit::ListView& CListView) const;
};
