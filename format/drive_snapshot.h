#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Module1 {

/// The fixed drives at one moment, to find the one that is plugged in later.
class DriveSnapshot {
public:
    /// Takes note of the fixed drives that there are now.
    void take();

    /// The last fixed drive beyond the number of those noted, as in "E:"; empty when there are no more than
    /// then.
    ///
    /// The numbers are compared, not the letters. So when a new disk takes a letter in front of a drive that
    /// was there before, the result is the last fixed drive, not the new one: this is intended.
    std::string newDrive() const;

    /// Number of fixed drives noted.
    std::int16_t count() const noexcept { return static_cast<std::int16_t>(drives_.size()); }
    const std::vector<std::string>& drives() const noexcept { return drives_; }

private:
    std::vector<std::string> drives_;
};

} // namespace Module1
