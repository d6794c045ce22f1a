// What the two processes of a run with more rights say to each other. Each takes the other's words for what
// they are: checked before anything is done with them.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fat32format {

struct Message {
    enum class Kind {
        Print, ///< "print TEXT": to be shown
        Ask,   ///< "ask": for a line
        Line,  ///< "line TEXT": the answer
        End    ///< "end": the input has ended, or all has been said
    };
    Kind kind = Kind::End;
    std::string text; ///< UTF-8 without control characters; lines of what is to be shown end with "\n"
    friend bool operator==(const Message&, const Message&) = default;
};

constexpr std::size_t longestMessage = 4096; ///< in bytes

/// No value when it is longer than a message may be, or its text is no such text.
std::optional<std::string> bytesOf(const Message& message);
/// No value for anything that bytesOf() does not make.
std::optional<Message> parseMessage(std::string_view bytes);

/// A text of any length as messages to be shown; characters that must not be in one are replaced.
std::vector<Message> printMessages(std::string_view text);

} // namespace fat32format
