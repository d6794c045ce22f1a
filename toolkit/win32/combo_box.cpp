#include "toolkit/combo_box.h"

#include "toolkit/shown_text.h"
#include "toolkit/win32/binding.h"
#include "toolkit/win32/texts.h"

#include <utility>

namespace toolkit::win32 {

namespace {

class ComboBoxAdaptor : public PartAdaptor {
public:
    ComboBoxAdaptor(ComboBox& box, FormWindow& window, HWND part)
        : PartAdaptor(box, window, part), box_(box) {
        shows(Property::Items, [this] { showItems(); });
        showsChanges({Property::ListIndex}, [this] { showListIndex(); });
    }

    /// Not CBN_SELCHANGE: that one comes while the user walks through the open list, and does not when the
    /// same entry is chosen again. The list is still open here, so the core hears of it later.
    void command(unsigned notification) override {
        if (notification == CBN_SELENDOK) chosen_ = true;
        if (notification == CBN_SELENDOK || notification == CBN_SELENDCANCEL) postSettle();
    }

    void settle() override {
        if (std::exchange(chosen_, false)) {
            const LRESULT index = SendMessageW(part(), CB_GETCURSEL, 0, 0);
            if (index >= 0) send([this, index] { box_.choose(static_cast<std::int16_t>(index)); });
        }
        if (bound()) showListIndex();
    }

private:
    void showItems() {
        SendMessageW(part(), CB_RESETCONTENT, 0, 0);
        for (const ComboBox::Item& item : box_.items()) {
            const std::wstring text = fromUtf8(shownText(item.text));
            SendMessageW(part(), CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
        }
        showListIndex();
    }

    void showListIndex() {
        if (SendMessageW(part(), CB_GETCURSEL, 0, 0) != box_.listIndex())
            SendMessageW(part(), CB_SETCURSEL, static_cast<WPARAM>(box_.listIndex()), 0);
    }

    ComboBox& box_;
    bool chosen_ = false;
};

} // namespace

std::unique_ptr<Adaptor> adaptComboBox(Control& control, const Place& place) {
    return adaptPart<ComboBoxAdaptor, ComboBox>(control, place, WC_COMBOBOXW);
}

} // namespace toolkit::win32
