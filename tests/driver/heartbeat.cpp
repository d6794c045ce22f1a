#include "tests/driver/heartbeat.h"

#include <QPainter>

#include <chrono>

namespace driver {

using namespace std::chrono_literals;

Heartbeat::Heartbeat(QWidget* window) : QWidget(window) {
    constexpr int size = 3;
    setObjectName(QStringLiteral("heartbeat"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setGeometry(0, 0, size, size);
    connect(&timer_, &QTimer::timeout, this, qOverload<>(&QWidget::update));
    timer_.start(40ms);
    sincePaint_.start();
    show();
    raise();
}

qint64 Heartbeat::longestGap() const {
    return qMax(longestGap_, sincePaint_.elapsed());
}

void Heartbeat::paintEvent(QPaintEvent*) {
    longestGap_ = qMax(longestGap_, sincePaint_.restart());
    ++paints_;
    QPainter(this).fillRect(rect(), paints_ % 2 == 0 ? Qt::black : Qt::white);
}

} // namespace driver
