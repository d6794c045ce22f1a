#include "toolkit/button.h"

#include "toolkit/qt/binding.h"
#include "toolkit/qt/captioned.h"

namespace toolkit::qt {

/// A push button, or one of the kind that has no room to give away.
std::unique_ptr<Adaptor> adaptButton(Control& control, QObject* part) {
    return adaptWidget<CaptionedAdaptor<Button>, Button, QAbstractButton>(control, part);
}

} // namespace toolkit::qt
