#include "toolkit/list_view.h"

#include "base/runtime_error.h"

#include <utility>

namespace toolkit {

void ListView::addColumn(std::string header, std::int32_t width) {
    columns_.push_back({std::move(header), width});
    notify(Property::Items);
}

void ListView::setColumnWidth(std::size_t column, std::int32_t width) {
    if (column >= columns_.size()) throw base::RuntimeError(base::ErrorNumber::SubscriptOutOfRange, name());
    assign(columns_[column].width, width, Property::Items);
}

std::size_t ListView::addItem(std::string text) {
    items_.push_back({std::move(text)});
    toolTips_.emplace_back();
    notify(Property::Items);
    return items_.size() - 1;
}

void ListView::setSubItem(std::size_t item, std::size_t column, const std::string& text) {
    if (item >= items_.size() || column == 0 || column >= columns_.size())
        throw base::RuntimeError(base::ErrorNumber::SubscriptOutOfRange, name());
    if (items_[item].size() <= column) items_[item].resize(column + 1);
    assign(items_[item][column], text, Property::Items);
}

void ListView::setItemToolTip(std::size_t item, std::string_view text) {
    if (item >= items_.size()) throw base::RuntimeError(base::ErrorNumber::SubscriptOutOfRange, name());
    assign(toolTips_[item], text, Property::Items);
}

void ListView::click(std::size_t item) {
    if (!enabled() || item >= items_.size()) return;
    selected_ = static_cast<std::int32_t>(item);
    if (onItemClick) onItemClick(item);
}

void ListView::doubleClick() {
    if (enabled() && onDoubleClick) onDoubleClick();
}

} // namespace toolkit
