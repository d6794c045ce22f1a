// How controls find their parts of a layout.
#pragma once

#include "toolkit/qt/adaptor.h"

#include <memory>
#include <vector>

namespace toolkit::qt {

// One for each kind of control. Null when the control is of another kind, or `part` (null when the layout has
// nothing of that name) cannot show it.
std::unique_ptr<Adaptor> adaptButton(Control& control, QObject* part);
std::unique_ptr<Adaptor> adaptCheckBox(Control& control, QObject* part);
std::unique_ptr<Adaptor> adaptComboBox(Control& control, QObject* part);
std::unique_ptr<Adaptor> adaptFrame(Control& control, QObject* part);
std::unique_ptr<Adaptor> adaptImage(Control& control, QObject* part);
std::unique_ptr<Adaptor> adaptLabel(Control& control, QObject* part);
std::unique_ptr<Adaptor> adaptListView(Control& control, QObject* part);
std::unique_ptr<Adaptor> adaptMenuItem(Control& control, QObject* part);
std::unique_ptr<Adaptor> adaptOptionButton(Control& control, QObject* part);
std::unique_ptr<Adaptor> adaptPictureBox(Control& control, QObject* part);
std::unique_ptr<Adaptor> adaptProgressBar(Control& control, QObject* part);
std::unique_ptr<Adaptor> adaptStatusBar(Control& control, QObject* part);
std::unique_ptr<Adaptor> adaptStatusPanel(Control& control, QObject* part);
std::unique_ptr<Adaptor> adaptTextBox(Control& control, QObject* part);
std::unique_ptr<Adaptor> adaptTimer(Control& control, QObject* part);

/// Binds each control to the part of the window that bears its name. Parts that no control claims stay as
/// they are. Ends the program with a message on standard error when a control finds none: the layout is
/// defective.
std::vector<std::unique_ptr<Adaptor>> bindControls(const std::vector<Control*>& controls, QWidget& window);

} // namespace toolkit::qt
