#pragma once

#include <QJsonValue>
#include <QPointer>
#include <QWidget>

#include <optional>

namespace driver {

/// Notes when a part is first painted, enabled or disabled with a property of that value. Nobody has to ask
/// for it meanwhile, which takes time that the program needs, and may come too late.
class Watch : public QObject {
    Q_OBJECT

public:
    Watch(QWidget& part, const QString& property, const QJsonValue& value);

    /// Seconds of the monotonic clock; no value until then.
    std::optional<double> noted() const { return noted_; }

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    QPointer<QWidget> part_;
    QString property_;
    QJsonValue value_;
    std::optional<double> noted_;
};

} // namespace driver
