#include "tests/driver/server.h"

#include <QGenericPlugin>

namespace driver {

class Plugin : public QGenericPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "usbtooldriver.json")

public:
    /// What follows the name is the path of the socket to listen on.
    QObject* create(const QString& key, const QString& socketPath) override {
        return key == QLatin1String("usbtooldriver") ? new Server(socketPath) : nullptr;
    }
};

} // namespace driver

#include "plugin.moc"
