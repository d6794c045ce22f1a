#include "job/written_files.h"

#include "platform/file_check.h"
#include "platform/files.h"

#include <utility>

namespace job {

namespace {

using platform::FileResult;

/// A file that is gone, or is a folder by now, is not what was written either.
FileResult compared(FileResult result) {
    const bool another = result == FileResult::FileNotFound || result == FileResult::PathFileAccess;
    return another ? FileResult::DeviceIo : result;
}

} // namespace

void WrittenFiles::add(std::string path, std::string contents, bool written) {
    files_.push_back({std::move(path), std::move(contents), true});
    if (!written) return;
    for (File& file : files_)
        file.isKnown = false;
}

void WrittenFiles::verify(const platform::DriveIdentity& drive) const {
    for (const File& file : files_)
        if (!file.isKnown)
            platform::check(compared(platform::compareFile(file.path, file.contents, drive)), file.path);
}

} // namespace job
