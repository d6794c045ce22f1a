// A run of the formatter on a system in memory.
#pragma once

#include "base/little_endian.h"
#include "tests/fat32format/fake_system.h"
#include "tools/fat32format/formatter.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>

namespace fat32format {

class Fat32Format : public testing::Test {
protected:
    Fat32Format() { system.volumes["/dev/sdb1"] = usbPartition(); }

    Volume& partition() { return system.volumes["/dev/sdb1"]; }

    Volume& useBlankDisk() {
        system.table['E'].node = "/dev/sdb";
        return system.volumes["/dev/sdb"] = blankDisk();
    }
    /// What the table of drives tells is true again, after a change of the volumes.
    void tellTheTable() {
        Target& target = system.table['E'];
        target.disk = system.volumes[target.node].identity();
    }

    Status run() { return format(system, options); }

    bool said(const std::string& text) const { return system.output.find(text) != std::string::npos; }

    /// It says so, does not say it has worked, and has not touched the disk.
    void expectRefusal(Status status, const std::string& reason) {
        EXPECT_EQ(run(), status);
        EXPECT_TRUE(said(reason)) << system.output;
        EXPECT_FALSE(said("Done")) << system.output;
        EXPECT_TRUE(system.disk.sectors.empty());
        EXPECT_EQ(system.disk.flushed, 0);
    }
    /// That there is a file system, and nothing else, from that place on; returns its first sector.
    Bytes expectFileSystem(std::uint64_t place, std::uint32_t size = 512) {
        const auto& sectors = system.disk.sectors;
        Bytes boot = system.disk.read(place, size);
        EXPECT_EQ(std::string(boot.begin() + 82, boot.begin() + 90), "FAT32   ");
        const auto count = std::distance(sectors.lower_bound(place), sectors.end());
        EXPECT_EQ(count, 6) << "two boot sectors, two of information, two tables";
        return boot;
    }

    /// The first one of the root folder of the file system with that first sector.
    Bytes expectRootSector(const Bytes& boot) {
        const auto number = [&boot](std::size_t at, std::size_t size) {
            return base::littleEndian(boot, at, size);
        };
        const std::uint64_t root = number(14, 2) + 2 * number(36, 4);
        EXPECT_TRUE(system.disk.sectors.contains(1'048'576 + root * 512));
        return system.disk.read(1'048'576 + root * 512, 512);
    }

    FakeSystem system;
    Options options{'E', 64, false};
};

} // namespace fat32format
