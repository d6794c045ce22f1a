#include "tests/driver/windows/names.h"

#include "toolkit/win32/resource.h"

#include <algorithm>
#include <iterator>

namespace probe {

namespace {

struct ControlName {
    std::string_view name;
    int identifier;
};

constexpr ControlName controlNames[] = {
#include "control_names.inc"
};

} // namespace

int identifierOf(std::string_view name) {
    const auto* found = std::find_if(std::begin(controlNames), std::end(controlNames),
                                     [name](const ControlName& entry) { return entry.name == name; });
    return found == std::end(controlNames) ? 0 : found->identifier;
}

std::string_view nameOf(int identifier) {
    const auto* found =
        std::find_if(std::begin(controlNames), std::end(controlNames),
                     [identifier](const ControlName& entry) { return entry.identifier == identifier; });
    return found == std::end(controlNames) ? std::string_view() : found->name;
}

} // namespace probe
