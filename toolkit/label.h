#pragma once

#include "toolkit/color.h"
#include "toolkit/control.h"

#include <optional>

namespace toolkit {

/// A text that the user reads, or a colour swatch when it has a background colour of its own.
class Label : public Control {
public:
    using Control::Control;

    const std::string& caption() const noexcept { return caption_; }
    void setCaption(std::string_view caption) { assign(caption_, caption, Property::Caption); }

    /// No value: the background of the window shows through.
    const std::optional<Color>& backColor() const noexcept { return backColor_; }
    void setBackColor(Color color) { assign(backColor_, color, Property::BackColor); }

private:
    std::string caption_;
    std::optional<Color> backColor_;
};

} // namespace toolkit
