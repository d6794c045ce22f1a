#include "toolkit/win32/form.h"

#include "toolkit/backend.h"
#include "toolkit/form.h"
#include "toolkit/held_events.h"
#include "toolkit/shown_properties.h"
#include "toolkit/win32/binding.h"
#include "toolkit/win32/form_window.h"
#include "toolkit/win32/message_loop.h"
#include "toolkit/win32/modal_scope.h"
#include "toolkit/win32/picture.h"
#include "toolkit/win32/resource_names.h"
#include "toolkit/win32/texts.h"
#include "toolkit/win32/tool_tips.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace toolkit {

namespace win32 {

namespace {

class WindowView;

std::vector<WindowView*>& liveViews() {
    static std::vector<WindowView*> views;
    return views;
}

HWND handleOf(FormView* view) {
    return view == nullptr ? nullptr : reinterpret_cast<HWND>(view->handle());
}

class WindowView final : public FormView {
public:
    explicit WindowView(Form& form) : form_(form), window_(&FormWindow::create(form.name())) {
        bindControls(form.controls(), *window_);
        listProperties();
        if (form.caption().empty()) form.setCaption(toUtf8(windowText(window_->handle())));
        properties_.showAll();
        if (const Button* const button = form.enterButton(nullptr))
            window_->showEnterButton(resourceNumber(button->name()));
        window_->onCloseRequested = [this] { requestClose(); };
        window_->onSessionEnd = [&form] { dispatchEndNow([&form] { form.closeRequested(); }); };
        window_->onEnter = [this](int number) { enter(number); };
        window_->onHelp = [this] { dispatch([this] { form_.helpRequested(); }, this); };
        window_->onRescaled = [this] { showIcon(); };
        window_->onDestroyed = [this] { window_ = nullptr; };
        liveViews().push_back(this);
    }

    /// The controls may be gone. The window may be in the middle of a message.
    ~WindowView() override {
        std::erase(liveViews(), this);
        forgetHeldEvents(this);
        if (window_ == nullptr) return;
        for (const auto& adaptor : window_->adaptors())
            adaptor->abandon();
        forgetWindow()->leave();
    }

    void show(Property property) override {
        if (window_ != nullptr) properties_.show(property);
    }

    void open(FormView* owner) override {
        if (window_ != nullptr) window_->present(handleOf(owner));
    }

    void openModal(FormView* owner) override {
        if (window_ == nullptr) return;
        HWND const before = FormWindow::front();
        window_->setModal(true);
        modal_.emplace(window_->handle());
        window_->present(handleOf(owner));
        loopUntil([this] { return !modal_.has_value(); });
        modal_.reset();
        // The system takes the owner.
        if (before != nullptr && IsWindowVisible(before) != FALSE) SetActiveWindow(before);
    }

    void close() override {
        modal_.reset();
        if (window_ == nullptr) return;
        releaseControls();
        forgetWindow()->leave();
    }

    void restore() override {
        if (window_ == nullptr) return;
        ShowWindow(window_->handle(), SW_RESTORE);
        SetForegroundWindow(window_->handle());
    }

    WindowHandle handle() const override {
        return window_ == nullptr ? 0 : reinterpret_cast<WindowHandle>(window_->handle());
    }

    bool isProgramActive() const override {
        DWORD process = 0;
        GetWindowThreadProcessId(GetForegroundWindow(), &process);
        return process == GetCurrentProcessId();
    }

    void releaseControls() {
        if (window_ == nullptr) return;
        for (const auto& adaptor : window_->adaptors())
            adaptor->release();
    }

private:
    void listProperties() {
        HWND const handle = window_->handle();
        const auto showCaption = [this, handle] { setWindowText(handle, fromUtf8(form_.caption())); };
        const auto showToolTip = [this, handle] { window_->toolTips().set(handle, form_.toolTip()); };
        const auto showEnabled = [this, handle] { EnableWindow(handle, form_.enabled() ? TRUE : FALSE); };
        const auto showVisible = [this, handle] { ShowWindow(handle, form_.visible() ? SW_SHOW : SW_HIDE); };
        properties_.add(Property::Icon, [this] { showIcon(); });
        properties_.add(Property::Caption, showCaption);
        properties_.add(Property::ToolTip, showToolTip, [this] { return !form_.toolTip().empty(); });
        properties_.add(Property::Enabled, showEnabled, [this] { return !form_.enabled(); });
        properties_.addChanges({Property::Visible}, showVisible);
    }

    /// Without a picture of its own the window has that of its class.
    void showIcon() {
        const LoadedPicture* picture = form_.icon() == nullptr ? nullptr : loaded(form_.icon());
        if (window_ == nullptr || picture == nullptr) return;
        HWND const handle = window_->handle();
        const auto dpi = GetDpiForWindow(handle);
        for (const auto& [kind, metric] :
             {std::pair{ICON_BIG, SM_CXICON}, std::pair{ICON_SMALL, SM_CXSMICON}}) {
            HICON const icon = picture->icon(GetSystemMetricsForDpi(metric, dpi));
            if (icon != nullptr)
                SendMessageW(handle, WM_SETICON, static_cast<WPARAM>(kind), reinterpret_cast<LPARAM>(icon));
        }
    }

    void enter(int number) {
        const auto& controls = form_.controls();
        const auto found = std::find_if(controls.begin(), controls.end(), [number](const Control* control) {
            return number != 0 && resourceNumber(control->name()) == number;
        });
        Control* const focus = found == controls.end() ? nullptr : *found;
        dispatch([this, focus] { form_.enterPressed(focus); }, this);
    }

    /// The first window is the main window.
    void requestClose() {
        if (liveViews().front() == this)
            dispatchEndWish([form = &form_] { form->closeRequested(); });
        else
            dispatch([this] { form_.closeRequested(); }, this);
    }

    FormWindow* forgetWindow() {
        window_->onCloseRequested = {};
        window_->onSessionEnd = {};
        window_->onEnter = {};
        window_->onHelp = {};
        window_->onRescaled = {};
        window_->onDestroyed = {};
        return std::exchange(window_, nullptr);
    }

    Form& form_;
    FormWindow* window_; ///< null when it is closed
    ShownProperties properties_;
    std::optional<ModalScope> modal_;
};

} // namespace

void releaseAllWindows() {
    const std::vector<WindowView*> views(liveViews().rbegin(), liveViews().rend());
    for (WindowView* view : views)
        view->releaseControls();
    FormWindow::destroyAll();
}

} // namespace win32

std::unique_ptr<FormView> backend::createFormView(Form& form) {
    return std::make_unique<win32::WindowView>(form);
}

} // namespace toolkit
