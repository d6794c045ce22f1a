// Formats a drive with FAT32: the companion of the program's assistant, which starts it with a drive letter,
// answers its question and looks for "Done" in what it writes.
#include "tools/fat32format/command_line.h"
#include "tools/fat32format/formatter.h"
#include "tools/fat32format/linux_system.h"

#include <exception>
#include <string>
#include <vector>

int main(int argc, char** argv) {
    fat32format::LinuxSystem system;
    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    const auto options = fat32format::parseArguments(arguments);
    if (!options) {
        system.print(std::string(fat32format::usage));
        return static_cast<int>(fat32format::Status::Usage);
    }
    try {
        return static_cast<int>(fat32format::format(system, *options));
    } catch (const std::exception& error) { // no memory, or the input breaks
        system.print(fat32format::printable(error.what()) + '\n');
        return static_cast<int>(fat32format::Status::Failed);
    }
}
