#include "platform/linux/file_watch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>
#include <utility>

namespace platform::posix {

// A file counts as written when it is closed, not with every part of it.
FileWatch::FileWatch(const std::string& folder, std::string name)
    : events_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)), name_(std::move(name)) {
    constexpr std::uint32_t changes = IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | IN_ONLYDIR;
    if (events_ && inotify_add_watch(events_.get(), folder.c_str(), changes) < 0) events_.close();
}

bool FileWatch::takeChange() {
    bool changed = false;
    alignas(inotify_event) char buffer[4096];
    for (ssize_t length = 0; (length = read(events_.get(), buffer, sizeof buffer)) > 0;) {
        const char* const end = buffer + length;
        for (const char* position = buffer; position < end;) {
            inotify_event event = {};
            std::memcpy(&event, position, sizeof event);
            const char* name = position + sizeof event;
            if ((event.mask & IN_Q_OVERFLOW) != 0 || (event.len > 0 && name_ == name)) changed = true;
            position = name + event.len;
        }
    }
    return changed;
}

} // namespace platform::posix
