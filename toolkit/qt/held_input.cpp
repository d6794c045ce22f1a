#include "toolkit/qt/held_input.h"

#include "toolkit/held_events.h"

#include <QCoreApplication>
#include <QEvent>
#include <QMouseEvent>
#include <QPointer>
#include <QWheelEvent>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace toolkit::qt {

namespace {

/// Makes the event once more and sends it.
using Send = std::function<void(QObject* receiver)>;

struct KeptEvent {
    QPointer<QObject> receiver;
    Send send;
};

std::vector<KeptEvent>& keptEvents() {
    static std::vector<KeptEvent> events;
    return events;
}

/// All events of a mouse share where it is, so each is made when it is sent.
Send again(const QMouseEvent& event) {
    return [type = event.type(), local = event.position(), scene = event.scenePosition(),
            global = event.globalPosition(), button = event.button(), buttons = event.buttons(),
            modifiers = event.modifiers(), source = event.source(),
            device = event.pointingDevice()](QObject* receiver) {
        QMouseEvent made(type, local, scene, global, button, buttons, modifiers, source, device);
        QCoreApplication::sendEvent(receiver, &made);
    };
}

Send again(const QWheelEvent& event) {
    return [local = event.position(), global = event.globalPosition(), pixels = event.pixelDelta(),
            angle = event.angleDelta(), buttons = event.buttons(), modifiers = event.modifiers(),
            phase = event.phase(), inverted = event.inverted(), source = event.source(),
            device = event.pointingDevice()](QObject* receiver) {
        QWheelEvent made(local, global, pixels, angle, buttons, modifiers, phase, inverted, source, device);
        QCoreApplication::sendEvent(receiver, &made);
    };
}

Send again(const QEvent& event) {
    switch (event.type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
        return again(static_cast<const QMouseEvent&>(event));
    case QEvent::Wheel:
        return again(static_cast<const QWheelEvent&>(event));
    default:
        return [made = std::shared_ptr<QEvent>(event.clone())](QObject* receiver) {
            QCoreApplication::sendEvent(receiver, made.get());
        };
    }
}

/// What a window gets and hands to its widgets. Kept there, it finds afterwards what is then below the mouse
/// or has the keyboard.
bool isWindowInput(QEvent::Type type) {
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::Wheel:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
    case QEvent::TabletPress:
    case QEvent::TabletMove:
    case QEvent::TabletRelease:
    case QEvent::NativeGesture:
    case QEvent::ContextMenu:
        return true;
    default:
        return false;
    }
}

/// What another program offers, which it does not keep until somebody has the time to take it.
bool isOffer(QEvent::Type type) {
    return type == QEvent::DragEnter || type == QEvent::DragMove || type == QEvent::Drop;
}

/// Qt looks for an access key, and asks the input method, before any window hears of a key.
bool isInput(const QObject& receiver, QEvent::Type type) {
    return type == QEvent::Shortcut || type == QEvent::InputMethod ||
           (receiver.isWindowType() && isWindowInput(type));
}

/// Keeps input in a wait. After it, input that comes while older is kept has that handed out first: nobody
/// may keep the answer to a box for longer, which the held events may be waiting for.
class Keeper : public QObject {
public:
    bool inWait = false;

protected:
    bool eventFilter(QObject* receiver, QEvent* event) override;
};

Keeper& keeper() {
    static Keeper keeper;
    return keeper;
}

/// In whose name the kept input is on its way to its windows.
QObject& giver() {
    static QObject giver;
    return giver;
}

void giveWhatIsOnItsWay() {
    QCoreApplication::sendPostedEvents(&giver(), QEvent::MetaCall);
}

void keepNoMore() {
    QCoreApplication::instance()->removeEventFilter(&keeper());
}

/// Hands the kept input to its windows, in its order. When one of them leads to a box or to another wait, the
/// rest is given there: to windows that are blocked then, or to be kept again.
void releaseHeldInput() {
    keepNoMore();
    for (KeptEvent& kept : std::exchange(keptEvents(), {})) {
        const auto give = [kept = std::move(kept)] {
            if (kept.receiver != nullptr) kept.send(kept.receiver);
        };
        QMetaObject::invokeMethod(&giver(), give, Qt::QueuedConnection);
    }
    giveWhatIsOnItsWay();
}

bool Keeper::eventFilter(QObject* receiver, QEvent* event) {
    if (inWait && receiver->isWindowType() && isOffer(event->type())) {
        event->ignore();
        return true;
    }
    if (!isInput(*receiver, event->type())) return false;
    if (keptEvents().empty()) holdEvent(nullptr, releaseHeldInput);
    keptEvents().push_back({receiver, again(*event)});
    event->accept();
    if (!inWait) releaseHeldInput();
    return true;
}

} // namespace

HeldInput::HeldInput() : before_(std::exchange(keeper().inWait, true)) {
    QCoreApplication::instance()->installEventFilter(&keeper());
    giveWhatIsOnItsWay(); // it is older than what comes now
}

HeldInput::~HeldInput() {
    keeper().inWait = before_;
    if (!before_ && keptEvents().empty()) keepNoMore();
}

} // namespace toolkit::qt
