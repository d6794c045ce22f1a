// The mock of UDisks2 as a service by itself, for tests of the whole program:
//
//   udisks_stand_in FOLDER MOUNT_POINT
//
// It stands on the bus that DBUS_SYSTEM_BUS_ADDRESS names. Each line on its standard input plugs in one more
// stick: the folder, which those who ask know as the mount point. It ends with its input.
#include "tests/conformance/linux/udisks_mock.h"
#include "tests/conformance/linux/udisks_objects.h"

#include <QCoreApplication>

#include <sys/stat.h>

#include <iostream>
#include <string>

using namespace conformance;

int main(int count, char** arguments) {
    struct stat folder = {};
    if (count != 3 || stat(arguments[1], &folder) != 0) {
        std::cerr << "usage: udisks_stand_in FOLDER MOUNT_POINT\n";
        return 2;
    }
    const QCoreApplication application(count, arguments);
    UdisksMock service;
    std::cout << "ready" << std::endl;
    std::string line;
    for (int number = 1; std::getline(std::cin, line); ++number) {
        const QString partition = QStringLiteral("sd%1").arg(number);
        const QString drive = QStringLiteral("stick_%1").arg(number);
        service.add(drivePath(drive), stickDrive(drive));
        service.add(blockPath(partition),
                    fileSystemBlock(partition, folder.st_dev, drive, fat32("ORVANTA"), {arguments[2]}));
        std::cout << "plugged in" << std::endl;
    }
}
