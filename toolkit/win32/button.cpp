#include "toolkit/button.h"

#include "toolkit/win32/accessible_text.h"
#include "toolkit/win32/binding.h"
#include "toolkit/win32/captioned.h"
#include "toolkit/win32/painting.h"

namespace toolkit::win32 {

namespace {

/// What a button is called that shows a mere sign stands in the layout behind a tab.
///
/// Of a disabled button the text tells what to do, so it is drawn to be read.
/// https://learn.microsoft.com/windows/win32/controls/nm-customdraw-button
class ButtonAdaptor : public ClickedAdaptor<Button> {
public:
    ButtonAdaptor(Button& button, FormWindow& window, HWND part) : ClickedAdaptor(button, window, part) {
        const std::wstring text = windowText(part);
        const std::size_t tab = text.find(L'\t');
        if (tab == std::wstring::npos) return;
        setWindowText(part, text.substr(0, tab));
        speak(part, Spoken::Name, text.substr(tab + 1));
    }

    std::optional<LRESULT> notified(const NMHDR& header) override {
        if (header.code != NM_CUSTOMDRAW || IsWindowEnabled(part()) != FALSE) return {};
        const auto& drawing = reinterpret_cast<const NMCUSTOMDRAW&>(header);
        if (drawing.dwDrawStage != CDDS_PREPAINT) return CDRF_DODEFAULT;
        const bool hidden = (SendMessageW(part(), WM_QUERYUISTATE, 0, 0) & UISF_HIDEACCEL) != 0;
        const UINT prefix = hidden ? DT_HIDEPREFIX : 0;
        const ChosenFont font(drawing.hdc, part());
        drawText(drawing.hdc, windowText(part()), drawing.rc, DT_CENTER | DT_VCENTER | DT_SINGLELINE | prefix,
                 disabledTextColor());
        return CDRF_SKIPDEFAULT;
    }
};

} // namespace

std::unique_ptr<Adaptor> adaptButton(Control& control, const Place& place) {
    return adaptPart<ButtonAdaptor, Button>(control, place, WC_BUTTONW);
}

} // namespace toolkit::win32
