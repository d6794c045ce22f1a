// Calls to services of D-Bus.
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>

#include <chrono>

namespace platform::linux {

/// Asks a service and waits for its answer, at most for so long; an error is an answer, too. The window lives
/// meanwhile (platform/blocking.h).
QDBusMessage callBus(const QDBusConnection& bus, const QDBusMessage& message,
                     std::chrono::milliseconds patience);

} // namespace platform::linux
