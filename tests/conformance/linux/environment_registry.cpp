#include "tests/conformance/environment_registry.h"

#include "platform/registry.h"
#include "tests/conformance/linux/temporary_folder.h"

#include <cstdlib>

namespace fs = std::filesystem;

namespace conformance {

namespace {

/// The registry's file lies in the user's configuration folder, which is one of its own for this process.
const fs::path& configFolder() {
    static const TemporaryFolder folder;
    return folder.path();
}

void clean() {
    platform::regFlushKey(platform::registryCurrentUser); // else this process would save it later
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(configFolder(), ignored))
        fs::remove_all(entry.path(), ignored);
}

} // namespace

RegistryPlace::RegistryPlace() {
    if (setenv("XDG_CONFIG_HOME", configFolder().c_str(), 1) != 0) throw std::runtime_error("no environment");
    clean();
}

RegistryPlace::~RegistryPlace() {
    clean();
}

std::string RegistryPlace::path() const {
    return "Software\\Conformance Test";
}

} // namespace conformance
