#pragma once

#include <windows.h>

namespace fat32format {

/// A library out of the system's own folder, wherever else one of its name lies; in memory until the object
/// goes. https://learn.microsoft.com/windows/win32/api/libloaderapi/nf-libloaderapi-loadlibraryexw
class SystemLibrary {
public:
    explicit SystemLibrary(const wchar_t* name)
        : module_(LoadLibraryExW(name, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32)) {}
    SystemLibrary(const SystemLibrary&) = delete;
    SystemLibrary& operator=(const SystemLibrary&) = delete;
    ~SystemLibrary() {
        if (module_ != nullptr) FreeLibrary(module_);
    }

    /// A null pointer when the library, or a function of the name, is not there.
    template <typename Function>
    Function function(const char* name) const {
        if (module_ == nullptr) return nullptr;
        return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
    }

private:
    HMODULE module_;
};

} // namespace fat32format
