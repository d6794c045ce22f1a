// The fixture of the tests of the drive table over UDisks2: a stand-in for the service, and a table that asks
// it.
#pragma once

#include "platform/linux/drives/udisks_drives.h"

#include "tests/conformance/linux/event_loop.h"
#include "tests/conformance/linux/udisks_mock.h"

#include <gtest/gtest.h>

#include <QDBusArgument>

#include <chrono>
#include <filesystem>
#include <thread>

namespace conformance {

class UdisksTable : public testing::Test {
protected:
    void addStick(const QString& name, quint64 number, const QVariantMap& more = {}) {
        mock.add(drivePath("drive_" + name), stickDrive("S" + name));
        mock.add(blockPath(name), fileSystemBlock(name, number, "drive_" + name, more));
    }
    /// As the desktop does it.
    void mountByDesktop(const QString& name) {
        const std::filesystem::path folder = mock.mountFolder(name);
        std::filesystem::create_directories(folder);
        mock.change(blockPath(name), fileSystemInterface, mountedAt({QByteArray::fromStdString(folder)}));
    }
    bool isMounted(const QString& name) {
        const QVariant folders = mock.property(blockPath(name), fileSystemInterface, "MountPoints");
        return !qdbus_cast<QByteArrayList>(folders).isEmpty();
    }
    QStringList calls() { return mock.takeCalls(); }
    std::thread answerMountsSoon() {
        return std::thread([this] {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            mock.answerMounts();
        });
    }

    UdisksMock mock;
    platform::linux::UdisksDrives drives;
};

} // namespace conformance
