#include "tools/fat32format/kernel_text.h"

#include "platform/linux/base/unique_fd.h"

#include <array>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <unistd.h>

namespace fat32format {

using platform::linux::UniqueFd;

FileText readText(const std::filesystem::path& file) {
    const UniqueFd source(open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (!source) return {{}, errno};
    FileText result;
    std::array<char, 4096> piece = {};
    for (;;) {
        const ssize_t count = read(source.get(), piece.data(), piece.size());
        if (count == 0) return result;
        if (count > 0) result.text.append(piece.data(), static_cast<std::size_t>(count));
        if (count < 0 && errno != EINTR) return {{}, errno};
    }
}

FolderNames readNames(const std::filesystem::path& folder) {
    const UniqueFd opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened) return {{}, errno};
    return readNames(opened.get());
}

FolderNames readNames(int folder) {
    UniqueFd again(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!again) return {{}, errno};
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(fdopendir(again.get()), closedir);
    if (!stream) return {{}, errno};
    again.release(); // it is the stream's now
    FolderNames result;
    for (;;) {
        errno = 0;
        const dirent* entry = readdir(stream.get()); // NOLINT(concurrency-mt-unsafe): a stream of its own
        if (entry == nullptr) break;
        const std::string name = static_cast<const char*>(entry->d_name);
        if (name != "." && name != "..") result.names.push_back(name);
    }
    result.error = errno;
    return result;
}

} // namespace fat32format
