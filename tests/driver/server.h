#pragma once

#include <QLocalServer>
#include <QLocalSocket>
#include <QPointer>

namespace driver {

/// Listens on a Unix socket; a line in is a request, a line out its reply, both a JSON object. A request is
/// carried out on the user-interface thread whenever that handles events: in a message box or a download,
/// too.
class Server : public QObject {
public:
    explicit Server(const QString& path);

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    void accept();
    void read(QLocalSocket& socket);
    void carryOut(const QPointer<QLocalSocket>& socket, const QByteArray& line);

    QLocalServer server_;
    qint64 firstPaint_ = 0; ///< nanoseconds of the monotonic clock; 0 before
};

} // namespace driver
