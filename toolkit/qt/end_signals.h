#pragma once

#include <QObject>

namespace toolkit::qt {

/// Turns SIGTERM, SIGINT and SIGHUP into a wish to close the program, on the user-interface thread.
class EndSignals : public QObject {
public:
    EndSignals();
    ~EndSignals() override;

private:
    void read();

    int readEnd_ = -1;
};

} // namespace toolkit::qt
