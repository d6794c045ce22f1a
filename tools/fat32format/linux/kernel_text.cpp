#include "tools/fat32format/linux/kernel_text.h"

#include "platform/linux/base/folder_reader.h"
#include "platform/linux/base/unique_fd.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
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
    FolderNames result;
    platform::linux::FolderReader reader(folder);
    while (const char* const entry = reader.next()) {
        const std::string name = entry;
        if (name != "." && name != "..") result.names.push_back(name);
    }
    result.error = reader.error();
    return result;
}

} // namespace fat32format
