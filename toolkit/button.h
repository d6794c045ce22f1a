#pragma once

#include "toolkit/control.h"

#include <functional>

namespace toolkit {

class Button : public Control {
public:
    using Control::Control;

    std::function<void()> onClick;

    const std::string& caption() const noexcept { return caption_; }
    void setCaption(std::string_view caption) { assign(caption_, caption, Property::Caption); }

    /// The user pressed the button. A disabled button is deaf.
    void click() {
        if (enabled() && onClick) onClick();
    }

private:
    std::string caption_;
};

/// An item of a menu. A caption of "-" is a separator.
using MenuItem = Button;

} // namespace toolkit
