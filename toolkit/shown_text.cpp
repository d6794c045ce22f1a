#include "toolkit/shown_text.h"

#include <algorithm>

namespace toolkit {

namespace {

constexpr std::string_view lineEnd = "\r\n";
constexpr std::string_view dots = "…";

bool startsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80;
}

std::string marked(std::string_view text, std::size_t characters) {
    std::string shown(shownText(text, characters));
    if (shown.size() < text.size()) shown += dots;
    return shown;
}

} // namespace

std::string_view shownText(std::string_view text, std::size_t characters) {
    if (text.size() <= characters) return text;
    std::size_t end = 0;
    for (; end < text.size(); ++end)
        if (startsCharacter(text[end]) && characters-- == 0) break;
    return text.substr(0, end);
}

std::string shownEnd(std::string_view text, std::size_t head,
                     const std::function<bool(const std::string&)>& fits) {
    constexpr std::size_t longest = 1000; // bytes; more than that has no room anywhere
    const auto withEnd = [&](std::size_t length) {
        while (length > 0 && !startsCharacter(text[text.size() - length]))
            --length;
        return std::string(text.substr(0, head)) + std::string(dots) +
               std::string(text.substr(text.size() - length));
    };
    if (text.size() <= longest && fits(std::string(text))) return std::string(text);
    std::size_t shown = 0;
    std::size_t tooLong = std::min(text.size() - std::min(head, text.size()), longest) + 1;
    while (shown + 1 < tooLong) {
        const std::size_t middle = (shown + tooLong) / 2;
        (fits(withEnd(middle)) ? shown : tooLong) = middle;
    }
    return withEnd(shown);
}

std::string shownTip(std::string_view text) {
    return marked(text, longestShownTip);
}

std::string shownMessage(std::string_view text) {
    std::string shown;
    for (std::size_t start = 0; start <= text.size() && shown.size() < 4 * longestShownMessage;) {
        const std::size_t end = std::min(text.find(lineEnd, start), text.size());
        if (start > 0) shown += lineEnd;
        shown += marked(text.substr(start, end - start), longestMessageLine);
        start = end + lineEnd.size();
    }
    return marked(shown, longestShownMessage);
}

} // namespace toolkit
