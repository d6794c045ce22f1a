#pragma once

#include "toolkit/control.h"

#include <cstdint>
#include <functional>

namespace toolkit {

class CheckBox : public Control {
public:
    enum : std::int16_t { Unchecked = 0, Checked = 1, Grayed = 2 };

    using Control::Control;

    /// Fires when the state changes, whoever changes it.
    std::function<void()> onClick;

    const std::string& caption() const noexcept { return caption_; }
    void setCaption(std::string_view caption) { assign(caption_, caption, Property::Caption); }

    std::int16_t value() const noexcept { return value_; }
    /// Throws base::RuntimeError (InvalidProcedureCall) for a state other than the three.
    void setValue(std::int16_t value);

    /// The user clicked the box: it changes between checked and unchecked.
    void click();

private:
    std::string caption_;
    std::int16_t value_ = Unchecked;
};

} // namespace toolkit
