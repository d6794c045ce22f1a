#include "toolkit/message_box.h"

#include "toolkit/backend.h"
#include "toolkit/win32/form_window.h"
#include "toolkit/win32/message_loop.h"
#include "toolkit/win32/modal_scope.h"
#include "toolkit/win32/texts.h"
#include "toolkit/win32/window_class.h"

#include <commctrl.h>

#include <array>
#include <cwctype>
#include <memory>
#include <utility>

namespace toolkit {

namespace win32 {

namespace {

constexpr auto programTitle = "Orvanta USB-Stick Internetupdate Tool";

struct Caption {
    UINT buttons;
    int button;
    const wchar_t* text;
};

/// The program speaks German, whatever the system does. The only button of a box may have any number, that of
/// "Cancel" among them, so each caption belongs to its kind of box.
constexpr std::array captions = {Caption{MB_OKCANCEL, IDCANCEL, L"&Abbrechen"},
                                 Caption{MB_YESNO, IDYES, L"&Ja"}, Caption{MB_YESNO, IDNO, L"&Nein"}};

/// A box is as wide as its longest word, and knows no place in it to break it: a longer one than this goes
/// on in the next line.
std::wstring withBreaks(const std::wstring& text) {
    constexpr int longestWord = 60;
    std::wstring broken;
    int length = 0;
    for (const wchar_t unit : text) {
        length = std::iswspace(static_cast<wint_t>(unit)) != 0 ? 0 : length + 1;
        if (length > longestWord && !IS_LOW_SURROGATE(unit)) {
            broken += L"\r\n";
            length = 1;
        }
        broken += unit;
    }
    return broken;
}

/// Closing a box of yes and no means no; the system's own box refuses it.
LRESULT CALLBACK closableProcedure(HWND box, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR number,
                                   DWORD_PTR) noexcept {
    if (message == WM_CLOSE || (message == WM_COMMAND && LOWORD(wParam) == IDCANCEL)) {
        EndDialog(box, IDNO);
        return 0;
    }
    if (message == WM_NCDESTROY) RemoveWindowSubclass(box, closableProcedure, number);
    return DefSubclassProc(box, message, wParam, lParam);
}

/// A box that cannot be closed has the item disabled, or none.
void makeClosable(HWND box) {
    HMENU const menu = GetSystemMenu(box, FALSE);
    if (EnableMenuItem(menu, SC_CLOSE, MF_BYCOMMAND | MF_ENABLED) == -1)
        AppendMenuW(menu, MF_STRING, SC_CLOSE, L"&Schlie\u00dfen\tAlt+F4");
    SetWindowSubclass(box, closableProcedure, 1, 0);
}

/// Gets hold of the next message box of this thread.
class BoxWatch {
public:
    explicit BoxWatch(int style)
        : buttons_(static_cast<UINT>(style) & MB_TYPEMASK),
          outer_(std::exchange(current, this)),
          hook_(SetWindowsHookExW(WH_CBT, procedure, nullptr, GetCurrentThreadId())) {}
    BoxWatch(const BoxWatch&) = delete;
    BoxWatch& operator=(const BoxWatch&) = delete;
    ~BoxWatch() {
        unhook();
        current = outer_;
    }

private:
    static LRESULT CALLBACK procedure(int code, WPARAM wParam, LPARAM lParam) noexcept {
        auto* const box = reinterpret_cast<HWND>(wParam);
        if (code == HCBT_ACTIVATE && current->hook_ != nullptr && isOfClass(box, L"#32770"))
            current->opened(box);
        return CallNextHookEx(nullptr, code, wParam, lParam);
    }

    void opened(HWND box) {
        unhook();
        box_ = std::make_unique<OpenBox>(box);
        for (const Caption& caption : captions)
            if (caption.buttons == buttons_) SetDlgItemTextW(box, caption.button, caption.text);
        if (buttons_ == MB_YESNO) makeClosable(box);
    }

    void unhook() {
        if (HHOOK const hook = std::exchange(hook_, nullptr)) UnhookWindowsHookEx(hook);
    }

    static BoxWatch* current;

    UINT buttons_;
    BoxWatch* outer_;
    HHOOK hook_;
    std::unique_ptr<OpenBox> box_;
};

BoxWatch* BoxWatch::current = nullptr;

} // namespace

} // namespace win32

int backend::showMessage(std::string_view text, int style, std::string_view title) {
    const std::wstring wideText = win32::withBreaks(win32::fromUtf8(text));
    const std::wstring wideTitle = win32::fromUtf8(title.empty() ? win32::programTitle : title);
    HWND const owner = win32::FormWindow::front();
    // The box itself makes only its owner deaf, and needs to find it as it was.
    win32::ModalScope others(owner);
    const win32::BoxWatch watch(style);
    const int answer =
        MessageBoxW(owner, wideText.c_str(), wideTitle.c_str(), static_cast<UINT>(style) | MB_SETFOREGROUND);
    // A box with one button says of itself that it was closed, or that the button was pressed.
    return (style & MB_TYPEMASK) == MB_OK ? Ok : answer;
}

} // namespace toolkit
