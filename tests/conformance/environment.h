// What a conformance test needs of the machine it runs on; each platform arranges it in its own way.
#pragma once

#include "platform/volumes.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace conformance {

/// Drives that stand for folders. While it lives the computer has `C:`, `Z:` and what has been added, each
/// backed by a folder of its own that is new and empty; one object at a time. What cannot be arranged throws
/// std::exception.
class Drives {
public:
    Drives();
    Drives(const Drives&) = delete;
    Drives& operator=(const Drives&) = delete;
    ~Drives();

    /// Adds a drive of a type and returns its folder. `letter` between D and Y.
    std::filesystem::path add(char letter, platform::DriveType type);

    /// Adds a removable drive that takes no more than about that many bytes; no value where the machine does
    /// not let this process make one.
    std::optional<std::filesystem::path> addSmall(char letter, std::uint64_t bytes);

    /// Takes the drive's medium out and puts it in again: what the system knows of it, it reads anew.
    void readAgain(char letter);

    /// Puts another medium, which is empty, into the drive and returns its folder; the old one's is at
    /// `.old` beside it.
    std::filesystem::path exchangeMedium(char letter);

    /// Takes the drive away; the folder goes, too.
    void remove(char letter);

    /// Takes the drive's medium away: the drive stays, its folder goes.
    void removeMedium(char letter);

private:
    struct Drive {
        platform::DriveType type;
        std::filesystem::path folder;
        bool mounted = false;
    };

    void create(char letter, platform::DriveType type);
    void release(Drive& drive);
    void publish() const;

    std::filesystem::path base_;
    std::map<char, Drive> drives_;
};

} // namespace conformance
