// The registry on the disk, and in memory what of it has been read so far.
//
// The file is a journal: its first line says what it is, every other one is a change (registry_record.h), in
// the order they were made. A change is made by appending one line, so a process that dies at any moment
// leaves the registry either as it was or as it was to be; half a line at the end is a change that was never
// made, and the next one is written over it. When most of the file is history, it is exchanged for a new one
// with the lines that are needed. Changes reach the disk when flush() is called, at such an exchange, or when
// the system gets to it.
//
// A file that is not as it should be is not lost: what can be read of it counts, and before the first change
// it is kept under another name ("registry.damaged-1") beside its mended successor.
#pragma once

#include "platform/linux/registry/registry_file.h"
#include "platform/linux/registry/registry_tree.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace platform::linux {

class RegistryStore {
public:
    /// Works on the registry as it is and returns a RegistryStatus.
    using Look = std::function<std::int32_t(const RegistryTree&)>;
    /// Decides on a change, or on none. May be asked twice, when the registry changes in between.
    using Plan = std::function<std::int32_t(const RegistryTree&, std::optional<RegistryRecord>&)>;

    /// The absolute path of the file, which the first change creates.
    explicit RegistryStore(const std::string& file) : file_(file) {}

    /// The look's status, or why the registry cannot be read. One without a file is empty.
    std::int32_t read(const Look& look);

    /// The plan's status, or why the change could not be made; then it has not been.
    std::int32_t change(const Plan& plan);

    /// Returns when all changes, of this process and of others, are on the disk.
    std::int32_t flush();

private:
    int readNews();
    int readLines();
    void takeLine(std::string_view line);
    void forget();
    std::int32_t mend();
    std::int32_t makeChange(const Plan& plan);
    std::int32_t append(const RegistryRecord& record);
    void compact();

    RegistryFile file_;
    RegistryTree tree_;
    std::uint64_t position_ = 0; ///< how far the file has been read: behind a whole line
    std::uint64_t synced_ = 0;   ///< how much of it is on the disk for sure
    std::uint64_t needed_ = 0;   ///< how much of it was no history when that was last counted
    bool damaged_ = false;
};

} // namespace platform::linux
