#include "main_window.h"

#include "platform/shell_open.h"

class ShellOpen : public testing::Test {
protected:
    ShellOpen() { fake::reset(); }
    ~ShellOpen() override { fake::reset(); }

    static bool open(bool fallback) {
        return platform::ShellOpenFile("open", "a b.xyz", "param", "folder", 1, fallback);
    }
    static void codeIs(int code) { fake::computer().shellCodes["a b.xyz"] = code; }
    static const std::vector<std::string>& choosers() { return fake::computer().choosers; }
};

TEST_F(ShellOpen, PassesEverythingOnUnchangedWithTheDesktopAsOwner) {
    EXPECT_TRUE(open(true));
    ASSERT_EQ(fake::computer().shellCalls.size(), 1U);
    const fake::ShellCall& call = fake::computer().shellCalls[0];
    EXPECT_EQ(call.owner, 0);
    EXPECT_EQ(call.verb, "open");
    EXPECT_EQ(call.file, "a b.xyz");
    EXPECT_EQ(call.parameters, "param");
    EXPECT_EQ(call.directory, "folder");
    EXPECT_EQ(call.showCommand, 1);
    EXPECT_TRUE(choosers().empty());
}

TEST_F(ShellOpen, CodesAbove32AreSuccess) {
    codeIs(33);
    EXPECT_TRUE(open(false));
    codeIs(42);
    EXPECT_TRUE(open(false));
    codeIs(32);
    EXPECT_FALSE(open(true));
    codeIs(0);
    EXPECT_FALSE(open(true));
    EXPECT_TRUE(choosers().empty());
}

TEST_F(ShellOpen, AFileWithoutAProgramIsOfferedToTheChooserAndIsStillNoSuccess) {
    codeIs(31);
    EXPECT_FALSE(open(true));
    EXPECT_EQ(choosers(), std::vector<std::string>{"rundll32.exe shell32.dll,OpenAs_RunDLL a b.xyz"});
}

TEST_F(ShellOpen, WithoutTheFallbackNothingOpens) {
    codeIs(31);
    EXPECT_FALSE(open(false));
    EXPECT_TRUE(choosers().empty());
}

TEST_F(ShellOpen, NoOtherCodeOpensTheChooser) {
    for (const int code : {0, 2, 3, 5, 30, 32}) {
        codeIs(code);
        EXPECT_FALSE(open(true));
    }
    EXPECT_TRUE(choosers().empty());
    EXPECT_TRUE(fake::computer().messages.empty());
}
