#include "platform/windows/command_line.h"

#include "platform/windows/ansi_text.h"

#include <windows.h>

#include <algorithm>

namespace platform::windows {

namespace {

constexpr std::string_view blanks = " \t";

bool isFile(std::string_view path) {
    const auto name = exactAnsi(path);
    if (!name) return false;
    const DWORD attributes = GetFileAttributesA(name->c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

/// Length of the program's path; 0 when there is no such file.
std::size_t lengthOfProgram(std::string_view commandLine) {
    const std::size_t lastFolder = commandLine.rfind('\\');
    std::size_t end = commandLine.size();
    while (end != std::string_view::npos && lastFolder != std::string_view::npos && end > lastFolder) {
        if (isFile(commandLine.substr(0, end))) return end;
        end = commandLine.find_last_of(blanks, end - 1);
    }
    return 0;
}

} // namespace

std::optional<std::string> quotedCommandLine(std::string_view commandLine) {
    commandLine.remove_prefix(std::min(commandLine.find_first_not_of(blanks), commandLine.size()));
    if (commandLine.starts_with('"')) return exactAnsi(commandLine);
    const std::size_t length = lengthOfProgram(commandLine);
    if (length == 0) return std::nullopt;
    return exactAnsi('"' + std::string(commandLine.substr(0, length)) + '"' +
                     std::string(commandLine.substr(length)));
}

} // namespace platform::windows
