#include "platform/user_locale.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>

TEST(UserLocale, SeparatorIsOneCharacterAndNoDigit) {
    const std::string separator = platform::decimalSeparator();
    ASSERT_FALSE(separator.empty());
    EXPECT_EQ(separator.find_first_of("0123456789-+ "), std::string::npos);
    EXPECT_EQ(platform::decimalSeparator(), separator);
}

TEST(UserLocale, AskingChangesNothing) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    static_cast<void>(platform::decimalSeparator());
    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);
    EXPECT_EQ(std::to_string(1.5), "1.500000");
}
