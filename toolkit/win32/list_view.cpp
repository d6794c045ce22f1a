#include "toolkit/list_view.h"

#include "toolkit/held_events.h"
#include "toolkit/scoped_flag.h"
#include "toolkit/shown_text.h"
#include "toolkit/win32/binding.h"
#include "toolkit/win32/subclass.h"
#include "toolkit/win32/texts.h"
#include "toolkit/win32/tool_tips.h"

#include <utility>

namespace toolkit::win32 {

namespace {

constexpr int twipsPerInch = 1440;

static_assert(static_cast<std::int32_t>(HDN_ITEMCHANGINGA) == ListView::HeaderItemChanging);

/// The question comes in a form for each width of characters. The core knows the narrow one.
std::int32_t narrowCode(UINT code) {
    return static_cast<std::int32_t>(code == HDN_ITEMCHANGINGW ? HDN_ITEMCHANGINGA : code);
}

/// Shows the list as rows in columns. The marked row is the control's; what the user marks is reported first.
class ListViewAdaptor : public PartAdaptor, private Subclass {
public:
    ListViewAdaptor(ListView& list, FormWindow& window, HWND part)
        : PartAdaptor(list, window, part), Subclass(part), list_(list) {
        constexpr LPARAM style = LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER | LVS_EX_LABELTIP;
        SendMessageW(part, LVM_SETEXTENDEDLISTVIEWSTYLE, style, style);
        shows(Property::Items, [this] { itemsChanged(); });
        showsChanges({Property::ListIndex}, [this] { showSelected(); });
        showsChanges({Property::Drawing}, [this] { showHeaderStyle(); });
    }

    std::optional<LRESULT> notified(const NMHDR& header) override {
        switch (header.code) {
        case LVN_ITEMCHANGED:
            itemChanged(reinterpret_cast<const NMLISTVIEW&>(header));
            break;
        case NM_CLICK:
        case NM_RCLICK:
            pressed(reinterpret_cast<const NMITEMACTIVATE&>(header).iItem);
            break;
        case NM_DBLCLK:
            if (reinterpret_cast<const NMITEMACTIVATE&>(header).iItem >= 0)
                send([this] { list_.doubleClick(); });
            break;
        default:
            break;
        }
        return {};
    }

    void rescale() override {
        if (bound()) showWidths();
    }

    void settle() override {
        if (bound()) showSelected();
    }

protected:
    void adoptDesign() override {
        PartAdaptor::adoptDesign();
        if (header() != nullptr)
            list_.setHeaderStyle(static_cast<std::uint32_t>(GetWindowLongPtrW(header(), GWL_STYLE)));
    }

private:
    HWND header() const { return reinterpret_cast<HWND>(SendMessageW(part(), LVM_GETHEADER, 0, 0)); }

    int selectedRow() const {
        return static_cast<int>(
            SendMessageW(part(), LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED));
    }

    /// The header tells the list, its owner, what is to become of it.
    LRESULT received(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (message == WM_MOUSEMOVE && bound() && topRow() != shownTop_) showRowTips(); // it was scrolled
        if (message == WM_LBUTTONDOWN || message == WM_RBUTTONDOWN) reported_ = false;
        if (message != WM_NOTIFY) return next(message, wParam, lParam);
        const auto& notice = *reinterpret_cast<const NMHDR*>(lParam);
        if (notice.hwndFrom != header() || showing_) return next(message, wParam, lParam);
        if (eventsAreHeld()) return TRUE; // nobody would answer
        bool refused = false;
        send([&] { refused = list_.headerNotify(narrowCode(notice.code)); });
        if (refused) return TRUE;
        const LRESULT result = next(message, wParam, lParam);
        if (notice.code == HDN_ITEMCHANGEDW || notice.code == HDN_ITEMCHANGEDA)
            columnChanged(reinterpret_cast<const NMHEADERW&>(notice));
        return result;
    }

    void itemChanged(const NMLISTVIEW& change) {
        if (showing_ || (change.uChanged & LVIF_STATE) == 0) return;
        const bool before = (change.uOldState & LVIS_SELECTED) != 0;
        const bool after = (change.uNewState & LVIS_SELECTED) != 0;
        if (!before && after) report(change.iItem);
        if (before && !after) postSettle(); // a click beside the rows leaves the mark where it is
    }

    /// A press on the marked row changes nothing here, and is a choice nevertheless.
    void pressed(int row) {
        if (row >= 0 && !reported_) report(row);
    }

    void report(int row) {
        reported_ = true;
        send([this, row] { list_.click(static_cast<std::size_t>(row)); });
        postSettle();
    }

    void columnChanged(const NMHEADERW& change) {
        const auto column = static_cast<std::size_t>(change.iItem);
        if (!bound() || change.pitem == nullptr || (change.pitem->mask & HDI_WIDTH) == 0) return;
        const int width = change.pitem->cxy;
        if (column >= list_.columns().size() || width == pixels(list_.columns()[column].width)) return;
        const ScopedFlag reporting(reportingWidth_);
        send([this, column, width] { list_.setColumnWidth(column, twips(width)); });
    }

    void showSelected() {
        if (selectedRow() == list_.selected()) return;
        const ScopedFlag showing(showing_);
        LVITEMW state{};
        state.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
        SendMessageW(part(), LVM_SETITEMSTATE, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(&state));
        if (list_.selected() < 0) return;
        state.state = LVIS_SELECTED | LVIS_FOCUSED;
        SendMessageW(part(), LVM_SETITEMSTATE, static_cast<WPARAM>(list_.selected()),
                     reinterpret_cast<LPARAM>(&state));
    }

    /// A width that the user has set is on the screen already.
    void itemsChanged() {
        if (!reportingWidth_) showItems();
    }

    void showItems() {
        {
            const ScopedFlag showing(showing_);
            SendMessageW(part(), LVM_DELETEALLITEMS, 0, 0);
            while (SendMessageW(part(), LVM_DELETECOLUMN, 0, 0) != FALSE) {
            }
            for (std::size_t column = 0; column < list_.columns().size(); ++column)
                insertColumn(static_cast<int>(column), fromUtf8(list_.columns()[column].header));
            for (std::size_t row = 0; row < list_.items().size(); ++row)
                insertRow(static_cast<int>(row), list_.items()[row]);
        }
        showWidths();
        showSelected();
    }

    void insertColumn(int number, std::wstring text) {
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT | LVCF_SUBITEM;
        column.pszText = text.data();
        column.iSubItem = number;
        SendMessageW(part(), LVM_INSERTCOLUMNW, static_cast<WPARAM>(number),
                     reinterpret_cast<LPARAM>(&column));
    }

    void insertRow(int row, const ListView::Item& texts) {
        for (std::size_t column = 0; column < texts.size(); ++column) {
            std::wstring text = fromUtf8(shownText(texts[column]));
            LVITEMW item{};
            item.mask = LVIF_TEXT;
            item.iItem = row;
            item.iSubItem = static_cast<int>(column);
            item.pszText = text.data();
            SendMessageW(part(), column == 0 ? LVM_INSERTITEMW : LVM_SETITEMW, 0,
                         reinterpret_cast<LPARAM>(&item));
        }
    }

    void showWidths() {
        const ScopedFlag showing(showing_);
        for (std::size_t column = 0; column < list_.columns().size(); ++column) {
            const std::int32_t given = list_.columns()[column].width;
            const int width = given < 0 ? LVSCW_AUTOSIZE_USEHEADER : pixels(given);
            SendMessageW(part(), LVM_SETCOLUMNWIDTH, column, width);
        }
        showHeaderTips();
        showRowTips();
    }

    /// A column may be too narrow for its header.
    void showHeaderTips() {
        for (std::size_t column = 0; column < list_.columns().size(); ++column) {
            RECT place{};
            SendMessageW(header(), HDM_GETITEMRECT, column, reinterpret_cast<LPARAM>(&place));
            window().toolTips().setRegion(header(), static_cast<int>(column) + 1, place,
                                          list_.columns()[column].header);
        }
    }

    void showRowTips() {
        shownTop_ = topRow();
        for (std::size_t row = 0; row < list_.items().size(); ++row) {
            RECT place{LVIR_BOUNDS, 0, 0, 0};
            SendMessageW(part(), LVM_GETITEMRECT, row, reinterpret_cast<LPARAM>(&place));
            window().toolTips().setRegion(part(), static_cast<int>(row) + 1, place, list_.itemToolTip(row));
        }
    }

    LRESULT topRow() const { return SendMessageW(part(), LVM_GETTOPINDEX, 0, 0); }

    /// The other bits change with the state of the list.
    void showHeaderStyle() {
        constexpr LONG_PTR buttons = HDS_BUTTONS;
        const LONG_PTR others = GetWindowLongPtrW(header(), GWL_STYLE) & ~buttons;
        SetWindowLongPtrW(header(), GWL_STYLE, others | (LONG_PTR{list_.headerStyle()} & buttons));
        SetWindowPos(part(), nullptr, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE | SWP_NOZORDER | SWP_FRAMECHANGED);
        InvalidateRect(header(), nullptr, TRUE);
    }

    int dpi() const { return static_cast<int>(GetDpiForWindow(part())); }
    int pixels(std::int32_t twips) const { return MulDiv(twips, dpi(), twipsPerInch); }
    std::int32_t twips(int pixels) const { return MulDiv(pixels, twipsPerInch, dpi()); }

    ListView& list_;
    LRESULT shownTop_ = 0;  ///< the first row in view, as the tool tips know it
    bool reported_ = false; ///< since the last press of a mouse button
    bool showing_ = false;  ///< the program changes the list, not the user
    bool reportingWidth_ = false;
};

} // namespace

std::unique_ptr<Adaptor> adaptListView(Control& control, const Place& place) {
    return adaptPart<ListViewAdaptor, ListView>(control, place, WC_LISTVIEWW);
}

} // namespace toolkit::win32
