// A service that stands for UDisks2 on a bus of the test's own.
#pragma once

#include "tests/conformance/linux/temporary_folder.h"
#include "tests/conformance/linux/udisks_objects.h"

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QStringList>
#include <QThread>

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>

namespace conformance {

/// A bus that the process takes for the system's. One a process, made before anything asks for the system
/// bus.
class PrivateBus {
public:
    PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;
    ~PrivateBus();

private:
    QProcess daemon_;
};

/// Answers in a thread of its own, since those who ask wait for the answer. "Mounting" makes a new folder;
/// its name is the volume's label.
class UdisksMock : public QDBusVirtualObject {
public:
    UdisksMock();
    UdisksMock(const UdisksMock&) = delete;
    UdisksMock& operator=(const UdisksMock&) = delete;
    ~UdisksMock() override;

    /// Appears on the bus, or vanishes from it.
    void start();
    void stop();

    // Each of these is followed by the signal that UDisks2 sends.
    void add(const QDBusObjectPath& object, const Interfaces& interfaces);
    void addInterface(const QDBusObjectPath& object, const QString& interface, const QVariantMap& properties);
    void change(const QDBusObjectPath& object, const QString& interface, const QVariantMap& properties);
    void remove(const QDBusObjectPath& object);

    /// The next calls of the method fail with that error ("DeviceBusy").
    void failNext(const QString& method, const QString& error, int times = 1);
    /// A label shows only after that many lists of all objects.
    void delayLabel(int lists);
    /// From now on the mount point of a new mount shows only after that many lists of all objects, or when
    /// told to show. Until then the service does not know of the mount.
    void delayMounts(int lists);
    void showMounts();
    /// From now on the answer to a mount waits until it is asked for, though the volume is mounted. It is
    /// then among the calls, "answer".
    void holdMounts();
    void answerMounts();
    /// What stands for every device that is opened.
    void setImage(const std::filesystem::path& image);
    /// What happens while the user types the password for a device, in the service's thread.
    void whileOpening(const std::function<void()>& happens);
    /// When told to mount, someone else has just done it.
    void mountBehindTheBack(const QDBusObjectPath& object, const QString& error = "AlreadyMounted");

    /// Calls since the last time, "Mount sdb1"; lists are not among them.
    QStringList takeCalls();
    /// How often everything was listed since the last time.
    int takeLists();
    /// Whether every call but a list asked not to bother the user.
    bool wasQuiet();
    QVariant property(const QDBusObjectPath& object, const QString& interface, const QString& name);
    std::filesystem::path mountFolder(const QString& name) const;
    /// Number of the device that volumes are "mounted" from.
    quint64 mountDevice() const;
    /// A list of the mounts as the kernel keeps one: it is up to date before the service's properties are.
    std::filesystem::path mountTable() const;
    /// Adds the volume to it and makes its folder.
    std::string mountInKernel(const QString& name);

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    QDBusMessage answer(const QDBusMessage& message);
    QDBusMessage list(const QDBusMessage& message);
    QDBusMessage mount(const QDBusMessage& message);
    QDBusMessage unmount(const QDBusMessage& message);
    QDBusMessage setLabel(const QDBusMessage& message);
    QDBusMessage openDevice(const QDBusMessage& message);
    bool isMounted(const QDBusObjectPath& object) const;
    void showLateMounts();
    void update(const QDBusObjectPath& object, const QString& interface, const QVariantMap& properties);

    TemporaryFolder folder_;
    QThread thread_;
    std::mutex mutex_;
    QDBusConnection bus_;
    Objects objects_;
    QStringList calls_;
    int lists_ = 0;
    bool quiet_ = true;
    std::map<QString, std::pair<QString, int>> failures_;
    int labelDelay_ = 0;
    std::map<QDBusObjectPath, QString> lateLabels_;
    int mountDelay_ = 0;
    std::map<QDBusObjectPath, QByteArray> lateMounts_;
    bool holdMounts_ = false;
    QList<QDBusMessage> heldAnswers_;
    std::filesystem::path image_;
    std::function<void()> whileOpening_;
    QDBusObjectPath mountedByOther_;
    QString errorOfOther_;
};

} // namespace conformance
