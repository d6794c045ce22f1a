// What the start of the program is compared with: a dialog of as many controls, and nothing behind them:
// empty_dialog COUNT

#include <windows.h>

#include <array>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace {

constexpr WORD buttonClass = 0x80;
constexpr WORD staticClass = 0x82;
constexpr short columns = 6;
constexpr short width = 60; // dialog units
constexpr short height = 12;

/// A dialog template in memory: https://learn.microsoft.com/windows/win32/dlgbox/dlgbox-templates-in-memory
class Template {
public:
    explicit Template(WORD count) {
        const DLGTEMPLATE dialog{
            WS_OVERLAPPEDWINDOW | WS_VISIBLE | DS_SETFONT,     0, count, 0, 0, columns * width,
            static_cast<short>((count / columns + 1) * height)};
        append(dialog);
        words_.insert(words_.end(), {0, 0}); // no menu, the class of dialogs
        text(L"Dialog");
        words_.push_back(9);
        text(L"Tahoma");
        for (WORD i = 0; i < count; ++i)
            control(i);
    }

    LPCDLGTEMPLATEA get() const { return reinterpret_cast<LPCDLGTEMPLATEA>(words_.data()); }

private:
    void control(WORD number) {
        constexpr std::array<DWORD, 3> styles = {SS_LEFT, BS_RADIOBUTTON, BS_PUSHBUTTON};
        if (words_.size() % 2 != 0) words_.push_back(0);
        const auto left = static_cast<short>(number % columns * width);
        const auto top = static_cast<short>(number / columns * height);
        append(DLGITEMTEMPLATE{WS_CHILD | WS_VISIBLE | styles.at(number % styles.size()), 0, left, top, width,
                               height, static_cast<WORD>(number + 100)});
        words_.insert(words_.end(), {0xFFFF, number % styles.size() == 0 ? staticClass : buttonClass});
        text(L"Text");
        words_.push_back(0);
    }

    template <class Record>
    void append(const Record& record) {
        const auto* words = reinterpret_cast<const WORD*>(&record);
        words_.insert(words_.end(), words, words + sizeof record / sizeof(WORD));
    }

    void text(std::wstring_view text) {
        words_.insert(words_.end(), text.begin(), text.end());
        words_.push_back(0);
    }

    std::vector<WORD> words_;
};

INT_PTR CALLBACK dialogProcedure(HWND window, UINT message, WPARAM /*wParam*/, LPARAM /*lParam*/) {
    if (message == WM_CLOSE) EndDialog(window, 0);
    return message == WM_INITDIALOG ? TRUE : FALSE;
}

} // namespace

int WINAPI WinMain(HINSTANCE instance, HINSTANCE /*previous*/, LPSTR arguments, int /*show*/) {
    const Template dialog(static_cast<WORD>(std::atoi(arguments)));
    return static_cast<int>(DialogBoxIndirectParamA(instance, dialog.get(), nullptr, dialogProcedure, 0));
}
