// Buttons with a state that a click does not change: the click is reported, and the control then says what to
// show.
#pragma once

#include <QCheckBox>
#include <QRadioButton>

namespace toolkit::qt {

class PassiveRadioButton : public QRadioButton {
public:
    using QRadioButton::QRadioButton;

protected:
    void nextCheckState() override {}
};

class PassiveCheckBox : public QCheckBox {
public:
    using QCheckBox::QCheckBox;

protected:
    void nextCheckState() override {}
};

} // namespace toolkit::qt
