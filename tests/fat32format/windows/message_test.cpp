#include "tools/fat32format/windows/message.h"

#include <gtest/gtest.h>

using namespace fat32format;
using Kind = Message::Kind;

TEST(Message, ComesBackAsItWasSent) {
    for (const Message& message :
         {Message{Kind::Print, "Größe: 1 GB\n\n"}, Message{Kind::Print, ""}, Message{Kind::Ask, ""},
          Message{Kind::Line, "y"}, Message{Kind::Line, ""}, Message{Kind::End, ""}}) {
        const auto bytes = bytesOf(message);
        ASSERT_TRUE(bytes);
        EXPECT_EQ(parseMessage(*bytes), message) << *bytes;
    }
}

TEST(Message, AnythingElseIsNone) {
    using namespace std::string_literals;
    for (const std::string& bytes :
         {""s, "print"s, "prin"s, "ask "s, "ask\n"s, "askprint x"s, "end."s, "END"s, "line"s, "line y\n"s,
          "line y\r"s, "print a\rb"s, "print \x1B[2J"s, "print \0"s, "print \xFF"s, "print \xC3"s,
          "line \x7F"s, " ask"s, "format E:"s})
        EXPECT_FALSE(parseMessage(bytes)) << testing::PrintToString(bytes);
}

TEST(Message, HasALongestOne) {
    const Message longest{Kind::Print, std::string(longestMessage - 6, 'x')};
    ASSERT_TRUE(bytesOf(longest));
    EXPECT_EQ(parseMessage(*bytesOf(longest)), longest);
    EXPECT_FALSE(bytesOf({Kind::Print, longest.text + "x"}));
    EXPECT_FALSE(parseMessage(*bytesOf(longest) + "x"));
}

TEST(Message, WhatIsNotFitIsNotSent) {
    EXPECT_FALSE(bytesOf({Kind::Line, "y\n"}));
    EXPECT_FALSE(bytesOf({Kind::Print, "\xFF"}));
    EXPECT_FALSE(bytesOf({Kind::Ask, "why"}));
}

TEST(Message, ALongTextIsCutBetweenCharacters) {
    std::string text = "x";
    while (text.size() < 3 * longestMessage)
        text += "ü";
    std::string together;
    for (const Message& message : printMessages(text)) {
        EXPECT_TRUE(bytesOf(message));
        together += message.text;
    }
    EXPECT_EQ(together, text);
    EXPECT_TRUE(printMessages("").empty());
}

TEST(Message, WhatMustNotBeInATextIsReplaced) {
    const auto messages = printMessages("a\x1B[b\xFF\tc\n");
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0].text, "a [b\xEF\xBF\xBD c\n");
}
