#include "toolkit/button.h"

#include "toolkit/win32/binding.h"
#include "toolkit/win32/captioned.h"

namespace toolkit::win32 {

std::unique_ptr<Adaptor> adaptButton(Control& control, const Place& place) {
    return adaptPart<ClickedAdaptor<Button>, Button>(control, place, WC_BUTTONW);
}

} // namespace toolkit::win32
