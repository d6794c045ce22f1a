#pragma once

#include "toolkit/control.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace toolkit {

/// A drop-down list to choose from; the user cannot type into it.
class ComboBox : public Control {
public:
    struct Item {
        std::string text;
        std::int32_t data = 0; ///< a number of the program's own that goes with the entry
    };

    using Control::Control;

    /// Fires each time an entry, or none, is selected, also when it was selected before.
    std::function<void()> onClick;

    const std::vector<Item>& items() const noexcept { return items_; }
    void addItem(std::string text, std::int32_t data);

    /// Index of the selected entry, -1 for none.
    std::int16_t listIndex() const noexcept { return listIndex_; }
    /// Throws base::RuntimeError (InvalidProcedureCall) for an index that is neither an entry's nor -1.
    void setListIndex(std::int16_t index);

    /// Text of the selected entry; empty for none.
    std::string text() const;
    /// Number of the selected entry. Throws base::RuntimeError (SubscriptOutOfRange) for none.
    std::int32_t itemData() const;

    /// The user chose an entry.
    void choose(std::int16_t index) {
        if (enabled()) setListIndex(index);
    }

private:
    std::vector<Item> items_;
    std::int16_t listIndex_ = -1;
};

} // namespace toolkit
