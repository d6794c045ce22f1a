// Uses the program from outside, as a person does: a request a line on the standard input, its reply a line
// on the standard output.
#include "tests/driver/windows/commands.h"
#include "tests/driver/windows/json.h"

#include <windows.h>

#include <exception>
#include <iostream>
#include <string>

namespace {

std::string replyTo(const std::string& line) {
    try {
        return probe::perform(probe::Request(line));
    } catch (const std::exception& error) {
        return probe::json::object({{"error", probe::json::quoted(std::string_view(error.what()))}});
    }
}

} // namespace

int main() {
    SetProcessDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
    for (std::string line; std::getline(std::cin, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        std::cout << replyTo(line) << '\n' << std::flush;
    }
    return 0;
}
