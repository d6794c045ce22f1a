#include "tools/fat32format/windows/message.h"

#include "platform/windows/wide_text.h"

#include <algorithm>
#include <array>

namespace fat32format {

namespace {

using platform::windows::isUtf8;
using platform::windows::narrow;
using platform::windows::wide;

using Kind = Message::Kind;

struct Head {
    Kind kind;
    std::string_view word;
    bool hasText;
};

constexpr std::array<Head, 4> heads = {{{Kind::Print, "print ", true},
                                        {Kind::Ask, "ask", false},
                                        {Kind::Line, "line ", true},
                                        {Kind::End, "end", false}}};

bool isControl(char c) {
    return static_cast<unsigned char>(c) < ' ' || c == '\x7F';
}

bool isFit(const Message& message) {
    const auto isForbidden = [&](char c) {
        return isControl(c) && !(message.kind == Kind::Print && c == '\n');
    };
    return isUtf8(message.text) && std::none_of(message.text.begin(), message.text.end(), isForbidden);
}

/// Where to cut a text that goes on behind `size`, not inside of a character.
std::size_t pieceOf(std::string_view text, std::size_t size) {
    if (text.size() <= size) return text.size();
    while ((static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80U)
        --size;
    return size;
}

} // namespace

std::optional<std::string> bytesOf(const Message& message) {
    const auto head = std::find_if(heads.begin(), heads.end(),
                                   [&](const Head& known) { return known.kind == message.kind; });
    if (!isFit(message) || (!head->hasText && !message.text.empty())) return std::nullopt;
    std::string bytes = std::string(head->word) + message.text;
    if (bytes.size() > longestMessage) return std::nullopt;
    return bytes;
}

std::optional<Message> parseMessage(std::string_view bytes) {
    if (bytes.size() > longestMessage) return std::nullopt;
    for (const Head& head : heads) {
        if (head.hasText ? !bytes.starts_with(head.word) : bytes != head.word) continue;
        const Message message{head.kind, std::string(bytes.substr(head.word.size()))};
        if (isFit(message)) return message;
    }
    return std::nullopt;
}

std::vector<Message> printMessages(std::string_view text) {
    std::string fit = narrow(wide(text));
    for (char& c : fit) {
        if (isControl(c) && c != '\n') c = ' ';
    }
    std::vector<Message> messages;
    for (std::string_view rest = fit; !rest.empty();) {
        const std::size_t size = pieceOf(rest, longestMessage - heads[0].word.size());
        messages.push_back({Kind::Print, std::string(rest.substr(0, size))});
        rest.remove_prefix(size);
    }
    return messages;
}

} // namespace fat32format
