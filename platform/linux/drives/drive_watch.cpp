#include "platform/linux/drives/drive_watch.h"

#include "platform/linux/drives/drive_table.h"
#include "platform/linux/drives/udisks.h"
#include "platform/program_folder.h"

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QPointer>

#include <algorithm>
#include <utility>

namespace platform::linux {

namespace {

using namespace std::chrono_literals;

/// Signals come in bursts: the disk, its partitions, the file systems on them.
constexpr auto burst = 50ms;

/// So long a disk may seem blank before its contents have been read.
constexpr auto readingTime = 1500ms;

/// A service that is started anew has the same drives as before.
constexpr auto restart = 1000ms;

bool contains(const std::vector<PresentDrive>& drives, const PresentDrive& drive) {
    return std::any_of(drives.begin(), drives.end(), [&drive](const PresentDrive& other) {
        return other.letter == drive.letter && other.identity == drive.identity;
    });
}

/// Whether one of `drives` is not among the others.
bool hasMore(const std::vector<PresentDrive>& drives, const std::vector<PresentDrive>& others) {
    return std::any_of(drives.begin(), drives.end(),
                       [&others](const PresentDrive& drive) { return !contains(others, drive); });
}

bool isAboutDrives(const QString& object) {
    return object.startsWith(udisks::blockDevicesPath) || object.startsWith(udisks::drivesPath);
}

} // namespace

DriveWatch::DriveWatch(Listener listener, Delivery delivery, QObject* parent)
    : QObject(parent),
      listener_(std::move(listener)),
      delivery_(std::move(delivery)),
      file_(programFolder(), "Drives.ini"),
      fileNotifier_(QSocketNotifier::Read) {
    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, &DriveWatch::deliverCheck);
    connect(&fileNotifier_, &QSocketNotifier::activated, this, &DriveWatch::fileChanged);
    if (file_.descriptor() >= 0) {
        fileNotifier_.setSocket(file_.descriptor());
        fileNotifier_.setEnabled(true);
    }
    listenToBus();
    listDrives();
    known_ = driveSource().present();
    onDrivesListed([this](const std::string& letters) { listed(letters); });
}

DriveWatch::~DriveWatch() {
    stop();
}

void DriveWatch::stop() {
    if (stopped_) return;
    stopped_ = true;
    onDrivesListed({});
    timer_.stop();
    fileNotifier_.setEnabled(false);
}

/// Only when the table comes from there; with a file beside the program UDisks2 is left alone.
void DriveWatch::listenToBus() {
    if (listening_ || !driveSource().isOnBus()) return;
    listening_ = true;
    QDBusConnection bus = QDBusConnection::systemBus();
    const QString manager = "org.freedesktop.DBus.ObjectManager";
    for (const char* name : {"InterfacesAdded", "InterfacesRemoved"})
        bus.connect(udisks::service, udisks::managerPath, manager, name, this,
                    SLOT(objectsChanged(QDBusMessage)));
    bus.connect(udisks::service, {}, "org.freedesktop.DBus.Properties", "PropertiesChanged", this,
                SLOT(propertiesChanged(QDBusMessage)));
    bus.connect("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameOwnerChanged",
                {udisks::service}, {}, this, SLOT(ownerChanged(QString, QString, QString)));
}

void DriveWatch::objectsChanged(const QDBusMessage& signal) {
    const QVariant object = signal.arguments().value(0);
    if (isAboutDrives(qvariant_cast<QDBusObjectPath>(object).path())) checkWithin(burst);
}

void DriveWatch::propertiesChanged(const QDBusMessage& signal) {
    if (isAboutDrives(signal.path())) checkWithin(burst);
}

void DriveWatch::ownerChanged(const QString& /*service*/, const QString& /*oldOwner*/,
                              const QString& newOwner) {
    checkWithin(newOwner.isEmpty() ? restart : burst);
}

void DriveWatch::fileChanged() {
    if (file_.takeChange()) checkWithin(burst);
}

void DriveWatch::checkWithin(std::chrono::milliseconds delay) {
    if (stopped_) return;
    if (!timer_.isActive() || timer_.remainingTimeAsDuration() > delay) timer_.start(delay);
}

void DriveWatch::deliverCheck() {
    delivery_([self = QPointer<DriveWatch>(this)] {
        if (self && !self->stopped_) self->check();
    });
}

void DriveWatch::check() {
    listenToBus();
    listDrives();
    mirrorDriveTable();
    std::vector<PresentDrive> present = usableDrives(driveSource().present());
    const bool gone = hasMore(known_, present);
    const bool came = hasMore(present, known_);
    known_ = std::move(present);
    const Listener listener = listener_;
    const QPointer<DriveWatch> self(this); // the listener may run an event loop of its own
    if (gone) listener(DriveChange::Removal);
    if (!came || !self || self->stopped_) return;
    const ListAtHand list;
    listener(DriveChange::Arrival);
}

/// A drive may be pulled, looked for in vain, and plugged in again before the next check, which would find it
/// as it was. Whoever looked has to be told, so it counts as another one from here on.
void DriveWatch::listed(const std::string& letters) {
    for (PresentDrive& drive : known_) {
        if (letters.find(drive.letter) != std::string::npos) continue;
        drive.identity.clear();
        checkWithin(burst);
    }
}

std::vector<PresentDrive> DriveWatch::usableDrives(const std::vector<PresentDrive>& present) {
    std::erase_if(unread_, [&present](const auto& waiting) {
        return std::none_of(present.begin(), present.end(), [&waiting](const PresentDrive& drive) {
            return drive.identity == waiting.first;
        });
    });
    std::vector<PresentDrive> usable;
    for (const PresentDrive& drive : present)
        if (isUsable(drive)) usable.push_back(drive);
    return usable;
}

bool DriveWatch::isUsable(const PresentDrive& drive) {
    if (drive.recognised || contains(known_, drive)) return true;
    const Clock::time_point now = Clock::now();
    const auto since = unread_.emplace(drive.identity, now).first->second;
    const auto left = readingTime - std::chrono::duration_cast<std::chrono::milliseconds>(now - since);
    if (left <= 0ms) return true;
    checkWithin(left);
    return false;
}

} // namespace platform::linux
