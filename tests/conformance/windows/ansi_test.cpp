// Letters beyond ASCII at every boundary of the services. The tray's tip has notification_area_test.cpp, the
// shell has shell_start_test.cpp.
#include "platform/windows/ansi_text.h"

#include "base/text.h"
#include "platform/accounts.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "platform/registry.h"
#include "platform/volumes.h"
#include "tests/conformance/console_run.h"
#include "tests/conformance/environment.h"
#include "tests/conformance/environment_registry.h"
#include "tests/conformance/scratch_files.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <array>
#include <vector>

using namespace platform;
using namespace platform::windows;
using conformance::Drives;

namespace {

const std::string letters = "ä ß € Größe";
constexpr std::wstring_view wideLetters = L"ä ß € Größe";

} // namespace

TEST(Ansi, TextComesBack) {
    EXPECT_EQ(exactAnsi(letters), base::toAnsi(letters)) << "Wine's code page is 1252";
    EXPECT_EQ(utf8FromAnsi(base::toAnsi(letters)), letters);
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
    EXPECT_TRUE(
        writeProfileString(base::toAnsi(letters), base::toAnsi(letters), base::toAnsi(letters), path));
    EXPECT_EQ(conformance::get(stick / conformance::named(letters + ".ini")),
              "[" + base::toAnsi(letters) + "]\r\n" + base::toAnsi(letters) + "=" + base::toAnsi(letters) +
                  "\r\n");
    std::vector<char> buffer(1000);
    const auto count = profileSection(base::toAnsi(letters), buffer, path);
    EXPECT_EQ(base::fromAnsi({buffer.data(), count}), letters + "=" + letters + '\0');
    std::vector<char> names(1000);
    EXPECT_EQ(base::fromAnsi({names.data(), profileSectionNames(names, path)}), letters + '\0');

    FileSearch search("E:\\*.*");
    FoundFile found;
    ASSERT_TRUE(search.next(found));
    EXPECT_EQ(found.name, letters + ".ini");
    EXPECT_EQ(fileAttributes("E:\\" + found.name), FileArchive);
    EXPECT_NE(GetFileAttributesW((L"E:\\" + std::wstring(wideLetters) + L".ini").c_str()),
              INVALID_FILE_ATTRIBUTES);
}

TEST(Ansi, CopiedFiles) {
    Drives drives;
    const auto stick = drives.add('E', DriveRemovable);
    ASSERT_EQ(writeWholeFile("E:\\" + letters, base::toAnsi(letters)), FileResult::Ok);
    EXPECT_EQ(copyFile("E:\\" + letters, "E:\\Ö" + letters), FileResult::Ok);
    EXPECT_EQ(conformance::get(stick / conformance::named("Ö" + letters)), base::toAnsi(letters));
    EXPECT_EQ(deleteFile("E:\\" + letters), FileResult::Ok);
    EXPECT_EQ(conformance::entries(stick), 1);
}

// Wine keeps a volume's label in a file.
TEST(Ansi, Labels) {
    Drives drives;
    const auto stick = drives.add('E', DriveRemovable);
    EXPECT_TRUE(setVolumeLabel("E:\\", "Größe €"));
    const std::string stored = conformance::get(stick / ".windows-label");
    EXPECT_EQ(stored.substr(0, stored.find('\n')), "Größe €");
    EXPECT_FALSE(setVolumeLabel("E:\\", "日本"));
}

// What other programs see, which ask for wide characters.
TEST(Ansi, RegistryTexts) {
    const conformance::RegistryPlace place;
    RegistryKey key = 0;
    RegistryDisposition disposition{};
    ASSERT_EQ(regCreateKey(registryCurrentUser, place.path() + '\\' + base::toAnsi(letters),
                           registryNonVolatile, 63, key, disposition),
              RegistrySuccess);
    EXPECT_EQ(regSetValue(key, base::toAnsi(letters), RegistryText, base::toAnsi(letters) + '\0'),
              RegistrySuccess);
    EXPECT_EQ(regCloseKey(key), RegistrySuccess);

    const std::string path = place.path();
    const std::wstring wideKey = std::wstring(path.begin(), path.end()) + L"\\" + std::wstring(wideLetters);
    std::array<WCHAR, 100> value{};
    DWORD size = sizeof value;
    ASSERT_EQ(RegGetValueW(HKEY_CURRENT_USER, wideKey.c_str(), wideLetters.data(), RRF_RT_REG_SZ, nullptr,
                           value.data(), &size),
              ERROR_SUCCESS);
    EXPECT_EQ(std::wstring_view(value.data()), wideLetters);
}

TEST(Ansi, ArgumentsAndOutputOfPrograms) {
    EXPECT_EQ(conformance::outputOf(conformance::child("arguments \"" + letters + "\" ü")),
              "[" + base::toAnsi(letters) + "][" + base::toAnsi("ü") + "]");
    EXPECT_EQ(conformance::outputOf(conformance::child("answer"), "ä€"),
              "Proceed? answer " + base::toAnsi("ä€"));
}

TEST(Ansi, UserNames) {
    std::array<WCHAR, 300> before{};
    GetEnvironmentVariableW(L"USERNAME", before.data(), static_cast<DWORD>(before.size()));
    ASSERT_TRUE(SetEnvironmentVariableW(L"USERNAME", wideLetters.data()));
    EXPECT_EQ(userName(), letters);
    SetEnvironmentVariableW(L"USERNAME", nullptr);
    EXPECT_NE(userName(), letters);
    EXPECT_FALSE(userName().empty()) << "the name that the user is logged in under";
    SetEnvironmentVariableW(L"USERNAME", before.data());
}
