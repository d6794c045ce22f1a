#pragma once

#include "toolkit/control.h"
#include "toolkit/control_array.h"
#include "toolkit/picture.h"

namespace toolkit {

/// One field of a status bar: a text and, in front of it, a picture.
class StatusPanel : public Control {
public:
    using Control::Control;

    const std::string& text() const noexcept { return text_; }
    void setText(std::string_view text) { assign(text_, text, Property::Text); }

    const base::Picture& picture() const noexcept { return picture_; }
    void setPicture(const base::Picture& picture) { assign(picture_, picture, Property::Picture); }

private:
    std::string text_;
    base::Picture picture_;
};

/// A row of two panels, which are numbered from 1.
class StatusBar : public Control {
public:
    explicit StatusBar(const std::string& name) : Control(name), panels_(name, 1) {}

    StatusPanel& panel(std::size_t number) { return panels_[number - 1]; }

private:
    ControlArray<StatusPanel, 2> panels_;
};

} // namespace toolkit
