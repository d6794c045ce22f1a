#include "toolkit/menu_item.h"

#include "toolkit/win32/binding.h"
#include "toolkit/win32/resource_names.h"
#include "toolkit/win32/texts.h"

#include <array>

namespace toolkit::win32 {

namespace {

class MenuItemAdaptor : public Adaptor {
public:
    MenuItemAdaptor(MenuItem& item, FormWindow& window, HMENU menu, UINT number)
        : Adaptor(item, window),
          item_(item),
          menu_(menu),
          number_(number),
          accessKey_(win32::accessKey(designCaption())) {
        shows(Property::Caption, [this] { showItem(); });
        showsChanges({Property::Enabled, Property::Visible}, [this] { showItem(); });
    }

    void command(unsigned /*notification*/) override {
        send([this] { item_.click(); });
    }

protected:
    void adoptDesign() override {
        if (item_.caption().empty()) item_.setCaption(toUtf8(withoutMnemonic(designCaption())));
    }

private:
    std::wstring designCaption() const {
        std::array<wchar_t, 80> caption{};
        const int length =
            GetMenuStringW(menu_, number_, caption.data(), static_cast<int>(caption.size()), MF_BYCOMMAND);
        return {caption.data(), static_cast<std::size_t>(length > 0 ? length : 0)};
    }

    /// An item that is not visible is still there, and cannot be chosen: a menu hides nothing.
    void showItem() {
        std::wstring caption = withMnemonic(fromUtf8(item_.caption()), accessKey_);
        MENUITEMINFOW description{};
        description.cbSize = sizeof description;
        description.fMask = MIIM_FTYPE | MIIM_STATE | MIIM_STRING;
        description.fType = item_.caption() == "-" ? MFT_SEPARATOR : MFT_STRING;
        description.fState = item_.enabled() && item_.visible() ? MFS_ENABLED : MFS_DISABLED;
        description.dwTypeData = caption.data();
        SetMenuItemInfoW(menu_, number_, FALSE, &description);
    }

    MenuItem& item_;
    HMENU menu_;
    UINT number_;
    wchar_t accessKey_;
};

} // namespace

/// The menu bears the name of the array that its items are.
std::unique_ptr<Adaptor> adaptMenuItem(Control& control, const Place& place) {
    auto* item = dynamic_cast<MenuItem*>(&control);
    if (item == nullptr || place.part != nullptr) return nullptr;
    const int number = resourceNumber(control.name());
    HMENU const menu = place.window.menu(fromUtf8(control.name().substr(0, control.name().find('_'))));
    if (number == 0 || menu == nullptr) return nullptr;
    return std::make_unique<MenuItemAdaptor>(*item, place.window, menu, static_cast<UINT>(number));
}

} // namespace toolkit::win32
