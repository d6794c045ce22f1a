// How much of a text is shown.

#include "toolkit/shown_text.h"

#include "fake.h"

#include "base/runtime_error.h"
#include "toolkit/dispatch.h"
#include "toolkit/message_box.h"

#include <gtest/gtest.h>

#include <string>

using namespace toolkit;

namespace {

std::string times(std::size_t count, const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i)
        result += text;
    return result;
}

} // namespace

TEST(ShownText, IsAllOfAShortOne) {
    for (const std::string& text : {std::string(), std::string("kurz"), times(4000, "x"), times(4000, "ß")})
        EXPECT_EQ(shownText(text), text);
}

TEST(ShownText, IsTheFirstCharactersOfALongOne) {
    EXPECT_EQ(shownText(times(4001, "x")), times(4000, "x"));
    EXPECT_EQ(shownText(times(100'000, "x")), times(4000, "x"));
    EXPECT_EQ(shownText("abc", 0), "");
}

TEST(ShownText, CountsCharactersAndCutsNoneInTwo) {
    for (const std::string character : {"ü", "€", "😀"})
        EXPECT_EQ(shownText(times(5000, character)), times(4000, character)) << character;
    EXPECT_EQ(shownText("aü€😀b", 3), "aü€");
    EXPECT_EQ(shownText("aü€😀b", 4), "aü€😀");
}

TEST(ShownTip, SaysThatItIsCut) {
    EXPECT_EQ(shownTip(times(2000, "ü")), times(2000, "ü"));
    EXPECT_EQ(shownTip(times(2001, "ü")), times(2000, "ü") + "…");
}

TEST(ShownMessage, KeepsEveryLineOfAnOrdinaryOne) {
    const std::string text = "Zeile 1\r\n\r\n" + times(250, "ü") + "\r\nletzte\r\n";
    EXPECT_EQ(shownMessage(text), text);
    EXPECT_EQ(shownMessage(""), "");
    EXPECT_EQ(shownMessage("\r\n"), "\r\n");
}

TEST(ShownMessage, CutsALongLineAndNotWhatFollowsIt) {
    EXPECT_EQ(shownMessage("Receiver: " + times(100'000, "x") + "\r\n\r\nUpdaten mit OK ?"),
              "Receiver: " + times(240, "x") + "…\r\n\r\nUpdaten mit OK ?");
}

TEST(ShownMessage, EndsInDotsWhenThereAreTooManyLines) {
    const std::string shown = shownMessage(times(50'000, "Zeile\r\n"));
    EXPECT_EQ(shown.size(), 1500 + std::string("…").size());
    EXPECT_EQ(shown.substr(1500), "…");
}

TEST(ShownMessage, IsWhatEveryBoxGets) {
    fake::reset();
    messageBox(times(1000, "x"), OkOnly, "Title");
    dispatch([] { throw base::RuntimeError(base::ErrorNumber::FileNotFound, times(1000, "y")); });
    ASSERT_EQ(fake::computer().messages.size(), 2U);
    EXPECT_EQ(fake::computer().messages[0].text, times(250, "x") + "…");
    EXPECT_EQ(fake::computer().messages[1].text, "Laufzeitfehler '53':\r\n\r\nDatei nicht gefunden:\r\n" +
                                                     times(250, "y") + "…\r\n\r\nWas ist zu tun:\r\n" +
                                                     base::advice(base::ErrorNumber::FileNotFound) +
                                                     "\r\n\r\nDas Programm wird beendet.");
    fake::reset();
}

TEST(ShownEnd, IsAllOfATextThatFits) {
    EXPECT_EQ(shownEnd("abc...", 3, [](const std::string&) { return true; }), "abc...");
    EXPECT_EQ(shownEnd("", 3, [](const std::string&) { return true; }), "");
}

TEST(ShownEnd, KeepsHeadAndEnd) {
    for (std::size_t room = 8; room < 20; ++room) {
        const auto fits = [room](const std::string& text) { return text.size() <= room; };
        const std::string shown = shownEnd("head" + times(5000, "x") + "end", 4, fits);
        EXPECT_EQ(shown, "head…" + std::string("xxxxxxxxxxxxend").substr(15 - (room - 7)));
    }
}

TEST(ShownEnd, CutsNoCharacter) {
    const auto fits = [](const std::string& text) { return text.size() <= 8; };
    EXPECT_EQ(shownEnd("aßßßßß", 1, fits), "a…ßß");
}

TEST(ShownEnd, HasNoEndWhereThereIsNoRoomForOne) {
    EXPECT_EQ(shownEnd("headend", 4, [](const std::string&) { return false; }), "head…");
    EXPECT_EQ(shownEnd("he", 4, [](const std::string&) { return false; }), "he…");
}
