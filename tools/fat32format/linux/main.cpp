// Formats a drive with FAT32: the companion of the program's assistant, which starts it with a drive letter,
// answers its question and looks for "Done" in what it writes.
#include "tools/fat32format/command_line.h"
#include "tools/fat32format/formatter.h"
#include "tools/fat32format/linux/linux_system.h"

#include <exception>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

/// Whoever starts a program may have closed its standard files. The next file that is opened would take the
/// place of one: the question would be written to the disk, or the answer read from it.
bool secureStandardFiles() {
    for (;;) {
        const int file = open("/dev/null", O_RDWR); // NOLINT(*-vararg,*-cloexec): as standard files are
        if (file < 0) return false;
        if (file > STDERR_FILENO) return close(file) == 0;
    }
}

} // namespace

int main(int argc, char** argv) {
    if (!secureStandardFiles()) return static_cast<int>(fat32format::Status::Failed);
    fat32format::LinuxSystem system;
    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    if (fat32format::asksForHelp(arguments)) {
        system.print(std::string(fat32format::usage).append(fat32format::help));
        return static_cast<int>(fat32format::Status::Done);
    }
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
