// Letters beyond ASCII at every boundary of the services.
#include "platform/windows/ansi_text.h"

#include "platform/files.h"
#include "platform/notify_icon.h"
#include "platform/profile.h"
#include "platform/text.h"
#include "platform/volumes.h"
#include "tests/conformance/environment.h"
#include "tests/conformance/scratch_files.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

using namespace platform;
using namespace platform::windows;
using conformance::Drives;

namespace {

const std::string letters = "ä ß € Größe";

} // namespace

TEST(Ansi, TextComesBack) {
    EXPECT_EQ(exactAnsi(letters), toAnsi(letters)) << "Wine's code page is 1252";
    EXPECT_EQ(utf8FromAnsi(toAnsi(letters)), letters);
    EXPECT_EQ(exactAnsi(""), "");
    EXPECT_EQ(utf8FromAnsi(""), "");
}

TEST(Ansi, WhatHasNoPlaceIsNoName) {
    EXPECT_EQ(exactAnsi("日本"), std::nullopt);
    EXPECT_EQ(exactAnsi("ａ"), std::nullopt) << "not the letter that looks like it";
    EXPECT_EQ(exactAnsi("\xC3"), std::nullopt) << "half a character";
    EXPECT_EQ(nearestAnsi("日"), "?");
}

TEST(Ansi, FilesAndProfiles) {
    Drives drives;
    const auto stick = drives.add('E', DriveRemovable);
    const std::string path = "E:\\" + letters + ".ini";
    EXPECT_TRUE(writeProfileString(toAnsi(letters), toAnsi(letters), toAnsi(letters), path));
    EXPECT_EQ(conformance::get(stick / conformance::named(letters + ".ini")),
              "[" + toAnsi(letters) + "]\r\n" + toAnsi(letters) + "=" + toAnsi(letters) + "\r\n");
    std::vector<char> buffer(1000);
    const auto count = profileSection(toAnsi(letters), buffer, path);
    EXPECT_EQ(fromAnsi({buffer.data(), count}), letters + "=" + letters + '\0');

    FileSearch search("E:\\*.*");
    FoundFile found;
    ASSERT_TRUE(search.next(found));
    EXPECT_EQ(found.name, letters + ".ini");
    EXPECT_EQ(fileAttributes("E:\\" + found.name), FileArchive);
}

// Wine keeps a volume's label in a file, and reads it when the drive appears.
TEST(Ansi, Labels) {
    Drives drives;
    const auto stick = drives.add('E', DriveRemovable);
    EXPECT_TRUE(setVolumeLabel("E:\\", "Größe €"));
    const std::string stored = conformance::get(stick / ".windows-label");
    EXPECT_EQ(stored.substr(0, stored.find('\n')), "Größe €");
    EXPECT_FALSE(setVolumeLabel("E:\\", "日本"));
}

TEST(NotifyIcon, ARecordThatWasNeverAddedIsNotChanged) {
    NotifyIconRecord record{};
    EXPECT_FALSE(shellNotifyIcon(NotifyIcon::Modify, record));
    EXPECT_FALSE(shellNotifyIcon(NotifyIcon::Delete, record));
}

TEST(NotifyIcon, AFullTipWithoutANulIsTaken) {
    NotifyIconRecord record{};
    std::fill(record.begin() + notify_record::szTip, record.end(), static_cast<std::uint8_t>('x'));
    record[notify_record::uFlags] = 4;
    EXPECT_FALSE(shellNotifyIcon(NotifyIcon::Modify, record));
}
