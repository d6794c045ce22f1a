#include "platform/accounts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <pwd.h>
#include <sstream>
#include <unistd.h>

namespace {

using Names = std::vector<std::string>;

Names split(const std::string& text, char separator) {
    Names parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);)
        parts.push_back(part);
    return parts;
}

/// The members that the group file lists; no value when it has no such group.
std::optional<Names> membersInFile(const std::string& group) {
    std::ifstream file("/etc/group");
    for (std::string line; std::getline(file, line);) {
        const Names fields = split(line, ':');
        if (fields.front() == group) return fields.size() > 3 ? split(fields[3], ',') : Names();
    }
    return std::nullopt;
}

class UserName : public testing::Test {
public:
    UserName() {
        if (const char* name = std::getenv("USERNAME")) before_ = name;
    }
    ~UserName() override {
        if (before_)
            setenv("USERNAME", before_->c_str(), 1);
        else
            unsetenv("USERNAME");
    }
    UserName(const UserName&) = delete;
    UserName& operator=(const UserName&) = delete;

private:
    std::optional<std::string> before_;
};

} // namespace

TEST(AdministratorsGroup, IsTheMembersOfFourGroupsTakenTogether) {
    const auto members = platform::localGroupMembers(platform::administratorsGroup);
    ASSERT_TRUE(members.has_value());
    std::size_t expected = 1; // root itself
    for (const char* group : {"root", "sudo", "wheel", "admin"}) {
        const auto listed = membersInFile(group);
        if (!listed) continue;
        expected += listed->size();
        for (const std::string& name : *listed)
            EXPECT_NE(std::find(members->begin(), members->end(), name), members->end()) << name;
    }
    EXPECT_EQ(members->size(), expected);
}

TEST(AdministratorsGroup, HasRootAmongItsMembers) {
    const auto members = platform::localGroupMembers(platform::administratorsGroup);
    ASSERT_TRUE(members.has_value());
    EXPECT_NE(std::find(members->begin(), members->end(), "root"), members->end());
}

TEST(LocalGroup, UserWhosePrimaryGroupItIsIsNoMember) {
    // The group "daemon" is the primary group of the user of that name, and the group file lists nobody.
    ASSERT_EQ(membersInFile("daemon"), Names());
    EXPECT_EQ(platform::localGroupMembers("daemon"), Names());
}

TEST_F(UserName, ComesFromTheVariable) {
    setenv("USERNAME", "somebody", 1);
    EXPECT_EQ(platform::userName(), "somebody");
    setenv("USERNAME", "", 1);
    EXPECT_EQ(platform::userName(), "");
}

TEST_F(UserName, IsTheLoginNameWithoutTheVariable) {
    unsetenv("USERNAME");
    EXPECT_EQ(platform::userName(), getpwuid(getuid())->pw_name);
}
