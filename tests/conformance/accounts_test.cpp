#include "platform/accounts.h"

#include "tests/conformance/known_difference.h"

#include <gtest/gtest.h>

TEST(Accounts, MissingGroupHasNoMembersList) {
    EXPECT_FALSE(platform::localGroupMembers("no such group").has_value());
    EXPECT_FALSE(platform::localGroupMembers("").has_value());
}

TEST(Accounts, TheAdministratorsAreAGroup) {
    if (!conformance::knownDifference(conformance::Differs::Wine, "there is no directory service",
                                      "seen with Wine 8.0")) {
        EXPECT_TRUE(platform::localGroupMembers(platform::administratorsGroup).has_value());
    }
}

TEST(Accounts, UserHasAName) {
    EXPECT_FALSE(platform::userName().empty());
}
