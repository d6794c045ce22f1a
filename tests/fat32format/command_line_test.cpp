#include "tools/fat32format/command_line.h"

#include <gtest/gtest.h>

#include <vector>

using fat32format::Options;

namespace {

std::optional<Options> parse(const std::vector<std::string>& arguments) {
    return fat32format::parseArguments(arguments);
}

} // namespace

TEST(CommandLine, AsTheAssistantGivesIt) {
    EXPECT_EQ(parse({"-c64", "E:"}), (Options{'E', 64, false}));
}

TEST(CommandLine, OptionsInAnyOrder) {
    EXPECT_EQ(parse({"F:", "--any-bus", "-c8"}), (Options{'F', 8, true}));
}

TEST(CommandLine, LetterInAnyCase) {
    EXPECT_EQ(parse({"-c64", "e:"}), (Options{'E', 64, false}));
}

TEST(CommandLine, ClusterSizesAreThePowersOfTwoUpTo128) {
    int accepted = 0;
    for (unsigned sectors = 0; sectors <= 300; ++sectors)
        if (parse({"-c" + std::to_string(sectors), "E:"})) ++accepted;
    EXPECT_EQ(accepted, 8);
    for (const unsigned sectors : {1U, 2U, 4U, 8U, 16U, 32U, 64U, 128U})
        EXPECT_TRUE(parse({"-c" + std::to_string(sectors), "E:"})) << sectors;
}

TEST(CommandLine, EverythingElseIsRefused) {
    const std::vector<std::vector<std::string>> wrong = {
        {},
        {"-c64"},
        {"E:"},
        {"-c", "E:"},
        {"-c64x", "E:"},
        {"-c-64", "E:"},
        {"-c+64", "E:"},
        {"-c 64", "E:"},
        {"-c99999999999999999999", "E:"},
        {"-c64", "E"},
        {"-c64", "E:\\"},
        {"-c64", "1:"},
        {"-c64", "\xC3\x84:"},
        {"-c64", "E:", "F:"},
        {"-c64", "-c32", "E:"},
        {"-c64", "E:", "--any-bus", "--any-bus"},
        {"-c64", "E:", "-y"},
        {"-c64", "E:", ""},
        {"-c64", "/dev/sda"},
    };
    for (const auto& arguments : wrong)
        EXPECT_FALSE(parse(arguments)) << testing::PrintToString(arguments);
}

TEST(CommandLine, HelpIsAskedForInThreeWays) {
    const auto asks = [](const std::vector<std::string>& arguments) {
        return fat32format::asksForHelp(arguments);
    };
    for (const char* const argument : {"/?", "-?", "--help"}) {
        EXPECT_TRUE(asks({argument})) << argument;
        EXPECT_FALSE(parse({argument})) << argument;
        EXPECT_FALSE(asks({"-c64", "E:", argument})) << argument;
    }
    EXPECT_FALSE(asks({}));
    EXPECT_FALSE(asks({"/h"}));
}

// Who looks for it takes the help for a success of formatting.
TEST(CommandLine, TheHelpDoesNotSpeakTheWordOfSuccess) {
    EXPECT_EQ(std::string(fat32format::usage).append(fat32format::help).find("Done"), std::string::npos);
}
