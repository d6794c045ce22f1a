// The native window of a form.
#pragma once

#include <windows.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace toolkit::win32 {

class WindowPart;
class FocusFrame;
class Presentation;
class ToolTips;

/// A dialog made from the template of the form's name; its window class bears that name, too. It never closes
/// by itself: a wish to close it is reported, and the form decides.
///
/// The object lives exactly as long as the native window. A window that is closed in the middle of a handler
/// of its own goes when the handler has returned, so nothing on the way out of it touches a dead object.
class FormWindow {
public:
    /// Creates the window, hidden. Ends the program with a message when there is no template of that name.
    static FormWindow& create(const std::string& name);
    /// The form's window of that handle; null when it is none.
    static FormWindow* of(HWND handle);
    /// The visible window that the user can work with, or did before another program came to the front; null
    /// for none.
    static HWND front();
    /// Destroys all windows, the last one first: it may belong to an earlier one.
    static void destroyAll();

    FormWindow(const FormWindow&) = delete;
    FormWindow& operator=(const FormWindow&) = delete;
    ~FormWindow();

    std::function<void()> onCloseRequested;
    /// The session ends; when this returns the system may end the process.
    std::function<void()> onSessionEnd;
    /// Enter was pressed, while the part of that number (0 for none) had the keyboard.
    std::function<void(int number)> onEnter;
    /// The key for help was pressed.
    std::function<void()> onHelp;
    /// The resolution or the set of colours has changed.
    std::function<void()> onRescaled;
    /// The window is gone; this object follows.
    std::function<void()> onDestroyed;

    HWND handle() const noexcept { return handle_; }
    const std::string& name() const noexcept { return name_; }
    ToolTips& toolTips() noexcept { return *toolTips_; }
    /// The menu resource of that name, which the window owns; null when there is none.
    HMENU menu(const std::wstring& name);

    /// Takes an adaptor; `number` is that of its part, 0 for none.
    void add(int number, std::unique_ptr<WindowPart> adaptor);
    const std::vector<std::unique_ptr<WindowPart>>& adaptors() const noexcept { return adaptors_; }

    /// Puts the window on the screen, beside its owner (null for none), and in front.
    void present(HWND owner);
    void setModal(bool modal) noexcept { modal_ = modal; }
    /// Hides the window and destroys it as soon as no handler of it is running.
    void leave();

    /// Frames the part that has the keyboard; another one may have it since the last time.
    void frameFocus();

    /// Reports Enter; false when it means something to the part that gets it.
    bool handleEnter(const MSG& message);
    /// Reports the key for help, once however long it is held down; false for any other one.
    bool handleHelp(const MSG& message);
    /// Shows which button Enter presses; 0 for none. Returns the one that was shown so far.
    int showEnterButton(int number) const;

    /// Has the adaptor's settle() called when the messages before it have been handled.
    void postSettle(WindowPart& adaptor);

    /// Shows that a handler of the window is running.
    class Busy {
    public:
        explicit Busy(FormWindow& window) : window_(window) { ++window_.busy_; }
        Busy(const Busy&) = delete;
        Busy& operator=(const Busy&) = delete;
        ~Busy() {
            if (--window_.busy_ == 0 && window_.leaving_) window_.postDestroy();
        }

    private:
        FormWindow& window_;
    };

private:
    explicit FormWindow(std::string name);

    static INT_PTR CALLBACK procedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
    INT_PTR received(UINT message, WPARAM wParam, LPARAM lParam);
    INT_PTR answer(LRESULT result) const;
    INT_PTR commanded(unsigned number, unsigned notification);
    INT_PTR notified(const NMHDR& header);
    INT_PTR drawItem(const DRAWITEMSTRUCT& item);
    INT_PTR sessionEnds();
    void initialize(HWND handle);
    void activated();
    void requestClose();
    void report(const std::function<void()>& onWish);
    void settle(const WindowPart* named);
    void keepFocus() const;
    void rescale();
    void postDestroy() const;
    WindowPart* adaptorOf(int number) const;

    std::string name_;
    HWND handle_ = nullptr;
    std::vector<std::pair<std::wstring, HMENU>> menus_;
    std::unique_ptr<ToolTips> toolTips_;
    std::unique_ptr<Presentation> presentation_;
    std::unique_ptr<FocusFrame> focusFrame_;
    std::vector<std::unique_ptr<WindowPart>> adaptors_;
    std::vector<std::pair<int, WindowPart*>> parts_;
    int busy_ = 0;
    bool modal_ = false;
    bool leaving_ = false;
};

} // namespace toolkit::win32
