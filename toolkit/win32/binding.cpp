#include "toolkit/win32/binding.h"

#include "toolkit/win32/resource_names.h"

#include <utility>

namespace toolkit::win32 {

namespace {

constexpr auto kinds = {adaptLabel,       adaptOptionButton, adaptButton,    adaptMenuItem, adaptTextBox,
                        adaptStatusPanel, adaptFrame,        adaptCheckBox,  adaptComboBox, adaptImage,
                        adaptPictureBox,  adaptTimer,        adaptStatusBar, adaptListView, adaptProgressBar};

std::unique_ptr<Adaptor> adapt(Control& control, const Place& place) {
    for (const auto kind : kinds)
        if (std::unique_ptr<Adaptor> adaptor = kind(control, place)) return adaptor;
    defectiveLayout(place.window.name(), control.name());
}

} // namespace

void bindControls(const std::vector<Control*>& controls, FormWindow& window) {
    for (Control* control : controls) {
        const int number = resourceNumber(control->name());
        HWND const part = number == 0 ? nullptr : GetDlgItem(window.handle(), number);
        window.add(number, adapt(*control, {window, part}));
    }
    for (const auto& adaptor : window.adaptors())
        adaptor->bind();
}

} // namespace toolkit::win32
