#include "platform/system_path.h"

#include "platform/files.h"
#include "platform/program_folder.h"
#include "tests/conformance/environment.h"

#include <gtest/gtest.h>

#include <fstream>

using namespace platform;
namespace fs = std::filesystem;

class SystemPath : public testing::Test {
protected:
    /// What stands there in the system's own terms.
    static std::string read(const std::string& path) {
        std::ifstream file(fs::path(reinterpret_cast<const char8_t*>(path.c_str())));
        std::string contents;
        file >> contents;
        return contents;
    }

    conformance::Drives drives;
    fs::path stick = drives.add('E', DriveRemovable);
};

TEST_F(SystemPath, LeadsToTheSameFile) {
    fs::create_directories(stick / "a");
    for (const char* file : {R"(E:\x.txt)", R"(E:\a\x.txt)"}) {
        ASSERT_EQ(writeWholeFile(file, "here"), FileResult::Ok);
        EXPECT_EQ(read(systemPath(file)), "here") << file;
    }
}

TEST_F(SystemPath, HasTheSeparatorsOfTheSystemAlone) {
    const char foreign = fs::path::preferred_separator == '/' ? '\\' : '/';
    for (const std::string& path :
         {std::string(R"(E:\a\x.txt)"), std::string(R"(E:\)"), programFolder() + R"(\x.txt)"})
        EXPECT_EQ(systemPath(path).find(foreign), std::string::npos) << systemPath(path);
}

TEST_F(SystemPath, ADriveThatIsNotThereKeepsItsLetter) {
    EXPECT_EQ(systemPath(R"(F:\a\x.txt)"), R"(F:\a\x.txt)");
}

TEST_F(SystemPath, WhatIsNoPathStays) {
    for (const char* text : {"", "chkAuto", "E", "usb-list.csv, Zeile 3", R"(a\b)"})
        EXPECT_EQ(systemPath(text), text);
}
