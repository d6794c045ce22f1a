// What is read from the command line.
#include "app/command_line.h"
#include "title.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

std::optional<std::string> answer(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "orvanta-usbtool");
    return app::answerTo(arguments);
}

} // namespace

TEST(CommandLine, TheVersionIsTold) {
    EXPECT_EQ(answer({"--version"}), unit::title + "\n");
}

TEST(CommandLine, TheHelpNamesBothOptions) {
    const std::string help = answer({"--help"}).value_or("");
    EXPECT_NE(help.find("  --version "), std::string::npos);
    EXPECT_NE(help.find("  --help "), std::string::npos);
    EXPECT_TRUE(help.ends_with('\n'));
}

TEST(CommandLine, NothingElseMeansAnything) {
    EXPECT_EQ(answer({}), std::nullopt);
    EXPECT_EQ(app::answerTo({}), std::nullopt);
    for (const char* argument :
         {"", "-version", "--Version", "--versions", "-v", "-h", "/?", "E:\\", "-platform"})
        EXPECT_EQ(answer({argument, "--version"}), std::nullopt) << argument;
}
