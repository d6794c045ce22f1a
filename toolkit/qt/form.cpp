#include "toolkit/qt/form.h"

#include "platform/device_events.h"
#include "toolkit/backend.h"
#include "toolkit/form.h"
#include "toolkit/held_events.h"
#include "toolkit/qt/binding.h"
#include "toolkit/qt/form_window.h"
#include "toolkit/qt/front_again.h"
#include "toolkit/qt/layouts.h"
#include "toolkit/qt/picture.h"
#include "toolkit/qt/presentation.h"
#include "toolkit/qt/texts.h"
#include "toolkit/shown_properties.h"

#include <QApplication>
#include <QEventLoop>
#include <QPointer>
#include <QPushButton>

#include <utility>
#include <vector>

namespace toolkit {

namespace qt {

namespace {

class WindowView;

std::vector<WindowView*>& liveViews() {
    static std::vector<WindowView*> views;
    return views;
}

WindowHandle nextHandle() {
    static WindowHandle last = 0;
    return ++last;
}

class WindowView final : public FormView {
public:
    explicit WindowView(Form& form) : form_(form), window_(new FormWindow), handle_(nextHandle()) {
        if (!setUpLayout(form.name(), *window_))
            qFatal("There is no layout for the window %s.", form.name().c_str());
        setProgramFont(*window_);
        applyPresentation(*window_);
        for (auto& adaptor : bindControls(form.controls(), *window_)) {
            // They live and go with their widgets.
            adaptors_.push_back(adaptor.get());
            adaptor.release()->setParent(window_);
        }
        listProperties();
        if (form.caption().empty()) form.setCaption(toUtf8(window_->windowTitle()));
        properties_.showAll();
        window_->fitScreen();
        window_->onCloseRequested = [this] { requestClose(); };
        window_->onEnter = [this](const QWidget* focus) { enter(focus); };
        window_->onHelp = [this] { dispatch([this] { form_.helpRequested(); }, this); };
        window_->onFocusMoved = [this](const QWidget* focus) { showEnterButton(focus); };
        window_->watchEnter();
        showEnterButton(nullptr);
        liveViews().push_back(this);
    }

    /// The controls may be gone. The window may be the sender of the event that is being handled.
    ~WindowView() override {
        std::erase(liveViews(), this);
        forgetHeldEvents(this);
        if (window_ == nullptr) return;
        window_->hide();
        window_->deleteLater();
    }

    void show(Property property) override {
        if (window_ != nullptr) properties_.show(property);
    }

    void open(FormView* owner) override { present(owner, Qt::NonModal); }

    void openModal(FormView* owner) override {
        const FrontAgain frontAgain;
        present(owner, Qt::ApplicationModal);
        QEventLoop loop;
        modalLoop_ = &loop;
        loop.exec();
        modalLoop_ = nullptr;
    }

    void close() override {
        releaseControls();
        if (window_ != nullptr) {
            window_->hide();
            if (QWidget* const owner = window_->parentWidget()) comeBack(*owner);
        }
        tellDestroyed();
        if (modalLoop_ != nullptr) modalLoop_->quit();
    }

    void restore() override {
        if (window_ == nullptr) return;
        window_->showNormal();
        window_->raise();
        window_->activateWindow();
    }

    WindowHandle handle() const override { return handle_; }

    bool isProgramActive() const override { return QApplication::activeWindow() != nullptr; }

    Form& form() { return form_; }

    void releaseWindow() {
        releaseControls();
        tellDestroyed();
        delete window_.data();
    }

private:
    void tellDestroyed() {
        if (!std::exchange(destroyed_, true))
            platform::sendWindowMessage(handle_, platform::destroyMessage, 0, 0);
    }

    void listProperties() {
        properties_.add(Property::Icon, [this] { showIcon(); });
        properties_.add(Property::Caption, [this] { window_->setWindowTitle(fromUtf8(form_.caption())); });
        properties_.add(Property::ToolTip, [this] { window_->setToolTip(plainToolTip(form_.toolTip())); });
        properties_.add(Property::Enabled, [this] { window_->setEnabled(form_.enabled()); });
        properties_.addChanges({Property::Visible}, [this] { window_->setVisible(form_.visible()); });
    }

    void showIcon() {
        if (const LoadedPicture* icon = loaded(form_.icon())) window_->setWindowIcon(icon->icon());
    }

    void present(FormView* owner, Qt::WindowModality modality) {
        auto* ownerView = static_cast<WindowView*>(owner);
        nothingComesBack();
        if (window_ != nullptr)
            window_->present(ownerView == nullptr ? nullptr : ownerView->window_.data(), modality);
    }

    /// The control that a widget belongs to; null for none.
    Control* controlOf(const QWidget* part) const {
        for (; part != nullptr && part != window_; part = part->parentWidget())
            if (Control* const control = form_.find(toUtf8(part->objectName()))) return control;
        return nullptr;
    }

    void enter(const QWidget* focus) {
        dispatch([this, control = controlOf(focus)] { form_.enterPressed(control); }, this);
    }

    void requestClose() {
        if (liveViews().front() == this)
            requestProgramClose();
        else
            dispatch([this] { form_.closeRequested(); }, this);
    }

    /// It looks different, so that who presses Enter knows what it will do.
    void showEnterButton(const QWidget* focus) {
        const Button* const button = form_.enterButton(controlOf(focus));
        if (button == nullptr) return;
        const QString name = fromUtf8(button->name());
        for (auto* widget : window_->findChildren<QPushButton*>())
            widget->setDefault(widget->objectName() == name);
    }

    void releaseControls() {
        if (window_ != nullptr) {
            window_->onEnter = {};
            window_->onFocusMoved = {};
        }
        for (Adaptor* adaptor : adaptors_)
            adaptor->release();
        adaptors_.clear();
    }

    Form& form_;
    QPointer<FormWindow> window_;
    std::vector<Adaptor*> adaptors_;
    QEventLoop* modalLoop_ = nullptr;
    ShownProperties properties_;
    WindowHandle handle_;
    bool destroyed_ = false;
};

} // namespace

void requestProgramClose() {
    // The first window is the main window.
    if (liveViews().empty())
        endAfterClosing();
    else
        dispatchEndWish([form = &liveViews().front()->form()] { form->closeRequested(); });
}

void releaseAllWindows() {
    // The last first: it may belong to an earlier one.
    const std::vector<WindowView*> views(liveViews().rbegin(), liveViews().rend());
    for (WindowView* view : views)
        view->releaseWindow();
}

} // namespace qt

std::unique_ptr<FormView> backend::createFormView(Form& form) {
    return std::make_unique<qt::WindowView>(form);
}

} // namespace toolkit
