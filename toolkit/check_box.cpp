#include "toolkit/check_box.h"

#include "base/runtime_error.h"

namespace toolkit {

void CheckBox::setValue(std::int16_t value) {
    if (value < Unchecked || value > Grayed)
        throw base::RuntimeError(base::ErrorNumber::InvalidProcedureCall, name());
    if (assign(value_, value, Property::Value) && onClick) onClick();
}

void CheckBox::click() {
    if (enabled()) setValue(value_ == Unchecked ? Checked : Unchecked);
}

} // namespace toolkit
