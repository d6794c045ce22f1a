#include "platform/linux/base/libcurl.h"

#include "base/runtime_error.h"
#include "platform/blocking.h"
#include "platform/linux/base/complaint.h"

#include <dlfcn.h>

#include <string>

namespace platform {

decltype(&::curl_global_init) curl_global_init = nullptr;
decltype(&::curl_easy_init) curl_easy_init = nullptr;
decltype(&::curl_easy_setopt) curl_easy_setopt = nullptr;
decltype(&::curl_easy_getinfo) curl_easy_getinfo = nullptr;
decltype(&::curl_easy_pause) curl_easy_pause = nullptr;
decltype(&::curl_easy_cleanup) curl_easy_cleanup = nullptr;
decltype(&::curl_multi_init) curl_multi_init = nullptr;
decltype(&::curl_multi_add_handle) curl_multi_add_handle = nullptr;
decltype(&::curl_multi_remove_handle) curl_multi_remove_handle = nullptr;
decltype(&::curl_multi_perform) curl_multi_perform = nullptr;
decltype(&::curl_multi_poll) curl_multi_poll = nullptr;
decltype(&::curl_multi_info_read) curl_multi_info_read = nullptr;
decltype(&::curl_multi_cleanup) curl_multi_cleanup = nullptr;
decltype(&::curl_slist_append) curl_slist_append = nullptr;
decltype(&::curl_slist_free_all) curl_slist_free_all = nullptr;

namespace {

// A name without a folder: the linker looks where it looks for the libraries that a program is linked to, and
// so neither beside the program nor in the current folder.
constexpr const char* libraryName = "libcurl.so.4";

struct Loaded {
    void* library = nullptr;
    std::string failure; ///< the linker's words
};

Loaded load() {
    Loaded loaded{dlopen(libraryName, RTLD_NOW | RTLD_LOCAL), {}};
    if (loaded.library == nullptr) loaded.failure = dlerror();
    return loaded;
}

[[noreturn]] void refuse(const std::string& failure) {
    linux::Complaint().tell(failure);
    throw base::RuntimeError(base::ErrorNumber::LibraryNotLoaded, libraryName,
                             "Updates werden mit dieser Bibliothek geladen. Installieren Sie das Paket, zu "
                             "dem sie gehört (bei Debian und Ubuntu: libcurl4), und starten Sie das Programm "
                             "neu.");
}

template <class Function>
void find(void* library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(library, name));
    if (function == nullptr) refuse(dlerror());
}

} // namespace

void loadLibcurl() {
    static bool ready = false;
    if (ready) return;
    const Loaded loaded = blocking(load);
    if (loaded.library == nullptr) refuse(loaded.failure);
    find(loaded.library, "curl_global_init", curl_global_init);
    find(loaded.library, "curl_easy_init", curl_easy_init);
    find(loaded.library, "curl_easy_setopt", curl_easy_setopt);
    find(loaded.library, "curl_easy_getinfo", curl_easy_getinfo);
    find(loaded.library, "curl_easy_pause", curl_easy_pause);
    find(loaded.library, "curl_easy_cleanup", curl_easy_cleanup);
    find(loaded.library, "curl_multi_init", curl_multi_init);
    find(loaded.library, "curl_multi_add_handle", curl_multi_add_handle);
    find(loaded.library, "curl_multi_remove_handle", curl_multi_remove_handle);
    find(loaded.library, "curl_multi_perform", curl_multi_perform);
    find(loaded.library, "curl_multi_poll", curl_multi_poll);
    find(loaded.library, "curl_multi_info_read", curl_multi_info_read);
    find(loaded.library, "curl_multi_cleanup", curl_multi_cleanup);
    find(loaded.library, "curl_slist_append", curl_slist_append);
    find(loaded.library, "curl_slist_free_all", curl_slist_free_all);
    ready = true;
}

} // namespace platform
