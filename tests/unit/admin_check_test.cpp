#include "format/admin_check.h"

#include "fake_process.h"

#include <gtest/gtest.h>

using fake::accounts;

namespace {

class AdminCheck : public testing::Test {
protected:
    AdminCheck() {
        fake::resetConsole();
        accounts().user = "anna";
    }

    static void setMembers(const std::vector<std::string>& names) {
        accounts().groups["Administratoren"] = names;
    }
};

} // namespace

TEST_F(AdminCheck, MemberIsAdministrator) {
    setMembers({"Administrator", "anna"});
    EXPECT_TRUE(format::IsUserAdmin());
}

TEST_F(AdminCheck, AnybodyElseIsNot) {
    setMembers({"Administrator", "bert"});
    EXPECT_FALSE(format::IsUserAdmin());
}

TEST_F(AdminCheck, NamesAreComparedExactly) {
    setMembers({"Anna", "anna2", "ann", "anna "});
    EXPECT_FALSE(format::IsUserAdmin());
}

TEST_F(AdminCheck, GroupUnderAnotherNameDoesNotCount) {
    accounts().groups["Administrators"] = {"anna"};
    EXPECT_FALSE(format::IsUserAdmin());
}

TEST_F(AdminCheck, MemberOfANestedGroupIsNone) {
    setMembers({"Domain Admins"});
    accounts().groups["Domain Admins"] = {"anna"};
    EXPECT_FALSE(format::IsUserAdmin());
}

TEST_F(AdminCheck, EmptyGroupHasNoAdministrator) {
    setMembers({});
    EXPECT_FALSE(format::IsUserAdmin());
}
