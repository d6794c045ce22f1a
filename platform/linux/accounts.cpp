#include "platform/accounts.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <grp.h>
#include <pwd.h>
#include <unistd.h>

namespace platform {

namespace {

/// The groups whose members may administer a Linux system, by the custom of its various makers.
constexpr std::array<std::string_view, 4> administrators = {"root", "sudo", "wheel", "admin"};

constexpr std::size_t firstSize = 1024;
constexpr std::size_t largestSize = 16UL * 1024 * 1024;

/// Calls one of the look-ups that ask for a larger buffer by ERANGE; true when it found an entry.
template <typename Entry, typename LookUp>
bool find(LookUp lookUp, Entry& entry, std::vector<char>& buffer) {
    for (std::size_t size = firstSize; size <= largestSize; size *= 2) {
        buffer.resize(size);
        Entry* found = nullptr;
        int error = 0;
        do {
            error = lookUp(&entry, buffer.data(), size, &found);
        } while (error == EINTR);
        if (error != ERANGE) return error == 0 && found != nullptr;
    }
    return false;
}

/// Appends the members of one group; false when there is no such group.
bool appendMembers(const std::string& name, std::vector<std::string>& members) {
    group entry = {};
    std::vector<char> buffer;
    const auto lookUp = [&name](group* into, char* space, std::size_t size, group** found) {
        return getgrnam_r(name.c_str(), into, space, size, found);
    };
    if (!find(lookUp, entry, buffer)) return false;
    for (char** member = entry.gr_mem; *member != nullptr; ++member)
        members.emplace_back(*member);
    // The group database never lists that one.
    if (name == "root") members.push_back(name);
    return true;
}

} // namespace

std::optional<std::vector<std::string>> localGroupMembers(std::string_view group) {
    std::vector<std::string> members;
    bool exists = false;
    if (group == administratorsGroup) {
        for (const std::string_view name : administrators)
            exists = appendMembers(std::string(name), members) || exists;
    } else {
        exists = appendMembers(std::string(group), members);
    }
    if (!exists) return std::nullopt;
    return members;
}

std::string userName() {
    const char* given = std::getenv("USERNAME"); // NOLINT(concurrency-mt-unsafe): nobody sets it
    if (given != nullptr) return given;
    passwd entry = {};
    std::vector<char> buffer;
    const auto lookUp = [](passwd* into, char* space, std::size_t size, passwd** found) {
        return getpwuid_r(getuid(), into, space, size, found);
    };
    return find(lookUp, entry, buffer) ? entry.pw_name : std::string();
}

} // namespace platform
