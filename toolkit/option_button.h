#pragma once

#include "toolkit/control.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <utility>

namespace toolkit {

/// One of several choices that exclude each other; always an element of an OptionArray.
class OptionButton : public Control {
public:
    using Control::Control;

    const std::string& caption() const noexcept { return caption_; }
    void setCaption(std::string_view caption) { assign(caption_, caption, Property::Caption); }

    bool value() const noexcept { return value_; }
    /// Selecting unselects the other elements of the array and, when it is a change, fires the array's click;
    /// unselecting fires nothing.
    void setValue(bool selected);

    /// The user chose this button.
    void click() {
        if (enabled()) setValue(true);
    }

private:
    template <std::size_t Count>
    friend class OptionArray;

    std::string caption_;
    std::function<void(OptionButton&)> selected_;
    bool value_ = false;
};

/// A control array of option buttons, named `Name_0`, `Name_1`, …
template <std::size_t Count>
class OptionArray {
public:
    explicit OptionArray(const std::string& name) {
        for (std::size_t i = 0; i < Count; ++i) {
            elements_[i] = std::make_unique<OptionButton>(name + "_" + std::to_string(i));
            elements_[i]->selected_ = [this, i](OptionButton& button) { select(button, i); };
        }
    }

    /// Fires with the index of the element that has just been selected.
    std::function<void(std::int16_t)> onClick;

    OptionButton& operator[](std::size_t index) { return *elements_.at(index); }
    const OptionButton& operator[](std::size_t index) const { return *elements_.at(index); }
    constexpr std::size_t size() const noexcept { return Count; }

private:
    void select(OptionButton& button, std::size_t index) {
        for (auto& other : elements_)
            if (other.get() != &button) other->setValue(false);
        if (onClick) onClick(static_cast<std::int16_t>(index));
    }

    std::array<std::unique_ptr<OptionButton>, Count> elements_;
};

inline void OptionButton::setValue(bool selected) {
    if (assign(value_, selected, Property::Value) && selected && selected_) selected_(*this);
}

} // namespace toolkit
