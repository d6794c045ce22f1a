#include "tests/driver/mark.h"

#include <QCoreApplication>
#include <QInputMethodEvent>
#include <QObject>

namespace driver {

namespace {

class Marks : public QObject {
public:
    int set() {
        QCoreApplication::postEvent(this, new QInputMethodEvent);
        return ++set_;
    }
    int reached() const { return reached_; }

protected:
    bool event(QEvent* event) override {
        if (event->type() != QEvent::InputMethod) return QObject::event(event);
        ++reached_;
        return true;
    }

private:
    int set_ = 0;
    int reached_ = 0;
};

Marks& marks() {
    static Marks all;
    return all;
}

} // namespace

int setMark() {
    return marks().set();
}

int lastMark() {
    return marks().reached();
}

} // namespace driver
