#include "toolkit/win32/resource_names.h"

#include "toolkit/win32/resource.h"

#include <algorithm>
#include <array>

namespace toolkit::win32 {

namespace {

struct Entry {
    std::string_view name;
    int number;
};

// Made by the build from resource.h.
constexpr auto entries = std::to_array<Entry>({
#include "control_names.inc"
});

} // namespace

int resourceNumber(std::string_view name) {
    const auto found =
        std::find_if(entries.begin(), entries.end(), [name](const Entry& e) { return e.name == name; });
    return found == entries.end() ? 0 : found->number;
}

} // namespace toolkit::win32
