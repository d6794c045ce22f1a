#include "toolkit/menu_item.h"

#include "toolkit/qt/binding.h"
#include "toolkit/qt/texts.h"

#include <QAction>

namespace toolkit::qt {

namespace {

class MenuItemAdaptor : public Adaptor {
public:
    MenuItemAdaptor(MenuItem& item, QAction& action) : Adaptor(item), item_(item), action_(action) {
        connect(&action, &QAction::triggered, this, [this] { triggered(); });
        shows(Property::Caption, [this] { showCaption(); });
        shows(Property::Enabled, [this] { action_.setEnabled(item_.enabled()); });
        shows(Property::Visible, [this] { action_.setVisible(item_.visible()); });
    }

protected:
    void adoptDesign() override {
        if (item_.caption().empty()) item_.setCaption(toUtf8(action_.text()));
    }

private:
    void showCaption() {
        action_.setSeparator(item_.caption() == "-");
        action_.setText(withMnemonic(fromUtf8(item_.caption()), action_.property("accessKey").toString()));
    }

    void triggered() {
        send([this] { item_.click(); });
    }

    MenuItem& item_;
    QAction& action_;
};

} // namespace

std::unique_ptr<Adaptor> adaptMenuItem(Control& control, QObject* part) {
    auto* item = dynamic_cast<MenuItem*>(&control);
    auto* action = qobject_cast<QAction*>(part);
    if (item == nullptr || action == nullptr) return nullptr;
    return std::make_unique<MenuItemAdaptor>(*item, *action);
}

} // namespace toolkit::qt
