#include "tests/driver/server.h"

#include <QGenericPlugin>

namespace driver {

class Plugin : public QGenericPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "usbtooldriver.json")

public:
    /// The specification is the path of the socket to listen on.
    QObject* create(const QString& key, const QString& specification) override {
        return key == QLatin1String("usbtooldriver") ? new Server(specification) : nullptr;
    }
};

} // namespace driver

#include "plugin.moc"
