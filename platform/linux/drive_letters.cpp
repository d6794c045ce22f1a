#include "platform/linux/drive_letters.h"

#include <algorithm>
#include <cstdlib>

namespace platform::posix {

namespace {

bool isTaken(const std::vector<UdisksVolume>& volumes, char letter) {
    return std::any_of(volumes.begin(), volumes.end(),
                       [letter](const UdisksVolume& volume) { return volume.letter == letter; });
}

/// The same place on the same bus since the drive was plugged in. UDisks2 works out anew when that was
/// whenever it is started, give or take a moment.
bool isSame(const UdisksVolume& left, const UdisksVolume& right) {
    constexpr std::int64_t moment = 1'000'000;
    return left.object == right.object && left.driveSerial == right.driveSerial &&
           std::abs(left.driveDetected - right.driveDetected) <= moment;
}

/// The list may be older than what the kernel tells of the device by now: then that is another disk. But a
/// drive whose medium can be changed stays when it is.
void keepNote(const UdisksVolume& before, UdisksVolume& volume) {
    if (volume.type == DriveFixed && !before.note.empty()) volume.note = before.note;
}

char lowestFree(const std::vector<UdisksVolume>& volumes, char first, char last) {
    for (char letter = first; letter <= last; ++letter)
        if (!isTaken(volumes, letter)) return letter;
    return 0;
}

char nextLetter(const std::vector<UdisksVolume>& volumes) {
    char highest = 'C';
    for (const UdisksVolume& volume : volumes)
        highest = std::max(highest, volume.letter);
    if (highest < 'Y') return static_cast<char>(highest + 1);
    return lowestFree(volumes, 'D', 'Y');
}

char letterFor(const UdisksVolume& volume, const std::vector<UdisksVolume>& volumes) {
    if (volume.holdsRoot)
        return isTaken(volumes, 'C') ? '\0' : 'C'; // one file system may lie on several disks
    const char floppyLetter = volume.floppy ? lowestFree(volumes, 'A', 'B') : '\0';
    return floppyLetter != 0 ? floppyLetter : nextLetter(volumes);
}

} // namespace

void DriveLetters::assign(std::vector<UdisksVolume>& volumes) {
    for (UdisksVolume& volume : volumes) {
        const auto before = std::find_if(last_.begin(), last_.end(),
                                         [&volume](const UdisksVolume& old) { return isSame(old, volume); });
        volume.letter = before == last_.end() ? '\0' : before->letter;
        if (before != last_.end()) keepNote(*before, volume);
    }
    for (UdisksVolume& volume : volumes)
        if (volume.letter == 0) volume.letter = letterFor(volume, volumes);
    std::erase_if(volumes, [](const UdisksVolume& volume) { return volume.letter == 0; });
    std::sort(volumes.begin(), volumes.end(),
              [](const UdisksVolume& left, const UdisksVolume& right) { return left.letter < right.letter; });
    last_ = volumes;
}

} // namespace platform::posix
