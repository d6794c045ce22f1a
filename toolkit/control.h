// What every control of a window has in common.
#pragma once

#include <string>
#include <string_view>

namespace toolkit {

/// What a control tells its view to show anew.
enum class Property {
    Alert,
    BackColor,
    Caption,
    Drawing,
    Enabled,
    Focus,
    Icon,
    Interval,
    Items,
    ListIndex,
    Picture,
    Selection,
    Text,
    ToolTip,
    Value,
    Visible,
};

/// A backend's side of one control. The backend owns it and keeps it alive as long as the control's window
/// is; it shows what it is told and decides nothing.
class View {
public:
    View() = default;
    View(const View&) = delete;
    View& operator=(const View&) = delete;
    virtual ~View() = default;

    /// The property has a new value: show it. Called on the user-interface thread.
    virtual void show(Property property) = 0;
};

/// A named part of a window, as the program sees it: values with setters, and callbacks for its events.
///
/// Every setter has the same shape: nothing happens when the value does not change; otherwise the value is
/// stored and the view is told.
class Control {
public:
    explicit Control(std::string name) : name_(std::move(name)) {}
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;
    virtual ~Control() = default;

    /// The name the control has in the layout, too; element i of a control array is `Name_i`.
    const std::string& name() const noexcept { return name_; }

    bool enabled() const noexcept { return enabled_; }
    void setEnabled(bool enabled) { assign(enabled_, enabled, Property::Enabled); }

    bool visible() const noexcept { return visible_; }
    void setVisible(bool visible) { assign(visible_, visible, Property::Visible); }

    const std::string& toolTip() const noexcept { return toolTip_; }
    void setToolTip(std::string_view text) { assign(toolTip_, text, Property::ToolTip); }

    /// Connects the backend's view, or disconnects it (null). The view must outlive its connection.
    void attach(View* view) noexcept { view_ = view; }
    bool attached() const noexcept { return view_ != nullptr; }

protected:
    /// Stores the value and tells the view; true when it was a change.
    template <typename Member, typename Value>
    bool assign(Member& member, const Value& value, Property property) {
        if (member == value) return false;
        member = value;
        notify(property);
        return true;
    }

    void notify(Property property) {
        if (view_ != nullptr) view_->show(property);
    }

private:
    std::string name_;
    std::string toolTip_;
    View* view_ = nullptr;
    bool enabled_ = true;
    bool visible_ = true;
};

} // namespace toolkit
