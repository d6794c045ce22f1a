#include "tests/driver/watch.h"

#include "tests/driver/inspect.h"

#include <QEvent>

#include <chrono>

namespace driver {

Watch::Watch(QWidget& part, const QString& property, const QJsonValue& value)
    : QObject(&part), part_(&part), property_(property), value_(value) {
    part.installEventFilter(this);
}

bool Watch::eventFilter(QObject*, QEvent* event) {
    if (event->type() != QEvent::Paint && event->type() != QEvent::EnabledChange) return false;
    if (noted_ || describe(*part_)[property_] != value_) return false;
    noted_ = std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
    return false;
}

} // namespace driver
