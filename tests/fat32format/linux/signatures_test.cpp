#include "tools/fat32format/linux/signatures.h"

#include "platform/linux/base/unique_fd.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

using fat32format::readSignatures;
using fat32format::Signature;
using Found = std::vector<Signature>;

namespace {

constexpr std::uint64_t size = 128ULL * 1024 * 1024;

/// An image with marks as the tools leave them, as far as they matter.
class Signatures : public testing::Test {
protected:
    Signatures() {
        std::string name = testing::TempDir() + "signatures_XXXXXX";
        image = platform::linux::UniqueFd(mkstemp(name.data()));
        unlink(name.c_str());
        EXPECT_EQ(ftruncate(image.get(), size), 0);
    }

    void write(off_t place, const std::string& bytes) {
        EXPECT_EQ(pwrite(image.get(), bytes.data(), bytes.size(), place), static_cast<ssize_t>(bytes.size()));
    }
    void writeNumber(off_t place, std::uint64_t value, int length) {
        std::string bytes;
        for (int i = 0; i < length; ++i)
            bytes += static_cast<char>((value >> (8 * i)) & 0xFFU);
        write(place, bytes);
    }
    void writeBtrfs(std::uint64_t devices) {
        write(65'536 + 0x40, "_BHRfS_M");
        writeNumber(65'536 + 0x88, devices, 8);
        writeNumber(65'536 + 0x90, 4096, 4); // sector
        writeNumber(65'536 + 0x30, 65'536, 8);
    }
    static std::string bigEndian(std::uint64_t value, int length) {
        std::string bytes;
        for (int i = length - 1; i >= 0; --i)
            bytes += static_cast<char>((value >> (8 * i)) & 0xFFU);
        return bytes;
    }
    /// One of a pool, a number, as XDR has it.
    static std::string property(std::string name, std::uint64_t value) {
        constexpr std::uint64_t number = 8; // the type
        const std::uint64_t length = name.size();
        name.resize((length + 3) / 4 * 4);
        const std::string rest =
            bigEndian(length, 4) + name + bigEndian(number, 4) + bigEndian(1, 4) + bigEndian(value, 8);
        return bigEndian(rest.size() + 8, 4) + bigEndian(rest.size() + 28, 4) + rest;
    }
    Found found() {
        const auto signatures = readSignatures(image.get(), size);
        EXPECT_TRUE(signatures.has_value());
        return signatures.value_or(Found());
    }

    platform::linux::UniqueFd image;
};

} // namespace

TEST_F(Signatures, Nothing) {
    EXPECT_EQ(found(), Found());
}

TEST_F(Signatures, ClosedEncryptedVolumeIsNamed) {
    write(0, std::string("LUKS\xBA\xBE\0\x01", 8));
    EXPECT_EQ(found(), (Found{{"LUKS", false}}));
}

TEST_F(Signatures, MemberOfAVolumeGroup) {
    write(512, "LABELONE");
    writeNumber(512 + 8, 1, 8);   // its sector
    writeNumber(512 + 20, 32, 4); // its length
    write(512 + 24, "LVM2 001");
    EXPECT_EQ(found(), (Found{{"LVM", true}}));
}

TEST_F(Signatures, MemberOfARaid) {
    writeNumber(4096, 0xA92B4EFC, 4);
    writeNumber(4096 + 4, 1, 4);    // version
    writeNumber(4096 + 0x90, 8, 8); // where it is, in sectors
    EXPECT_EQ(found(), (Found{{"RAID", true}}));
}

/// Older releases of the library go by the blocks, newer ones by the list of properties.
TEST_F(Signatures, MemberOfAPool) {
    for (int block = 0; block < 8; ++block)
        writeNumber(131'072 + block * 1024, 0x00BAB10C, 8);
    write(16'384, std::string("\x01\x01\0\0", 4) + bigEndian(0, 4) + bigEndian(1, 4) + property("state", 0) +
                      property("txg", 4) + property("guid", 5));
    EXPECT_EQ(found(), (Found{{"ZFS", true}}));
}

TEST_F(Signatures, BtrfsOnOneDeviceAndOnTwo) {
    writeBtrfs(1);
    EXPECT_EQ(found(), (Found{{"btrfs", false}}));
    writeBtrfs(2);
    EXPECT_EQ(found(), (Found{{"btrfs", true}}));
}

TEST_F(Signatures, SwapSpaceIsNoMember) {
    write(4096 - 10, "SWAPSPACE2");
    writeNumber(1024, 1, 4);
    writeNumber(1024 + 4, size / 4096 - 1, 4);
    EXPECT_EQ(found(), (Found{{"swap", false}}));
}

TEST_F(Signatures, EverythingThatIsThere) {
    write(0, std::string("LUKS\xBA\xBE\0\x01", 8));
    writeBtrfs(2);
    const Found all = found();
    EXPECT_EQ(all.size(), 2U);
    EXPECT_NE(std::find(all.begin(), all.end(), (Signature{"btrfs", true})), all.end());
}

TEST_F(Signatures, WhatCannotBeReadIsNotEmpty) {
    EXPECT_FALSE(readSignatures(-1, size).has_value());
    EXPECT_FALSE(readSignatures(image.get(), 0).has_value());
    EXPECT_FALSE(readSignatures(image.get(), size + 4096).has_value()) << "it ends too early";
    const platform::linux::UniqueFd folder(open("/", O_RDONLY | O_CLOEXEC));
    EXPECT_FALSE(readSignatures(folder.get(), size).has_value());
}
