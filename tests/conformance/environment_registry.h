// A place in the registry for a conformance test.
#pragma once

#include <string>

namespace conformance {

/// While it lives there is a path below the current user's key where nothing exists yet; whatever a test
/// leaves there goes with this object. One at a time. What cannot be arranged throws std::exception.
class RegistryPlace {
public:
    RegistryPlace();
    RegistryPlace(const RegistryPlace&) = delete;
    RegistryPlace& operator=(const RegistryPlace&) = delete;
    ~RegistryPlace();

    /// The path, relative to the current user's key.
    std::string path() const;
};

} // namespace conformance
