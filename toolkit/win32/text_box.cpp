#include "toolkit/text_box.h"

#include "toolkit/scoped_flag.h"
#include "toolkit/win32/binding.h"
#include "toolkit/win32/resource_names.h"
#include "toolkit/win32/subclass.h"
#include "toolkit/win32/texts.h"

#include <utility>

namespace toolkit::win32 {

namespace {

constexpr char32_t ctrlV = 22;
constexpr char32_t escape = 27;

char32_t codePoint(wchar_t high, wchar_t low) {
    return 0x10000 + ((char32_t{high} - HIGH_SURROGATE_START) << 10) + (char32_t{low} - LOW_SURROGATE_START);
}

/// Tells each key press before the native control acts on it: those that make a character, the control
/// characters among them. A change that no key press announced (delete, cut, paste by the menu) is announced
/// as Ctrl+V.
class TextBoxAdaptor : public PartAdaptor, private Subclass {
public:
    TextBoxAdaptor(TextBox& box, FormWindow& window, HWND part)
        : PartAdaptor(box, window, part), Subclass(part), box_(box) {
        shows(Property::Text, [this] { showText(); });
        showsChanges({Property::Selection}, [this] { showSelection(); });
        showsChanges({Property::Focus}, [this] { showFocus(); });
    }

    void command(unsigned notification) override {
        if (notification == EN_SETFOCUS || notification == EN_KILLFOCUS)
            focusMoved(notification == EN_SETFOCUS);
        if (notification != EN_CHANGE || setting_ || half_) return;
        if (!announced_) announce(ctrlV);
        announced_ = false;
        send([this] { box_.typed(toUtf8(windowText(part()))); });
    }

protected:
    void adoptDesign() override {
        PartAdaptor::adoptDesign();
        if (box_.text().empty()) box_.setText(toUtf8(windowText(part())));
    }

private:
    LRESULT received(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (message != WM_CHAR) return next(message, wParam, lParam);
        press(static_cast<wchar_t>(wParam));
        half_ = IS_HIGH_SURROGATE(static_cast<wchar_t>(wParam));
        const LRESULT result = next(message, wParam, lParam);
        half_ = false;
        announced_ = false;
        return result;
    }

    /// A character outside of the first plane comes in two messages. With the first one the control has half
    /// of it, which is no text.
    void press(wchar_t unit) {
        const wchar_t high = std::exchange(high_, wchar_t{0});
        if (IS_HIGH_SURROGATE(unit))
            high_ = unit;
        else
            announce(high != 0 && IS_LOW_SURROGATE(unit) ? codePoint(high, unit) : char32_t{unit});
    }

    /// Keys that belong to the window are left out.
    void announce(char32_t character) {
        if (character == U'\t' || character == U'\r' || character == escape) return;
        announced_ = true;
        send([this, character] { box_.keyPress(character); });
    }

    /// Who presses Enter shall see what it will do.
    void focusMoved(bool here) {
        if (!bound() || box_.enterButton() == nullptr) return;
        if (here)
            buttonElsewhere_ = window().showEnterButton(resourceNumber(box_.enterButton()->name()));
        else
            window().showEnterButton(buttonElsewhere_);
    }

    void showText() {
        const ScopedFlag setting(setting_);
        setWindowText(part(), fromUtf8(box_.text()));
    }

    void showSelection() {
        const TextBox::Selection& selection = box_.selection();
        const std::wstring text = windowText(part());
        SendMessageW(part(), EM_SETSEL, utf16Position(text, selection.start),
                     static_cast<LPARAM>(utf16Position(text, selection.start + selection.length)));
    }

    void showFocus() {
        SendMessageW(window().handle(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(part()), TRUE);
        // The dialog has selected all of it.
        showSelection();
    }

    TextBox& box_;
    int buttonElsewhere_ = 0;
    wchar_t high_ = 0;  ///< the first half of a character
    bool half_ = false; ///< the control gets it
    bool announced_ = false;
    bool setting_ = false;
};

} // namespace

std::unique_ptr<Adaptor> adaptTextBox(Control& control, const Place& place) {
    return adaptPart<TextBoxAdaptor, TextBox>(control, place, WC_EDITW);
}

} // namespace toolkit::win32
