#include "toolkit/button.h"

#include "toolkit/qt/binding.h"
#include "toolkit/qt/captioned.h"

#include <QPushButton>

namespace toolkit::qt {

std::unique_ptr<Adaptor> adaptButton(Control& control, QObject* part) {
    return adaptWidget<CaptionedAdaptor<Button>, Button, QPushButton>(control, part);
}

} // namespace toolkit::qt
