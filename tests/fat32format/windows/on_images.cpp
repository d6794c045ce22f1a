// The formatter, with an image file in the place of the stick. For tests only.
#include "tests/fat32format/windows/image_machine.h"
#include "tools/fat32format/windows/program.h"
#include "tools/fat32format/windows/windows_system.h"

#include <string>
#include <vector>

namespace {

std::wstring ownFolder() {
    std::wstring file(32768, L'\0');
    file.resize(GetModuleFileNameW(nullptr, file.data(), static_cast<DWORD>(file.size())));
    return file.substr(0, file.rfind(L'\\'));
}

fat32format::Status formatImage(fat32format::Dialogue& dialogue, const fat32format::Options& options) {
    fat32format::ImageMachine machine(ownFolder());
    fat32format::WindowsSystem system(dialogue, machine);
    return fat32format::format(system, options);
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    return fat32format::run(arguments, {fat32format::isElevated, fat32format::startElevated, formatImage});
}
