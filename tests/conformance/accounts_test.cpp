#include "platform/accounts.h"

#include <gtest/gtest.h>

TEST(Accounts, MissingGroupHasNoMembersList) {
    EXPECT_FALSE(platform::localGroupMembers("no such group").has_value());
    EXPECT_FALSE(platform::localGroupMembers("").has_value());
}

TEST(Accounts, UserHasAName) {
    EXPECT_FALSE(platform::userName().empty());
}
