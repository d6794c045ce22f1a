// Who has which drive letter.
#pragma once

#include "platform/linux/drives/udisks_volumes.h"

#include <map>
#include <vector>

namespace platform::linux {

/// Remembers who was given which letter, for as long as the program runs.
class DriveLetters {
public:
    /// Gives the volumes their letters and orders them by letter; who finds none left is dropped. The volume
    /// at "/" is `C`. A volume keeps its letter for as long as it stays plugged in, also when it has been
    /// formatted meanwhile or was not listed for a while; when the disk is divided anew, its first partition
    /// inherits the letter. A new floppy drive takes `A` or `B`; every other new
    /// volume the letter above the highest that was ever given, from `D` on: new volumes stand behind older
    /// ones, and a letter that was shown for one disk never means another. Only once `Y` has been given a new
    /// volume takes the lowest free letter. `Z` is never given.
    /// What was noted of the disk of a volume that keeps its letter stays, too.
    void assign(std::vector<UdisksVolume>& volumes);

private:
    char letterFor(const UdisksVolume& volume, const std::vector<UdisksVolume>& volumes) const;
    char inherited(const UdisksVolume& volume, const std::vector<UdisksVolume>& volumes) const;
    char unused(const std::vector<UdisksVolume>& volumes, char first, char last) const;

    std::map<char, UdisksVolume> owners_; ///< who was given the letter last
};

} // namespace platform::linux
