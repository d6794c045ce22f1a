// The notification icon's record, byte for byte.

#include "main_window.h"

#include "platform/cTray.h"

#include <algorithm>
#include <numeric>

using namespace platform;

class Tray : public testing::Test {
protected:
    Tray() { fake::reset(); }
    ~Tray() override { fake::reset(); }

    static const fake::TrayCall& last() { return fake::computer().trayCalls.back(); }

    static std::uint32_t number(const NotifyIconRecord& record, std::size_t offset) {
        return std::accumulate(record.begin() + static_cast<std::ptrdiff_t>(offset),
                               record.begin() + static_cast<std::ptrdiff_t>(offset) + 4, 0U,
                               [shift = 0](std::uint32_t sum, std::uint8_t byte) mutable {
                                   sum += std::uint32_t{byte} << shift;
                                   shift += 8;
                                   return sum;
                               });
    }

    static std::string tip(const NotifyIconRecord& record) { return {record.begin() + 24, record.end()}; }

    cTray tray;
};

TEST_F(Tray, SetAddsTheWholeRecord) {
    tray.TrayIcon_Icon(toolkit::iconResource(toolkit::stickIcon));
    tray.TrayIcon_Set(0x12345678, "Tip");
    ASSERT_EQ(fake::computer().trayCalls.size(), 1U);
    EXPECT_EQ(last().message, NotifyIcon::Add);
    NotifyIconRecord expected{88, 0, 0, 0, 0x78, 0x56, 0x34, 0x12, 1, 0, 0,   0,   7,   0,
                              0,  0, 0, 2, 0,    0,    104,  0,    0, 0, 'T', 'i', 'p', 0};
    std::fill(expected.begin() + 28, expected.end(), std::uint8_t{' '});
    EXPECT_EQ(last().record, expected);
}

TEST_F(Tray, SetWithoutAPictureHasNoIcon) {
    tray.TrayIcon_Set(1, "");
    EXPECT_EQ(number(last().record, 20), 0U);
    EXPECT_EQ(tip(last().record), std::string(1, '\0') + std::string(63, ' '));
}

TEST_F(Tray, MessageCodesAreTheShells) {
    EXPECT_EQ(static_cast<int>(NotifyIcon::Add), 0);
    EXPECT_EQ(static_cast<int>(NotifyIcon::Modify), 1);
    EXPECT_EQ(static_cast<int>(NotifyIcon::Delete), 2);
}

TEST_F(Tray, ModifyChangesTipAndIconAndKeepsTheRest) {
    tray.TrayIcon_Set(-2, "a");
    tray.TrayIcon_Modify("b", 103);
    EXPECT_EQ(last().message, NotifyIcon::Modify);
    EXPECT_EQ(number(last().record, 0), 88U);
    EXPECT_EQ(number(last().record, 4), 0xFFFFFFFEU);
    EXPECT_EQ(number(last().record, 8), 1U);
    EXPECT_EQ(number(last().record, 12), 7U);
    EXPECT_EQ(number(last().record, 16), 512U);
    EXPECT_EQ(number(last().record, 20), 103U);
    EXPECT_EQ(tip(last().record), std::string("b\0", 2) + std::string(62, ' '));
}

TEST_F(Tray, ModifyWithoutAnIconKeepsItAndHandsItBack) {
    tray.TrayIcon_Icon(toolkit::iconResource(toolkit::stickIcon));
    tray.TrayIcon_Set(1, "a");
    std::optional<std::int32_t> icon;
    tray.TrayIcon_Modify("b", icon);
    EXPECT_EQ(icon, 104);
    EXPECT_EQ(number(last().record, 20), 104U);
    tray.TrayIcon_Modify("c");
    EXPECT_EQ(number(last().record, 20), 104U);
}

TEST_F(Tray, ModifyWithoutASetHasNoNumberFlagsAndMessage) {
    tray.TrayIcon_Modify("b", 104);
    EXPECT_EQ(number(last().record, 0), 88U);
    EXPECT_EQ(number(last().record, 4), 0U);
    EXPECT_EQ(number(last().record, 8), 0U);
    EXPECT_EQ(number(last().record, 12), 0U);
    EXPECT_EQ(number(last().record, 16), 0U);
}

TEST_F(Tray, ATipOf63CharactersHasRoomForItsNul) {
    tray.TrayIcon_Modify(std::string(63, 'x'), 0);
    EXPECT_EQ(tip(last().record), std::string(63, 'x') + '\0');
}

TEST_F(Tray, ALongTipFillsTheFieldWithoutANul) {
    tray.TrayIcon_Modify(std::string(64, 'x'), 0);
    EXPECT_EQ(tip(last().record), std::string(64, 'x'));
    tray.TrayIcon_Modify(std::string(80, 'y'), 0);
    EXPECT_EQ(tip(last().record), std::string(64, 'y'));
}

TEST_F(Tray, TipsCountAnsiCharacters) {
    std::string text;
    for (int i = 0; i < 70; ++i)
        text += "ü";
    tray.TrayIcon_Modify(text, 0);
    EXPECT_EQ(tip(last().record), std::string(64, '\xFC'));
}

TEST_F(Tray, ThePictureIsKeptByReferenceAndShowsWithTheNextSetOnly) {
    const base::Picture picture = toolkit::iconResource(toolkit::noStickIcon);
    tray.TrayIcon_Icon(picture);
    EXPECT_EQ(tray.TrayIcon_Icon(), picture);
    EXPECT_TRUE(fake::computer().trayCalls.empty());
    tray.TrayIcon_Modify("a");
    EXPECT_EQ(number(last().record, 20), 0U);
}

TEST_F(Tray, DeleteSendsTheRecordAsItStands) {
    tray.TrayIcon_Modify("b", 104);
    const NotifyIconRecord record = last().record;
    tray.TrayIcon_Delete();
    EXPECT_EQ(last().message, NotifyIcon::Delete);
    EXPECT_EQ(last().record, record);
    EXPECT_EQ(tray.record(), record);
}

TEST_F(Tray, ItsEndDeletesTheIcon) {
    { cTray other; }
    ASSERT_EQ(fake::computer().trayCalls.size(), 1U);
    EXPECT_EQ(last().message, NotifyIcon::Delete);
    EXPECT_EQ(last().record, NotifyIconRecord{});
}

class TrayOfTheProgram : public unit::MainWindow {};

TEST_F(TrayOfTheProgram, IsModifiedAndNeverAdded) {
    start();
    click(window().cmdSearch);
    close();
    for (const auto& call : computer().trayCalls)
        EXPECT_NE(call.message, NotifyIcon::Add);
}

TEST_F(TrayOfTheProgram, ShowsTheTitleAndTheStick) {
    start();
    ASSERT_FALSE(computer().trayCalls.empty());
    const auto& record = computer().trayCalls.back().record;
    const std::string tip(record.begin() + 24, record.end());
    EXPECT_TRUE(tip.starts_with(unit::title + '\0'));
    EXPECT_EQ(record[20], 104);
    EXPECT_EQ(fake::nameOf(program.Tray->TrayIcon_Icon()), "icon 104");
}
