#include "tests/driver/server.h"

#include "tests/driver/commands.h"
#include "tests/driver/inspect.h"

#include <QCoreApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QWidget>
#include <QWindow>

#include <chrono>

namespace driver {

namespace {

/// When the active window goes the window manager activates another one. Offscreen there is none that would.
void manageFocus() {
    const QWindow* active = QGuiApplication::focusWindow();
    if (active != nullptr && active->isVisible()) return;
    if (QWidget* top = findWindow({})) top->activateWindow();
}

} // namespace

Server::Server(const QString& path) {
    QLocalServer::removeServer(path);
    if (!server_.listen(path)) qFatal("The test driver cannot listen on %s.", qUtf8Printable(path));
    connect(&server_, &QLocalServer::newConnection, this, [this] { accept(); });
    QCoreApplication::instance()->installEventFilter(this);
}

/// Notes when a window has been painted first, then gets out of the way.
bool Server::eventFilter(QObject* object, QEvent* event) {
    if (event->type() == QEvent::Paint && object->isWidgetType()) {
        QCoreApplication::instance()->removeEventFilter(this);
        const auto painted = [this] {
            using namespace std::chrono;
            firstPaint_ = duration_cast<nanoseconds>(steady_clock::now().time_since_epoch()).count();
        };
        QMetaObject::invokeMethod(this, painted, Qt::QueuedConnection); // behind what is being painted
    }
    return false;
}

void Server::accept() {
    QLocalSocket* socket = server_.nextPendingConnection();
    connect(socket, &QLocalSocket::readyRead, this, [this, socket] { read(*socket); });
    connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
}

/// Only reads: a request may open an event loop of its own, and no signal of the socket gets into that from
/// here.
void Server::read(QLocalSocket& socket) {
    while (socket.canReadLine()) {
        const QByteArray line = socket.readLine();
        QMetaObject::invokeMethod(
            this, [this, line, target = QPointer(&socket)] { carryOut(target, line); }, Qt::QueuedConnection);
    }
}

void Server::carryOut(const QPointer<QLocalSocket>& socket, const QByteArray& line) {
    manageFocus();
    const Outcome outcome = perform(QJsonDocument::fromJson(line).object());
    QJsonObject reply = outcome.reply;
    reply[QLatin1String("firstPaint")] = static_cast<double>(firstPaint_) / 1e9;
    if (socket != nullptr) {
        socket->write(QJsonDocument(reply).toJson(QJsonDocument::Compact) + '\n');
        socket->flush();
    }
    // What a person does may last as long as a message box is open, so the reply does not wait for it.
    if (outcome.then) outcome.then();
}

} // namespace driver
