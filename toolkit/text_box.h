#pragma once

#include "toolkit/button.h"
#include "toolkit/control.h"

#include <cstddef>
#include <functional>

namespace toolkit {

/// One line of text that the user can edit (or only read, when it is locked).
class TextBox : public Control {
public:
    /// Part of the text, counted in characters.
    struct Selection {
        std::size_t start = 0;
        std::size_t length = 0;
        friend bool operator==(const Selection&, const Selection&) = default;
    };

    using Control::Control;

    /// A key that makes a character was pressed (backspace, 8, among them); the text does not have it yet.
    std::function<void(char32_t)> onKeyPress;

    const std::string& text() const noexcept { return text_; }
    /// Reports nothing.
    void setText(std::string_view text) { assign(text_, text, Property::Text); }

    const Selection& selection() const noexcept { return selection_; }
    /// Always shown: where the user has put the cursor since is not known here.
    void setSelection(Selection selection) {
        selection_ = selection;
        notify(Property::Selection);
    }

    /// The button that Enter presses in this box; null, as it is at first, for the window's default button.
    Button* enterButton() const noexcept { return enterButton_; }
    void setEnterButton(Button& button) noexcept { enterButton_ = &button; }

    /// Gives the box the keyboard focus.
    void setFocus() { notify(Property::Focus); }

    /// The user pressed a key; comes before typed() with the text as it is afterwards.
    void keyPress(char32_t character) {
        if (enabled() && onKeyPress) onKeyPress(character);
    }

    /// The user changed the text, which the view shows already. What was selected is no longer.
    void typed(std::string_view text) {
        text_ = text;
        selection_ = {};
    }

private:
    std::string text_;
    Selection selection_;
    Button* enterButton_ = nullptr;
};

} // namespace toolkit
