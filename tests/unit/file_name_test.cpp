// Which names of the catalog's may be written to the stick.

#include "online/file_name.h"

#include <gtest/gtest.h>

#include <string_view>

using online::isFileNameForStick;

TEST(FileNameForStick, IsAnyOrdinaryName) {
    for (const std::string_view name :
         {"sr200.abs",    "sr200_at.sdx",      "Firmware 1.0.bin",  "a",         ".hidden",
          "~1",           "fw~1.bin",          "usb.ini.bin",       "xusb.ini",  "usb.in",
          "autorun.info", "orvantastick.icon", "orvantastick1.ico", "or.ico",    "orvant~.ico",
          "orvant~a.ico", "orvantas~1.ico",    "xr~1.ico",          "Größe.bin", "a..b"})
        EXPECT_TRUE(isFileNameForStick(name)) << name;
}

TEST(FileNameForStick, NamesNoFolderDriveOrStream) {
    for (const std::string_view name :
         {"Dokumente\\Steuer.pdf", "Dokumente/Steuer.pdf", "\\a", "/a", "a\\", "..\\a", "../a", "C:a",
          "C:\\a", ":a", "a:stream", "autorun.inf::$DATA", "\\\\server\\share\\a"})
        EXPECT_FALSE(isFileNameForStick(name)) << name;
}

TEST(FileNameForStick, IsNoneOfTheProgramsOwn) {
    for (const std::string_view name :
         {"USB.ini", "usb.ini", "UsB.InI", "USB.ini.", "USB.ini ", "usb.ini. . .", "autorun.inf",
          "AUTORUN.INF", "Autorun.inf..", "orvantastick.ico", "ORVANTASTICK.ICO", "OrvantaStick.ico  "})
        EXPECT_FALSE(isFileNameForStick(name)) << name;
}

TEST(FileNameForStick, IsNoShortNameOfTheIcon) {
    for (const std::string_view name :
         {"ORVANT~1.ICO", "orvant~9.ico", "orvan~12.ico", "or4A2F~1.ico", "orvant~1.ico. "})
        EXPECT_FALSE(isFileNameForStick(name)) << name;
}

TEST(FileNameForStick, IsNotNothing) {
    for (const std::string_view name : {"", ".", "..", " ", " . "})
        EXPECT_FALSE(isFileNameForStick(name)) << "'" << name << "'";
}
