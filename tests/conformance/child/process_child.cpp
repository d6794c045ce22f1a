// A console program that behaves as its first argument says; for the test of the process service. Line ends
// would not be the same everywhere, so it writes none.

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>

namespace {

void writeBytes(std::size_t count) {
    const std::string text(count, 'x');
    std::fwrite(text.data(), 1, text.size(), stdout);
}

/// What it was told, and whether there is more.
void writeAnswer() {
    std::string line;
    std::cout << "Proceed? " << std::flush;
    if (std::getline(std::cin, line)) std::cout << "answer " << line;
}

/// Writes a text to a file, which is there with all of it or not at all.
void note(const std::string& file, const std::string& text) {
    const std::string part = file + ".part";
    std::ofstream(part, std::ios::binary) << text;
    std::rename(part.c_str(), file.c_str());
}

[[noreturn]] void goOnForEver() {
    std::cout << "started" << std::flush;
    for (;;)
        std::this_thread::sleep_for(std::chrono::hours(1));
}

} // namespace

int main(int argc, char** argv) {
    const std::string mode = argc > 1 ? argv[1] : "";
    if (mode == "bytes" && argc > 2) writeBytes(std::strtoul(argv[2], nullptr, 10));
    if (mode == "answer") writeAnswer();
    if (mode == "errors") std::cerr << "to the error output";
    if (mode == "note" && argc > 3) note(argv[2], argv[3]);
    if (mode == "pause" && argc > 2)
        std::this_thread::sleep_for(std::chrono::milliseconds(std::strtoul(argv[2], nullptr, 10)));
    if (mode == "endless") goOnForEver();
    if (mode == "arguments") {
        for (int i = 2; i < argc; ++i)
            std::cout << '[' << argv[i] << ']';
    }
    if (mode == "fail") {
        std::cout << "failed";
        return 3;
    }
    return 0;
}
