#pragma once

#include "toolkit/button.h"
#include "toolkit/control.h"
#include "toolkit/picture.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace toolkit {

class Form;

/// The platform's handle of a window. Windows: `HWND`. 0 is no window.
using WindowHandle = std::intptr_t;

/// A backend's window. It reports a close request with Form::closeRequested() and never goes away by itself.
/// It may be destroyed after the form's controls, so it must not touch them when it is.
class FormView : public View {
public:
    /// Shows the window beside its owner (null for none) and returns.
    virtual void open(FormView* owner) = 0;
    /// Shows the window, deaf to every other one, and returns when close() was called or the program ends.
    virtual void openModal(FormView* owner) = 0;
    /// Takes the window away.
    virtual void close() = 0;
    /// Brings the window back from an icon, at its normal size, in front.
    virtual void restore() = 0;
    virtual WindowHandle handle() const = 0;
    /// Whether the user works with this window, or with another one or a box of the program.
    virtual bool isProgramActive() const = 0;
};

/// A window: a list of named controls, a title and an icon.
///
/// Life: constructed, with its controls added → shown for the first time: the backend builds the window from
/// the layout of the form's name and binds every control, then onLoad; the form's timers start when that has
/// returned → unload(): onQueryUnload, the window goes, onUnload.
class Form : public Control {
public:
    using Control::Control;
    ~Form() override;

    std::function<void()> onLoad;
    /// The user, or the desktop, asked to close the window; false keeps it. Without it nothing keeps it.
    std::function<bool()> onCloseRequested;
    /// The window is about to close; comes once, whoever closes it. Closing cannot be refused any more.
    std::function<void()> onQueryUnload;
    /// The window is gone.
    std::function<void()> onUnload;

    /// The user asked for help with the window.
    std::function<void()> onHelp;

    /// Adds a control, which must live as long as the form.
    void add(Control& control) { controls_.push_back(&control); }
    const std::vector<Control*>& controls() const noexcept { return controls_; }
    /// The control of that name, in whatever case it is written; null when there is none.
    Control* find(std::string_view name) const;

    const std::string& caption() const noexcept { return caption_; }
    void setCaption(std::string_view caption) { assign(caption_, caption, Property::Caption); }

    const base::Picture& icon() const noexcept { return icon_; }
    void setIcon(const base::Picture& icon) { assign(icon_, icon, Property::Icon); }

    /// The button that Enter presses where the control that has the keyboard has none of its own.
    void setDefaultButton(Button& button) noexcept { defaultButton_ = &button; }

    /// The button that Enter presses while a control has the keyboard (null: none of them has it); null for
    /// none. A button is its own; a text box may name one.
    Button* enterButton(Control* focus) const;

    /// The user pressed Enter while that control had the keyboard. Nothing is pressed while a click on one of
    /// the form's buttons is being handled: who presses Enter twice does not mean to begin a second time.
    void enterPressed(Control* focus);

    /// The user pressed the key for help.
    void helpRequested() {
        if (onHelp) onHelp();
    }

    /// Loads the window when it is not, shows it beside `owner` and returns.
    void show(Form* owner = nullptr);
    /// The same, but returns when the window has been closed.
    void showModal(Form& owner);
    /// Brings the window back at its normal size.
    void restore();
    void unload();
    bool loaded() const noexcept { return attached(); }

    /// Handle of the loaded window, else 0.
    WindowHandle handle() const { return loaded() ? view_->handle() : 0; }

    /// Whether the user works with this window, or with another one or a box of the program; false for one
    /// that is not loaded.
    bool isProgramActive() const { return loaded() && view_->isProgramActive(); }

    /// The user, or the desktop, asked to close the window. Does nothing while an earlier request is
    /// answered.
    void closeRequested();

private:
    void load();

    std::vector<Control*> controls_;
    std::string caption_;
    base::Picture icon_;
    std::unique_ptr<FormView> view_;
    Button* defaultButton_ = nullptr;
    bool unloading_ = false;
    bool asked_ = false; ///< whether it may close, and has not answered yet
};

} // namespace toolkit
