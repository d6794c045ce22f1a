#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <QWidget>

namespace driver {

/// A mark in the corner of a window that looks different every 40 ms, as long as the window is painted. Input
/// goes through it.
class Heartbeat : public QWidget {
    Q_OBJECT

public:
    explicit Heartbeat(QWidget* window);

    int paints() const { return paints_; }
    /// Longest time between two looks, in milliseconds; also that since the last one.
    qint64 longestGap() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QTimer timer_;
    QElapsedTimer sincePaint_;
    qint64 longestGap_ = 0;
    int paints_ = 0;
};

} // namespace driver
