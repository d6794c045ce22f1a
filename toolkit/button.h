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
        if (!enabled() || !onClick) return;
        const Handling handling(*this);
        onClick();
    }

    /// The handler of a click is running.
    bool handling() const noexcept { return handling_ > 0; }

private:
    /// A handler may let events run, so that another click comes in the middle of it.
    class Handling {
    public:
        explicit Handling(Button& button) noexcept : button_(button) { ++button_.handling_; }
        Handling(const Handling&) = delete;
        Handling& operator=(const Handling&) = delete;
        ~Handling() { --button_.handling_; }

    private:
        Button& button_;
    };

    std::string caption_;
    int handling_ = 0;
};

} // namespace toolkit
