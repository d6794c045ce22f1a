// The registry on the disk, and in memory.
//
// Changes are made in memory and saved together, when flush() or saveSoon() is called or the store goes: the
// file is then replaced as a whole (file_replace.h), so that whatever happens it has either the old contents
// or the new ones. Processes save one after the other, under the lock of a file beside it; each first reads
// what the others have saved and makes its own changes again on that. Who only reads needs no lock.
//
// A file that is not as it should be is not lost: what can be read of it counts, and before it is replaced it
// is kept under another name ("registry.damaged-1").
#pragma once

#include "platform/files.h"
#include "platform/linux/base/unique_fd.h"
#include "platform/linux/registry/registry_tree.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace platform::linux {

class RegistryStore {
public:
    using Change = std::function<void(RegistryNode& top)>;

    /// The file in the user's configuration folder, which the first change creates; empty where there is no
    /// such folder.
    explicit RegistryStore(std::string file) : path_(std::move(file)) {}
    RegistryStore(const RegistryStore&) = delete;
    RegistryStore& operator=(const RegistryStore&) = delete;
    ~RegistryStore() { flush(); }

    /// Brings top() up to date with what other processes have saved. RegistrySuccess, or why the registry
    /// cannot be read; one without a file is empty.
    std::int32_t refresh();

    /// What the registry is in this process; the predefined keys are below it.
    RegistryNode& top() { return top_; }

    /// Makes a change on an up-to-date tree. It finds its keys by their names, as it is made again after
    /// others have changed the registry. `size` is how many bytes it adds to the file at the most. A status
    /// when it could not be saved as things stand, and then it is not made.
    std::int32_t change(std::size_t size, Change change);

    /// Returns when all changes made here are on the disk, or why they are not: then they wait for the next
    /// time.
    std::int32_t flush();
    /// The same, unless that was done a moment ago: a thousand changes in a row cost little more than one.
    void saveSoon();

private:
    struct Version {
        UniqueFd file; ///< as long as it is open no other file is given its number
        struct stat info {};
    };

    FileResult openFile(Version& version) const;
    FileResult readFile(Version& version, std::string& text) const;
    std::int32_t mayGrow(std::size_t size) const;
    std::int32_t save();
    FileResult keepAside() const;

    std::string path_;
    RegistryNode top_;
    Version read_; ///< what top() was read from
    bool damaged_ = false;
    std::vector<Change> unsaved_;
    std::size_t unsavedSize_ = 0;
    std::chrono::steady_clock::time_point nextSave_;
};

} // namespace platform::linux
