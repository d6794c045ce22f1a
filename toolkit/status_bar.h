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
    void setText(std::string_view text) { setText(text, 0); }

    /// A text that grows at its end: where it has no room, its first `head` bytes and its end are shown.
    void setGrowingText(std::string_view text, std::size_t head) { setText(text, head); }
    /// What of the text stays in front of its end; 0 for a text that is cut at its end.
    std::size_t head() const noexcept { return head_; }

    const base::Picture& picture() const noexcept { return picture_; }
    void setPicture(const base::Picture& picture) { assign(picture_, picture, Property::Picture); }

private:
    void setText(std::string_view text, std::size_t head) {
        head_ = head; // no other head comes with the same text
        assign(text_, text, Property::Text);
    }

    std::string text_;
    std::size_t head_ = 0;
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
