#define _CRT_RAND_S // for rand_s
#include "tools/fat32format/windows/windows_system.h"

#include "tools/fat32format/windows/held_windows_volume.h"
#include "tools/fat32format/windows/this_machine.h"
#include "tools/fat32format/windows/volume_facts.h"

#include <cstdlib>
#include <stdexcept>

namespace fat32format {

WindowsSystem::WindowsSystem(Dialogue& dialogue) : WindowsSystem(dialogue, thisMachine()) {}

std::optional<Target> WindowsSystem::targetOf(char letter) {
    if (machine_.targetOf(letter).empty()) return std::nullopt;
    return Target{{letter, ':'}, identityBehind(machine_, letter)};
}

std::optional<Volume> WindowsSystem::inspect(const std::string& node) {
    return readVolume(machine_, node.at(0));
}

Opened WindowsSystem::open(const Volume& volume, Access) {
    return openAlone(machine_, volume.node.at(0), volume);
}

/// Volumes have no mounts here that somebody else could be asked to give up.
bool WindowsSystem::unmount(const Mount&) {
    return false;
}

std::uint32_t WindowsSystem::randomNumber() {
    unsigned number = 0;
    if (rand_s(&number) != 0) throw std::runtime_error("There are no random numbers.");
    return number;
}

std::string WindowsSystem::systemsOwn() {
    return "The disks that Windows starts from, runs on or keeps a page file on, and the one that this "
           "program lies on, are not touched.";
}

} // namespace fat32format
