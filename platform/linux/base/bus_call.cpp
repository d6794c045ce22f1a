#include "platform/linux/base/bus_call.h"

#include "platform/blocking.h"

namespace platform::linux {

QDBusMessage callBus(const QDBusConnection& bus, const QDBusMessage& message,
                     std::chrono::milliseconds patience) {
    return blocking([bus, message, patience] {
        return bus.call(message, QDBus::Block, static_cast<int>(patience.count()));
    });
}

} // namespace platform::linux
