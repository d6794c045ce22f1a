#include "toolkit/form.h"

#include "base/letters.h"
#include "toolkit/backend.h"
#include "toolkit/dispatch.h"
#include "toolkit/scoped_flag.h"
#include "toolkit/text_box.h"
#include "toolkit/timer.h"

#include <algorithm>

namespace toolkit {

namespace {

/// Holds the timers of a form as long as it lives.
class HeldTimers {
public:
    explicit HeldTimers(const std::vector<Control*>& controls) : controls_(controls) { hold(true); }
    HeldTimers(const HeldTimers&) = delete;
    HeldTimers& operator=(const HeldTimers&) = delete;
    ~HeldTimers() { hold(false); }

private:
    void hold(bool held) const {
        for (Control* control : controls_)
            if (auto* timer = dynamic_cast<Timer*>(control)) timer->hold(held);
    }

    const std::vector<Control*>& controls_;
};

} // namespace

Form::~Form() = default;

Control* Form::find(std::string_view name) const {
    const auto found = std::find_if(controls_.begin(), controls_.end(),
                                    [name](const Control* c) { return base::sameNoCase(c->name(), name); });
    return found == controls_.end() ? nullptr : *found;
}

Button* Form::enterButton(Control* focus) const {
    if (auto* button = dynamic_cast<Button*>(focus)) return button;
    const auto* box = dynamic_cast<TextBox*>(focus);
    return box != nullptr && box->enterButton() != nullptr ? box->enterButton() : defaultButton_;
}

void Form::enterPressed(Control* focus) {
    const bool busy = std::any_of(controls_.begin(), controls_.end(), [](Control* control) {
        const auto* button = dynamic_cast<Button*>(control);
        return button != nullptr && button->handling();
    });
    Button* const button = enterButton(focus);
    if (!busy && button != nullptr) button->click();
}

void Form::load() {
    if (loaded()) return;
    unloading_ = false;
    const HeldTimers held(controls_);
    view_ = backend::createFormView(*this);
    attach(view_.get());
    if (onLoad) onLoad();
}

void Form::show(Form* owner) {
    load();
    view_->open(owner == nullptr ? nullptr : owner->view_.get());
}

void Form::showModal(Form& owner) {
    throwIfEndIsDue();
    load();
    // The load may have closed the window again.
    if (!loaded()) return;
    view_->openModal(owner.view_.get());
    throwIfEnding();
}

void Form::restore() {
    if (loaded()) view_->restore();
}

void Form::closeRequested() {
    if (asked_) return;
    if (onCloseRequested) {
        const ScopedFlag asked(asked_);
        if (!onCloseRequested()) return;
    }
    unload();
}

void Form::unload() {
    if (!loaded() || unloading_) return;
    if (onQueryUnload) {
        const ScopedFlag unloading(unloading_); // one that is unwound can begin anew
        onQueryUnload();
    }
    unloading_ = true;
    // The view itself stays until the form is loaded again or goes: unload() may have been called from inside
    // of it.
    view_->close();
    attach(nullptr);
    if (onUnload) onUnload();
}

} // namespace toolkit
