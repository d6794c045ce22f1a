// One file that several processes read and append to in turn, and that any of them may exchange for a new
// one.
//
// Whoever holds the lock holds it on the file that has the name at that moment: after waiting for it one
// looks whether somebody has put another file in its place. Functions return 0 or an error number of the
// system.
#pragma once

#include "platform/linux/base/unique_fd.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace platform::linux {

class RegistryFile {
public:
    /// An absolute path; the file need not exist.
    explicit RegistryFile(const std::string& path);

    /// Waits for the lock: a shared one is enough to read. ENOENT when there is no file; an exclusive lock
    /// can be had on a file only that may be written.
    int lockShared() { return lock(false, false); }
    int lockExclusive() { return lock(true, false); }
    /// The same for a file that is created when it is missing, with the folders above it, all for the user
    /// alone.
    int lockOrCreate() { return lock(true, true); }
    void unlock();

    /// Whether the last lock is on another file than the one before it; asking sets it back.
    bool wasExchanged();

    /// The file's size when it was locked, or after the last change since.
    std::uint64_t size() const { return size_; }
    /// Reads what comes behind a position.
    int readFrom(std::uint64_t position, std::string& bytes) const;
    /// Cuts the file off at the position and writes there; when that fails the file ends at the position.
    int writeAt(std::uint64_t position, std::string_view bytes);
    /// Puts a new file with other contents, which are on the disk already, in the place of this one; the lock
    /// is on the new one then. On a failure everything is as before.
    int replace(std::string_view contents);
    /// Gives the file, as it is now, a second name beside its own: "name.damaged-1", or the next number that
    /// is free.
    int keepAside() const;
    /// Brings the file's contents and its name onto the disk; needs no lock, but a file that was locked
    /// before.
    int sync();

private:
    int lock(bool exclusive, bool create);
    int open(bool create);
    int adopt(UniqueFd file);
    bool isCurrent();
    int syncFolder() const;

    std::string path_;
    UniqueFd file_;
    dev_t device_ = 0;
    ino_t inode_ = 0;
    std::uint64_t size_ = 0;
    bool writable_ = false;
    bool exchanged_ = false;
    bool nameSynced_ = false;
};

} // namespace platform::linux
