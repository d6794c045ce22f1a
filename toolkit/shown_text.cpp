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
