#include "toolkit/qt/front_again.h"

#include "toolkit/qt/form_window.h"

#include <QApplication>
#include <QBasicTimer>
#include <QEvent>
#include <QTimerEvent>
#include <QWindow>

#include <algorithm>
#include <chrono>

namespace toolkit::qt {

namespace {

constexpr int requests = 4;
constexpr std::chrono::milliseconds betweenRequests{50};

/// The first request is made when the program has done what it does after the other one has closed: that may
/// close this one, too, and a window manager that is asked for a window that goes shows none as active.
///
/// One is not enough. On X11 it carries the time of the last event that Qt has seen, the key that closed the
/// other one. A window manager that has given the keys to a third window of the program has done so later,
/// and the server drops what is older. The title, written again, brings an event with the server's time,
/// which the next request carries. Qt cannot be asked whether that is needed: when the keys go to a window
/// behind a modal one, it takes the modal one for active.
class ComingBack : public QObject {
public:
    explicit ComingBack(QWidget& window) : QObject(&window), window_(window) {
        qApp->installEventFilter(this);
        timer_.start(0, this);
    }

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        const QEvent::Type type = event->type();
        if (type == QEvent::KeyPress || type == QEvent::MouseButtonPress) end();
        return false;
    }

    void timerEvent(QTimerEvent*) override {
        timer_.start(static_cast<int>(betweenRequests.count()), this);
        const bool userIsElsewhere =
            made_ > 0 && QGuiApplication::applicationState() != Qt::ApplicationActive;
        if (!window_.isVisible() || userIsElsewhere || made_++ == requests) return end();
        if (QWindow* const handle = window_.windowHandle()) handle->setTitle(handle->title());
        window_.activateWindow();
    }

private:
    void end() {
        timer_.stop();
        deleteLater();
    }

    QWidget& window_;
    QBasicTimer timer_;
    int made_ = 0;
};

bool isOneOfSeveral(const QWidget& window) {
    const QWidgetList all = QApplication::topLevelWidgets();
    return std::any_of(all.begin(), all.end(), [&window](const QWidget* other) {
        return other != &window && other->isVisible() && other->windowType() != Qt::ToolTip;
    });
}

QPointer<ComingBack>& comingBack() {
    static QPointer<ComingBack> only;
    return only;
}

} // namespace

void comeBack(QWidget& window) {
    nothingComesBack();
    comingBack() = new ComingBack(window);
}

void nothingComesBack() {
    delete comingBack();
}

FrontAgain::FrontAgain() : front_(FormWindow::front()) {
    nothingComesBack();
}

/// A single window is asked for once at the most: more would take the screen from who turns to another
/// program at that moment.
FrontAgain::~FrontAgain() {
    if (front_ == nullptr) return;
    if (isOneOfSeveral(*front_))
        comeBack(*front_);
    else if (front_->isVisible() && !front_->isActiveWindow())
        front_->activateWindow();
}

} // namespace toolkit::qt
