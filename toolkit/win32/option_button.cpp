#include "toolkit/option_button.h"

#include "toolkit/scoped_flag.h"
#include "toolkit/win32/binding.h"
#include "toolkit/win32/captioned.h"
#include "toolkit/win32/message_loop.h"
#include "toolkit/win32/subclass.h"

#include <algorithm>
#include <vector>

namespace toolkit::win32 {

namespace {

bool hasStyle(HWND window, LONG_PTR style) {
    return (GetWindowLongPtrW(window, GWL_STYLE) & style) != 0;
}

/// The buttons that the arrow keys walk through: from one that begins a group up to the next that does.
std::vector<HWND> groupOf(HWND button) {
    HWND first = button;
    while (first != nullptr && !hasStyle(first, WS_GROUP))
        first = GetWindow(first, GW_HWNDPREV);
    std::vector<HWND> group;
    if (first == nullptr) return group;
    do {
        group.push_back(first);
        first = GetWindow(first, GW_HWNDNEXT);
    } while (first != nullptr && !hasStyle(first, WS_GROUP));
    return group;
}

/// The tab key stops once in a group: at the selected button, else at the first one that can be chosen.
void setTabStop(HWND button) {
    const std::vector<HWND> group = groupOf(button);
    const auto enabled = [](HWND b) { return IsWindowEnabled(b) != FALSE; };
    const auto selected = [enabled](HWND b) {
        return enabled(b) && SendMessageW(b, BM_GETCHECK, 0, 0) == BST_CHECKED;
    };
    auto stop = std::find_if(group.begin(), group.end(), selected);
    if (stop == group.end()) stop = std::find_if(group.begin(), group.end(), enabled);
    for (auto b = group.begin(); b != group.end(); ++b) {
        if (hasStyle(*b, WS_TABSTOP) == (b == stop)) continue;
        SetWindowLongPtrW(*b, GWL_STYLE, GetWindowLongPtrW(*b, GWL_STYLE) ^ WS_TABSTOP);
    }
}

class OptionButtonAdaptor : public ClickedAdaptor<OptionButton>, private Subclass {
public:
    OptionButtonAdaptor(OptionButton& option, FormWindow& window, HWND part)
        : ClickedAdaptor(option, window, part), Subclass(part) {
        // As the layout has it, the tab key stops at the first one of a group that nobody can choose from.
        const auto ofUse = [this] { return control().value() || control().enabled(); };
        const auto showValue = [this] { this->showValue(); };
        shows(Property::Value, showValue, ofUse);
        showsChanges({Property::Enabled}, [this] { showTabStop(); });
    }

    /// A native option button says that it was clicked when it merely gets the keyboard focus, too.
    void command(unsigned notification) override {
        if (!focusing_) ClickedAdaptor::command(notification);
    }

private:
    LRESULT received(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (message != WM_SETFOCUS) return next(message, wParam, lParam);
        LRESULT result = 0;
        {
            const ScopedFlag focusing(focusing_);
            result = next(message, wParam, lParam);
        }
        if (arrowKeyMoves()) clicked();
        return result;
    }

    void showValue() {
        SendMessageW(part(), BM_SETCHECK, control().value() ? BST_CHECKED : BST_UNCHECKED, 0);
        showTabStop();
    }

    void showTabStop() { setTabStop(part()); }

    bool focusing_ = false;
};

} // namespace

std::unique_ptr<Adaptor> adaptOptionButton(Control& control, const Place& place) {
    return adaptPart<OptionButtonAdaptor, OptionButton>(control, place, WC_BUTTONW);
}

} // namespace toolkit::win32
