#include "toolkit/combo_box.h"

#include "base/runtime_error.h"

#include <utility>

namespace toolkit {

void ComboBox::addItem(std::string text, std::int32_t data) {
    items_.push_back({std::move(text), data});
    notify(Property::Items);
}

void ComboBox::setListIndex(std::int16_t index) {
    if (index < -1 || (index >= 0 && static_cast<std::size_t>(index) >= items_.size()))
        throw base::RuntimeError(base::ErrorNumber::InvalidProcedureCall, name());
    assign(listIndex_, index, Property::ListIndex);
    if (onClick) onClick();
}

std::string ComboBox::text() const {
    return listIndex_ < 0 ? std::string() : items_[static_cast<std::size_t>(listIndex_)].text;
}

std::int32_t ComboBox::itemData() const {
    if (listIndex_ < 0) throw base::RuntimeError(base::ErrorNumber::SubscriptOutOfRange, name());
    return items_[static_cast<std::size_t>(listIndex_)].data;
}

} // namespace toolkit
