// How controls find their parts of a window.
#pragma once

#include "toolkit/win32/adaptor.h"
#include "toolkit/win32/window_class.h"

#include <memory>
#include <string_view>
#include <vector>

namespace toolkit::win32 {

/// Where a control's part is looked for.
struct Place {
    FormWindow& window;
    HWND part = nullptr; ///< the native control with the control's number; null when there is none
};

// One for each kind of control. Null when the control is of another kind, or the window has nothing that can
// show it.
std::unique_ptr<Adaptor> adaptButton(Control& control, const Place& place);
std::unique_ptr<Adaptor> adaptCheckBox(Control& control, const Place& place);
std::unique_ptr<Adaptor> adaptComboBox(Control& control, const Place& place);
std::unique_ptr<Adaptor> adaptFrame(Control& control, const Place& place);
std::unique_ptr<Adaptor> adaptImage(Control& control, const Place& place);
std::unique_ptr<Adaptor> adaptLabel(Control& control, const Place& place);
std::unique_ptr<Adaptor> adaptListView(Control& control, const Place& place);
std::unique_ptr<Adaptor> adaptMenuItem(Control& control, const Place& place);
std::unique_ptr<Adaptor> adaptOptionButton(Control& control, const Place& place);
std::unique_ptr<Adaptor> adaptPictureBox(Control& control, const Place& place);
std::unique_ptr<Adaptor> adaptProgressBar(Control& control, const Place& place);
std::unique_ptr<Adaptor> adaptStatusBar(Control& control, const Place& place);
std::unique_ptr<Adaptor> adaptStatusPanel(Control& control, const Place& place);
std::unique_ptr<Adaptor> adaptTextBox(Control& control, const Place& place);
std::unique_ptr<Adaptor> adaptTimer(Control& control, const Place& place);

/// The adaptor of that type for a control of that kind and a native control of that class; null when one of
/// them is another.
template <typename AdaptorType, typename Kind>
std::unique_ptr<Adaptor> adaptPart(Control& control, const Place& place, std::wstring_view nativeClass) {
    auto* kind = dynamic_cast<Kind*>(&control);
    if (kind == nullptr || !isOfClass(place.part, nativeClass)) return nullptr;
    return std::make_unique<AdaptorType>(*kind, place.window, place.part);
}

/// Binds each control to the part of the window that bears its name. Parts that no control claims stay as
/// they are. Ends the program with a message when a control finds none: the layout is defective.
void bindControls(const std::vector<Control*>& controls, FormWindow& window);

} // namespace toolkit::win32
