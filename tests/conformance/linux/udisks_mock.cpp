#include "tests/conformance/linux/udisks_mock.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusUnixFileDescriptor>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <stdexcept>
#include <string>
#include <utility>

namespace conformance {

namespace {

using platform::linux::udisks::managerPath;
using platform::linux::udisks::service;

constexpr int deadline = 20'000; // milliseconds

QDBusMessage objectManagerSignal(const char* name) {
    return QDBusMessage::createSignal(managerPath, "org.freedesktop.DBus.ObjectManager", name);
}

QString lastName(const QDBusObjectPath& object) {
    return object.path().section('/', -1);
}

QDBusMessage failure(const QDBusMessage& message, const QString& error) {
    return message.createErrorReply("org.freedesktop.UDisks2.Error." + error, "as the test wants it");
}

} // namespace

PrivateBus::PrivateBus() {
    daemon_.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); }); // also when the test is killed
    daemon_.start("dbus-daemon", {"--session", "--nofork", "--print-address=1"});
    if (!daemon_.waitForStarted(deadline) || !daemon_.waitForReadyRead(deadline))
        throw std::runtime_error("dbus-daemon does not start");
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", daemon_.readLine().trimmed());
}

PrivateBus::~PrivateBus() {
    daemon_.kill();
    daemon_.waitForFinished(deadline);
}

UdisksMock::UdisksMock()
    : bus_(QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS"), "udisks-mock")) {
    qDBusRegisterMetaType<Interfaces>();
    qDBusRegisterMetaType<Objects>();
    qDBusRegisterMetaType<QByteArrayList>();
    if (!bus_.isConnected()) throw std::runtime_error("no private bus");
    if (!bus_.registerVirtualObject("/org/freedesktop/UDisks2", this, QDBusConnection::SubPath))
        throw std::runtime_error("the mock cannot be registered");
    moveToThread(&thread_);
    thread_.start();
    start();
}

UdisksMock::~UdisksMock() {
    stop();
    bus_.unregisterObject("/org/freedesktop/UDisks2", QDBusConnection::UnregisterTree);
    thread_.quit();
    thread_.wait();
    QDBusConnection::disconnectFromBus("udisks-mock");
}

void UdisksMock::start() {
    if (!bus_.registerService(service)) throw std::runtime_error("the name of UDisks2 is taken");
}

void UdisksMock::stop() {
    bus_.unregisterService(service);
}

void UdisksMock::add(const QDBusObjectPath& object, const Interfaces& interfaces) {
    const std::lock_guard lock(mutex_);
    objects_[object] = interfaces;
    QDBusMessage signal = objectManagerSignal("InterfacesAdded");
    signal << QVariant::fromValue(object) << QVariant::fromValue(interfaces);
    bus_.send(signal);
}

void UdisksMock::addInterface(const QDBusObjectPath& object, const QString& interface,
                              const QVariantMap& properties) {
    const std::lock_guard lock(mutex_);
    objects_[object][interface] = properties;
    QDBusMessage signal = objectManagerSignal("InterfacesAdded");
    signal << QVariant::fromValue(object) << QVariant::fromValue(Interfaces{{interface, properties}});
    bus_.send(signal);
}

void UdisksMock::change(const QDBusObjectPath& object, const QString& interface,
                        const QVariantMap& properties) {
    const std::lock_guard lock(mutex_);
    update(object, interface, properties);
}

void UdisksMock::update(const QDBusObjectPath& object, const QString& interface,
                        const QVariantMap& properties) {
    objects_[object][interface].insert(properties);
    QDBusMessage signal =
        QDBusMessage::createSignal(object.path(), "org.freedesktop.DBus.Properties", "PropertiesChanged");
    signal << interface << properties << QStringList();
    bus_.send(signal);
}

void UdisksMock::remove(const QDBusObjectPath& object) {
    const std::lock_guard lock(mutex_);
    QDBusMessage signal = objectManagerSignal("InterfacesRemoved");
    signal << QVariant::fromValue(object) << QStringList(objects_[object].keys());
    std::filesystem::remove_all(mountFolder(lastName(object)));
    objects_.remove(object);
    bus_.send(signal);
}

void UdisksMock::failNext(const QString& method, const QString& error, int times) {
    const std::lock_guard lock(mutex_);
    failures_[method] = {error, times};
}

void UdisksMock::delayLabel(int lists) {
    const std::lock_guard lock(mutex_);
    labelDelay_ = lists;
}

void UdisksMock::delayMounts(int lists) {
    const std::lock_guard lock(mutex_);
    mountDelay_ = lists;
}

void UdisksMock::showMounts() {
    const std::lock_guard lock(mutex_);
    mountDelay_ = 0;
    showLateMounts();
}

void UdisksMock::holdMounts() {
    const std::lock_guard lock(mutex_);
    holdMounts_ = true;
}

void UdisksMock::answerMounts() {
    const std::lock_guard lock(mutex_);
    holdMounts_ = false;
    for (const QDBusMessage& answer : std::exchange(heldAnswers_, {})) {
        calls_ << "answer";
        bus_.send(answer);
    }
}

void UdisksMock::mountBehindTheBack(const QDBusObjectPath& object, const QString& error) {
    const std::lock_guard lock(mutex_);
    mountedByOther_ = object;
    errorOfOther_ = error;
}

void UdisksMock::setImage(const std::filesystem::path& image) {
    const std::lock_guard lock(mutex_);
    image_ = image;
}

void UdisksMock::whileOpening(const std::function<void()>& happens) {
    const std::lock_guard lock(mutex_);
    whileOpening_ = happens;
}

QStringList UdisksMock::takeCalls() {
    const std::lock_guard lock(mutex_);
    return std::exchange(calls_, {});
}

int UdisksMock::takeLists() {
    const std::lock_guard lock(mutex_);
    return std::exchange(lists_, 0);
}

bool UdisksMock::wasQuiet() {
    const std::lock_guard lock(mutex_);
    return quiet_;
}

QVariant UdisksMock::property(const QDBusObjectPath& object, const QString& interface, const QString& name) {
    const std::lock_guard lock(mutex_);
    return objects_.value(object).value(interface).value(name);
}

std::filesystem::path UdisksMock::mountFolder(const QString& name) const {
    return folder_.path() / name.toStdString();
}

quint64 UdisksMock::mountDevice() const {
    struct stat status = {};
    if (stat(folder_.path().c_str(), &status) != 0) throw std::runtime_error("no folder");
    return status.st_dev;
}

std::filesystem::path UdisksMock::mountTable() const {
    return folder_.path() / "mounts";
}

std::string UdisksMock::mountInKernel(const QString& name) {
    const std::filesystem::path folder = mountFolder(name);
    std::filesystem::create_directories(folder);
    std::ofstream(mountTable(), std::ios::app)
        << "/dev/" << name.toStdString() << ' ' << folder.string() << " vfat rw,nosuid 0 0\n";
    return folder;
}

QString UdisksMock::introspect(const QString& /*path*/) const {
    return {};
}

bool UdisksMock::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    std::unique_lock lock(mutex_);
    if (whileOpening_ && message.member() == "OpenDevice") {
        const auto happens = whileOpening_;
        lock.unlock();
        happens();
        lock.lock();
    }
    const QDBusMessage reply = answer(message);
    if (holdMounts_ && message.member() == "Mount")
        heldAnswers_ << reply;
    else
        connection.send(reply);
    return true;
}

QDBusMessage UdisksMock::answer(const QDBusMessage& message) {
    const QString method = message.member();
    const QString object = message.path().section('/', -1);
    auto failing = failures_.find(method);
    if (method == "GetManagedObjects") return list(message);
    calls_ << method + " " + object;
    const auto options = qdbus_cast<QVariantMap>(message.arguments().last());
    quiet_ = quiet_ && (method == "OpenDevice" || options.value("auth.no_user_interaction").toBool());
    if (failing != failures_.end() && failing->second.second > 0) {
        --failing->second.second;
        return failure(message, failing->second.first);
    }
    if (method == "Mount") return mount(message);
    if (method == "Unmount") return unmount(message);
    if (method == "SetLabel") return setLabel(message);
    if (method == "OpenDevice") return openDevice(message);
    return failure(message, "Failed");
}

QDBusMessage UdisksMock::list(const QDBusMessage& message) {
    ++lists_;
    for (const auto& [object, label] : lateLabels_)
        if (labelDelay_ <= 0) update(object, blockInterface, {{"IdLabel", label}});
    if (labelDelay_-- <= 0) lateLabels_.clear();
    if (mountDelay_-- <= 0) showLateMounts();
    return message.createReply(QVariant::fromValue(objects_));
}

bool UdisksMock::isMounted(const QDBusObjectPath& object) const {
    const QVariant folders = objects_.value(object).value(fileSystemInterface).value("MountPoints");
    return !qdbus_cast<QByteArrayList>(folders).isEmpty();
}

void UdisksMock::showLateMounts() {
    for (const auto& [object, folder] : std::exchange(lateMounts_, {}))
        update(object, fileSystemInterface, mountedAt({folder}));
}

QDBusMessage UdisksMock::mount(const QDBusMessage& message) {
    const QDBusObjectPath object(message.path());
    if (!objects_.value(object).contains(fileSystemInterface)) return failure(message, "Failed");
    if (isMounted(object)) return failure(message, "AlreadyMounted");
    if (lateMounts_.contains(object)) return failure(message, "Failed");
    const std::string folder = mountInKernel(lastName(object));
    lateMounts_[object] = QByteArray::fromStdString(folder);
    if (mountDelay_ <= 0) showLateMounts();
    if (object == mountedByOther_) return failure(message, errorOfOther_);
    return message.createReply(QString::fromStdString(folder));
}

QDBusMessage UdisksMock::unmount(const QDBusMessage& message) {
    const QDBusObjectPath object(message.path());
    if (!isMounted(object)) return failure(message, "NotMounted");
    std::filesystem::remove_all(mountFolder(lastName(object)));
    update(object, fileSystemInterface, mountedAt({}));
    return message.createReply();
}

/// As for FAT: not while it is mounted, and in capitals.
QDBusMessage UdisksMock::setLabel(const QDBusMessage& message) {
    const QDBusObjectPath object(message.path());
    if (isMounted(object)) return failure(message, "Failed");
    const QString label = message.arguments().first().toString().toUpper();
    if (labelDelay_ > 0)
        lateLabels_[object] = label;
    else
        update(object, blockInterface, {{"IdLabel", label}});
    return message.createReply();
}

/// As for a device that is mounted no more: to nobody else at the same time.
QDBusMessage UdisksMock::openDevice(const QDBusMessage& message) {
    if (isMounted(QDBusObjectPath(message.path()))) return failure(message, "Failed");
    const int device = open(image_.c_str(), O_RDWR | O_CLOEXEC);
    if (device < 0) return failure(message, "Failed");
    const QDBusUnixFileDescriptor handed(device); // a duplicate
    close(device);
    return message.createReply(QVariant::fromValue(handed));
}

} // namespace conformance
