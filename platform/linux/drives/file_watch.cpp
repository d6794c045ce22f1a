#include "platform/linux/drives/file_watch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

namespace platform::linux {

// A file counts as written when it is closed, not with every part of it.
FileWatch::FileWatch(const std::string& folder, std::string name)
    : events_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)), name_(std::move(name)) {
    constexpr std::uint32_t changes = IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | IN_ONLYDIR;
    if (events_ && inotify_add_watch(events_.get(), folder.c_str(), changes) < 0) events_.close();
}

bool FileWatch::takeChange() {
    bool changed = false;
    std::array<char, 4096> buffer{};
    for (ssize_t length = 0; (length = read(events_.get(), buffer.data(), buffer.size())) > 0;) {
        const char* const end = buffer.data() + length;
        for (const char* position = buffer.data(); position < end;) {
            inotify_event event = {};
            std::memcpy(&event, position, sizeof event);
            const char* name = position + sizeof event;
            if ((event.mask & IN_Q_OVERFLOW) != 0 || (event.len > 0 && name_ == name)) changed = true;
            position = name + event.len;
        }
    }
    return changed;
}

} // namespace platform::linux
