// Drives that come and go.
#pragma once

#include "platform/linux/drives/drive_source.h"
#include "platform/linux/drives/file_watch.h"

#include <QDBusMessage>
#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace platform::linux {

enum class DriveChange { Arrival, Removal };

/// Compares the drive table with what it was whenever UDisks2 or a change of "Drives.ini" gives cause; in
/// between it sleeps.
class DriveWatch : public QObject {
    Q_OBJECT

public:
    /// `listener` is called from the event loop, once for all drives that came or went together, and may do
    /// anything, so also stop this watch.
    using Listener = std::function<void(DriveChange)>;
    /// Runs a look at the drives as an event of the program; it may come later.
    using Delivery = std::function<void(const std::function<void()>& look)>;

    explicit DriveWatch(Listener listener, Delivery delivery, QObject* parent = nullptr);
    DriveWatch(const DriveWatch&) = delete;
    DriveWatch& operator=(const DriveWatch&) = delete;
    ~DriveWatch() override;
    /// No call of the listener follows.
    void stop();

private:
    using Clock = std::chrono::steady_clock;

    Q_SLOT void objectsChanged(const QDBusMessage& signal);
    Q_SLOT void propertiesChanged(const QDBusMessage& signal);
    Q_SLOT void ownerChanged(const QString& service, const QString& oldOwner, const QString& newOwner);
    void fileChanged();
    void checkWithin(std::chrono::milliseconds delay);
    void deliverCheck();
    void check();
    void listed(const std::string& letters);
    void listenToBus();
    std::vector<PresentDrive> usableDrives(const std::vector<PresentDrive>& present);
    bool isUsable(const PresentDrive& drive);

    Listener listener_;
    Delivery delivery_;
    FileWatch file_;
    QSocketNotifier fileNotifier_;
    QTimer timer_;
    std::vector<PresentDrive> known_;
    std::map<std::string, Clock::time_point> unread_; ///< since when, by identity
    bool listening_ = false;
    bool stopped_ = false;
};

} // namespace platform::linux
