// Makes a program's system slow: LD_PRELOAD=libslowness.so USBTOOL_SLOW_FOLDER=/a/stick
//   USBTOOL_SLOW_SYNC=10     seconds that the first sync of a file in the folder takes
//   USBTOOL_SLOW_WRITE=1000  kilobytes a second that can be written there
//   USBTOOL_SLOW_READ=1000   kilobytes a second that can be read there
//   USBTOOL_SLOW_LOOKUP=20   seconds that the name server thinks about a name; "server.test" is this computer

#include <dlfcn.h>
#include <limits.h>
#include <netdb.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

double setting(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? 0 : std::atof(value);
}

void sleepFor(double seconds) {
    constexpr double microsecond = 1e6;
    if (seconds > 0) usleep(static_cast<useconds_t>(seconds * microsecond));
}

bool isInSlowFolder(int file) {
    const char* const folder = std::getenv("USBTOOL_SLOW_FOLDER");
    if (folder == nullptr) return false;
    char path[PATH_MAX];
    const std::string link = "/proc/self/fd/" + std::to_string(file);
    const ssize_t length = readlink(link.c_str(), path, sizeof path);
    return length > 0 && std::string_view(path, static_cast<std::size_t>(length)).starts_with(folder);
}

template <class Function>
Function next(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" int fsync(int file) {
    static std::atomic<bool> slept = false;
    if (isInSlowFolder(file) && !slept.exchange(true)) sleepFor(setting("USBTOOL_SLOW_SYNC"));
    return next<int (*)(int)>("fsync")(file);
}

extern "C" ssize_t write(int file, const void* bytes, size_t count) {
    const double rate = setting("USBTOOL_SLOW_WRITE") * 1000;
    if (rate > 0 && isInSlowFolder(file)) sleepFor(static_cast<double>(count) / rate);
    return next<ssize_t (*)(int, const void*, size_t)>("write")(file, bytes, count);
}

extern "C" ssize_t read(int file, void* bytes, size_t count) {
    const ssize_t got = next<ssize_t (*)(int, void*, size_t)>("read")(file, bytes, count);
    const double rate = setting("USBTOOL_SLOW_READ") * 1000;
    if (rate > 0 && got > 0 && isInSlowFolder(file)) sleepFor(static_cast<double>(got) / rate);
    return got;
}

extern "C" int getaddrinfo(const char* node, const char* service, const addrinfo* hints, addrinfo** result) {
    sleepFor(setting("USBTOOL_SLOW_LOOKUP"));
    // libcurl knows by itself where "localhost" is.
    if (node != nullptr && std::string_view(node) == "server.test") node = "127.0.0.1";
    return next<int (*)(const char*, const char*, const addrinfo*, addrinfo**)>("getaddrinfo")(node, service,
                                                                                               hints, result);
}
