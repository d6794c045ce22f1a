#include "platform/notify_icon.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace platform;

namespace {

/// A record of an icon that nobody has added.
NotifyIconRecord record(std::uint8_t number) {
    NotifyIconRecord record{};
    record[notify_record::cbSize] = notify_record::size;
    record[notify_record::uID] = number;
    record[notify_record::uFlags] = 1 + 2 + 4;
    return record;
}

} // namespace

TEST(NotifyIcon, WhatWasNeverAddedIsNotChanged) {
    EXPECT_FALSE(shellNotifyIcon(NotifyIcon::Modify, record(1)));
    EXPECT_FALSE(shellNotifyIcon(NotifyIcon::Modify, record(0)));
    EXPECT_FALSE(shellNotifyIcon(NotifyIcon::Modify, {})) << "a record of zeros";
}

TEST(NotifyIcon, WhatWasNeverAddedIsNotRemoved) {
    EXPECT_FALSE(shellNotifyIcon(NotifyIcon::Delete, record(1)));
    EXPECT_FALSE(shellNotifyIcon(NotifyIcon::Delete, {}));
}

TEST(NotifyIcon, ATipMayFillItsFieldWithoutANul) {
    NotifyIconRecord full = record(1);
    std::fill(full.begin() + notify_record::szTip, full.end(), static_cast<std::uint8_t>(0xE4));
    EXPECT_FALSE(shellNotifyIcon(NotifyIcon::Modify, full));
}
