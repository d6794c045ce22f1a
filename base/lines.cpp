#include "base/lines.h"

namespace base {

std::string joinLines(std::initializer_list<std::string_view> lines) {
    std::string text;
    for (const std::string_view* line = lines.begin(); line != lines.end(); ++line) {
        if (line != lines.begin()) text += CRLF;
        text += *line;
    }
    return text;
}

} // namespace base
