#include "platform/linux/process/command_line.h"

#include "platform/linux/files/path.h"

#include <algorithm>
#include <utility>

namespace platform::linux {

namespace {

constexpr std::string_view blanks = " \t";

/// A program's native path, and what follows it.
using Program = std::pair<std::string, std::string_view>;

std::optional<std::string> existingFile(std::string_view path) {
    Place place;
    if (locate(path, place) != FileResult::Ok || !place.isFile()) return std::nullopt;
    return place.folderPath + place.name;
}

std::optional<Program> quotedProgram(std::string_view text) {
    const std::size_t end = text.find('"', 1);
    if (end == std::string_view::npos) return std::nullopt;
    auto file = existingFile(text.substr(1, end - 1));
    if (!file) return std::nullopt;
    return Program(std::move(*file), text.substr(end + 1));
}

std::optional<Program> unquotedProgram(std::string_view text) {
    const std::size_t lastFolder = text.rfind('\\');
    std::size_t end = text.size();
    while (end != std::string_view::npos && lastFolder != std::string_view::npos && end > lastFolder) {
        if (auto file = existingFile(text.substr(0, end))) return Program(std::move(*file), text.substr(end));
        end = text.find_last_of(blanks, end - 1);
    }
    return std::nullopt;
}

void appendArguments(std::string_view text, std::vector<std::string>& arguments) {
    std::string argument;
    bool inArgument = false;
    bool inQuotes = false;
    for (const char c : text) {
        const bool ends = !inQuotes && blanks.find(c) != std::string_view::npos;
        if (ends && inArgument) arguments.push_back(std::exchange(argument, {}));
        if (c == '"')
            inQuotes = !inQuotes;
        else if (!ends)
            argument += c;
        inArgument = !ends;
    }
    if (inArgument) arguments.push_back(argument);
}

} // namespace

std::optional<std::vector<std::string>> parseCommandLine(std::string_view commandLine) {
    commandLine.remove_prefix(std::min(commandLine.find_first_not_of(blanks), commandLine.size()));
    auto program = commandLine.starts_with('"') ? quotedProgram(commandLine) : unquotedProgram(commandLine);
    if (!program) return std::nullopt;
    std::vector<std::string> arguments = {std::move(program->first)};
    appendArguments(program->second, arguments);
    return arguments;
}

} // namespace platform::linux
