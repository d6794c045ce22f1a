#pragma once

#include "toolkit/control.h"

namespace toolkit {

/// A frame around other controls; its caption is its only content.
class Frame : public Control {
public:
    using Control::Control;

    const std::string& caption() const noexcept { return caption_; }
    void setCaption(std::string_view caption) { assign(caption_, caption, Property::Caption); }

private:
    std::string caption_;
};

} // namespace toolkit
