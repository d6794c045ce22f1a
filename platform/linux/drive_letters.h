// Who has which drive letter.
#pragma once

#include "platform/linux/udisks_volumes.h"

#include <vector>

namespace platform::posix {

/// Remembers letters from one list of volumes to the next.
class DriveLetters {
public:
    /// Gives the volumes their letters and orders them by letter; who finds none left is dropped. The volume
    /// at "/" is `C`. A volume that was in the last list keeps its letter, also when it has been formatted
    /// meanwhile. A new floppy drive takes `A` or `B`; every other new volume the letter above the highest in
    /// use, from `D` on, and once `Y` is taken the lowest free one: new volumes stand behind older ones. `Z`
    /// is never given.
    /// What was noted of the disk of a volume that keeps its letter stays, too.
    void assign(std::vector<UdisksVolume>& volumes);

private:
    std::vector<UdisksVolume> last_;
};

} // namespace platform::posix
