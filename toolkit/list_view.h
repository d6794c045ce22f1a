#pragma once

#include "toolkit/control.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace toolkit {

/// Rows of texts in columns under a header.
class ListView : public Control {
public:
    /// Values of view(); only this one is used. Windows: the list view's report view.
    enum : std::int16_t { Icons = 0, Report = 3 };

    /// Style bit of the header: its fields look and act as buttons. Windows: HDS_BUTTONS.
    static constexpr std::uint32_t HeaderButtons = 2;

    /// Width that fits a column to its texts and its header. Windows: LVSCW_AUTOSIZE_USEHEADER.
    static constexpr std::int32_t FitColumn = -2;

    /// Notification that a field of the header is about to change. Windows: HDN_ITEMCHANGINGA.
    static constexpr std::int32_t HeaderItemChanging = -300;

    struct Column {
        std::string header;
        std::int32_t width = 0; ///< twips (1/1440 inch), or FitColumn
    };

    /// The texts of a row, one for each column.
    using Item = std::vector<std::string>;

    using Control::Control;

    /// The user chose a row, by mouse or keyboard.
    std::function<void(std::size_t item)> onItemClick;
    /// The user double-clicked a row.
    std::function<void()> onDoubleClick;
    /// The header is about to change; true refuses it. `code` is the notification's number. Windows:
    /// WM_NOTIFY.
    std::function<bool(std::int32_t code)> onHeaderNotify;

    std::int16_t view() const noexcept { return listView_; }
    void setView(std::int16_t view) { assign(listView_, view, Property::Value); }

    const std::vector<Column>& columns() const noexcept { return columns_; }
    void addColumn(std::string header, std::int32_t width);
    /// Throws base::RuntimeError (SubscriptOutOfRange) when there is no such column.
    void setColumnWidth(std::size_t column, std::int32_t width);

    const std::vector<Item>& items() const noexcept { return items_; }
    /// Adds a row with its first text and returns its index.
    std::size_t addItem(std::string text);
    /// Text of a row in column `column` (from 1). Throws base::RuntimeError (SubscriptOutOfRange) when there
    /// is none.
    void setSubItem(std::size_t item, std::size_t column, const std::string& text);

    /// What the tool tip of a row says; nothing at first. Throws base::RuntimeError (SubscriptOutOfRange)
    /// when there is no such row.
    void setItemToolTip(std::size_t item, std::string_view text);
    const std::string& itemToolTip(std::size_t item) const { return toolTips_.at(item); }

    /// Row that is marked; none at first.
    std::int32_t selected() const noexcept { return selected_; }
    void setSelected(std::int32_t item) { assign(selected_, item, Property::ListIndex); }

    /// Handle of the header, which only a report view has; else 0.
    std::int32_t headerHandle() const noexcept { return listView_ == Report ? headerId : 0; }

    /// Style bits of the header; a new one is a visible child window with buttons.
    std::uint32_t headerStyle() const noexcept { return headerStyle_; }
    void setHeaderStyle(std::uint32_t style) { assign(headerStyle_, style, Property::Drawing); }

    /// The user clicked a row or moved to it.
    void click(std::size_t item);
    void doubleClick();
    /// True when the change is refused.
    bool headerNotify(std::int32_t code) const { return onHeaderNotify && onHeaderNotify(code); }

private:
    static constexpr std::int32_t headerId = 1;
    static constexpr std::uint32_t visibleChild = 0x50000000;

    std::vector<Column> columns_;
    std::vector<Item> items_;
    std::vector<std::string> toolTips_; ///< one for each row
    std::uint32_t headerStyle_ = visibleChild | HeaderButtons;
    std::int32_t selected_ = -1;
    std::int16_t listView_ = Icons;
};

} // namespace toolkit
