#include "toolkit/combo_box.h"

#include "toolkit/qt/binding.h"
#include "toolkit/qt/captioned.h"
#include "toolkit/shown_text.h"

#include <QComboBox>

namespace toolkit::qt {

namespace {

class ComboBoxAdaptor : public WidgetAdaptor {
public:
    ComboBoxAdaptor(ComboBox& box, QComboBox& widget)
        : WidgetAdaptor(box, widget), box_(box), widget_(widget) {
        // Not currentIndexChanged: that one does not tell the user from the program.
        connect(&widget, &QComboBox::activated, this, [this](int index) { activated(index); });
        shows(Property::Items, [this] { showItems(); });
        showsChanges({Property::ListIndex}, [this] { showListIndex(); });
    }

private:
    void activated(int index) {
        send([this, index] { box_.choose(static_cast<std::int16_t>(index)); });
        showListIndex();
    }

    void showItems() {
        widget_.clear();
        for (const ComboBox::Item& item : box_.items())
            widget_.addItem(fromUtf8(shownText(item.text)));
        showListIndex();
    }

    void showListIndex() { widget_.setCurrentIndex(box_.listIndex()); }

    ComboBox& box_;
    QComboBox& widget_;
};

} // namespace

std::unique_ptr<Adaptor> adaptComboBox(Control& control, QObject* part) {
    return adaptWidget<ComboBoxAdaptor, ComboBox, QComboBox>(control, part);
}

} // namespace toolkit::qt
