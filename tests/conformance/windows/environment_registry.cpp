#include "tests/conformance/environment_registry.h"

#include <windows.h>

namespace conformance {

namespace {

constexpr const char* place = "Software\\Conformance Test";

void clean() {
    RegDeleteTreeA(HKEY_CURRENT_USER, place);
}

} // namespace

RegistryPlace::RegistryPlace() {
    clean();
}

RegistryPlace::~RegistryPlace() {
    clean();
}

std::string RegistryPlace::path() const {
    return place;
}

} // namespace conformance
