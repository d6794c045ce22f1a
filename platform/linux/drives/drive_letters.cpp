#include "platform/linux/drives/drive_letters.h"

#include <algorithm>
#include <cstdlib>

namespace platform::linux {

namespace {

bool isTaken(const std::vector<UdisksVolume>& volumes, char letter) {
    return std::any_of(volumes.begin(), volumes.end(),
                       [letter](const UdisksVolume& volume) { return volume.letter == letter; });
}

/// Since the drive was plugged in. UDisks2 works out anew when that was whenever it is started, give or take
/// a moment.
bool isSamePlug(const UdisksVolume& left, const UdisksVolume& right) {
    constexpr std::int64_t moment = 1'000'000;
    return left.driveSerial == right.driveSerial &&
           std::abs(left.driveDetected - right.driveDetected) <= moment;
}

bool isSame(const UdisksVolume& left, const UdisksVolume& right) {
    return left.object == right.object && isSamePlug(left, right);
}

/// The list may be older than what the kernel tells of the device by now: then that is another disk. But a
/// drive whose medium can be changed stays when it is.
void keepNote(const UdisksVolume& before, UdisksVolume& volume) {
    if (volume.type == DriveFixed && !before.note.empty()) volume.note = before.note;
}

} // namespace

/// The lowest letter of the range that nobody was given yet; once the last one has been given, the lowest
/// that nobody has.
char DriveLetters::unused(const std::vector<UdisksVolume>& volumes, char first, char last) const {
    char candidate = first;
    for (const auto& [letter, owner] : owners_)
        if (letter >= first && letter <= last) candidate = static_cast<char>(letter + 1);
    if (candidate <= last) return candidate;
    for (candidate = first; candidate <= last; ++candidate)
        if (!isTaken(volumes, candidate)) return candidate;
    return 0;
}

/// A letter that the volume's disk had when it was divided in another way; 0 when there is none to be had.
char DriveLetters::inherited(const UdisksVolume& volume, const std::vector<UdisksVolume>& volumes) const {
    for (const auto& [letter, owner] : owners_)
        if (letter != 'C' && owner.disk == volume.disk && isSamePlug(owner, volume) &&
            !isTaken(volumes, letter))
            return letter;
    return 0;
}

char DriveLetters::letterFor(const UdisksVolume& volume, const std::vector<UdisksVolume>& volumes) const {
    if (volume.holdsRoot)
        return isTaken(volumes, 'C') ? '\0' : 'C'; // one file system may lie on several disks
    if (const char letter = inherited(volume, volumes); letter != 0) return letter;
    const char floppyLetter = volume.floppy ? unused(volumes, 'A', 'B') : '\0';
    return floppyLetter != 0 ? floppyLetter : unused(volumes, 'D', 'Y');
}

void DriveLetters::assign(std::vector<UdisksVolume>& volumes) {
    for (UdisksVolume& volume : volumes) {
        const auto before = std::find_if(owners_.begin(), owners_.end(), [&volume](const auto& owner) {
            return isSame(owner.second, volume);
        });
        volume.letter = before == owners_.end() ? '\0' : before->first;
        if (before != owners_.end()) keepNote(before->second, volume);
    }
    for (UdisksVolume& volume : volumes) {
        if (volume.letter == 0) volume.letter = letterFor(volume, volumes);
        if (volume.letter != 0) owners_[volume.letter] = volume;
    }
    std::erase_if(volumes, [](const UdisksVolume& volume) { return volume.letter == 0; });
    std::sort(volumes.begin(), volumes.end(),
              [](const UdisksVolume& left, const UdisksVolume& right) { return left.letter < right.letter; });
}

} // namespace platform::linux
