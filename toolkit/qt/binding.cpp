#include "toolkit/qt/binding.h"

#include "toolkit/qt/texts.h"

#include <algorithm>

namespace toolkit::qt {

namespace {

constexpr auto kinds = {adaptLabel,       adaptOptionButton, adaptButton,    adaptMenuItem, adaptTextBox,
                        adaptStatusPanel, adaptFrame,        adaptCheckBox,  adaptComboBox, adaptImage,
                        adaptPictureBox,  adaptTimer,        adaptStatusBar, adaptListView, adaptProgressBar};

std::unique_ptr<Adaptor> adapt(Control& control, QWidget& window) {
    auto* part = window.findChild<QObject*>(fromUtf8(control.name()));
    for (const auto kind : kinds)
        if (std::unique_ptr<Adaptor> adaptor = kind(control, part)) return adaptor;
    qFatal("The layout of %s has no part that can show the control %s.", qUtf8Printable(window.objectName()),
           control.name().c_str());
}

} // namespace

std::vector<std::unique_ptr<Adaptor>> bindControls(const std::vector<Control*>& controls, QWidget& window) {
    std::vector<std::unique_ptr<Adaptor>> adaptors;
    adaptors.reserve(controls.size());
    for (Control* control : controls)
        adaptors.push_back(adapt(*control, window));
    for (const auto& adaptor : adaptors)
        adaptor->bind();
    return adaptors;
}

} // namespace toolkit::qt
