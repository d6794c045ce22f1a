#include "toolkit/frame.h"

#include "toolkit/win32/binding.h"
#include "toolkit/win32/captioned.h"

namespace toolkit::win32 {

std::unique_ptr<Adaptor> adaptFrame(Control& control, const Place& place) {
    return adaptPart<CaptionedAdaptor<Frame>, Frame>(control, place, WC_BUTTONW);
}

} // namespace toolkit::win32
