// Formats a drive with FAT32: the companion of the program's assistant, which starts it with a drive letter,
// answers its question and looks for "Done" in what it writes.
#include "tools/fat32format/windows/program.h"
#include "tools/fat32format/windows/windows_system.h"

#include <string>
#include <vector>

namespace {

fat32format::Status formatHere(fat32format::Dialogue& dialogue, const fat32format::Options& options) {
    fat32format::WindowsSystem system(dialogue);
    return fat32format::format(system, options);
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    return fat32format::run(arguments, {fat32format::isElevated, fat32format::startElevated, formatHere});
}
