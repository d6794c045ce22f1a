#include "drive/file_listing.h"

#include "base/runtime_error.h"
#include "platform/files.h"
#include "platform/program_path.h"
#include "toolkit/pump.h"

namespace drive {

namespace {

constexpr std::size_t growth = 100;

/// Keeps the entry at index `count` below the array's last one.
template <typename Entry>
void growAt(std::vector<Entry>& array, std::int32_t count) {
    if (count < 0 || static_cast<std::size_t>(count) > array.size())
        throw base::RuntimeError(base::ErrorNumber::SubscriptOutOfRange, std::to_string(count));
    if (static_cast<std::size_t>(count) + 1 >= array.size()) array.resize(array.size() + growth);
}

} // namespace

void GetAllFiles(std::string_view Path, std::vector<std::string>& Names,
                 std::vector<std::int16_t>& Attributes, bool DoRecursion, std::int32_t& Count) {
    toolkit::DoEvents();
    const std::string folder = platform::withBackslash(std::string(Path));
    growAt(Names, Count);

    platform::FileSearch search(folder + "*.*");
    platform::FoundFile found;
    while (search.next(found)) {
        const bool isFolder = (found.attributes & platform::FileDirectory) != 0;
        if (isFolder && (!DoRecursion || found.name == "." || found.name == "..")) continue;
        growAt(Names, Count);
        growAt(Attributes, Count);
        const auto index = static_cast<std::size_t>(Count);
        Names[index] = folder + found.name;
        Attributes[index] = static_cast<std::int16_t>(found.attributes & 0x7FFF);
        ++Count;
        if (isFolder) GetAllFiles(folder + found.name, Names, Attributes, DoRecursion, Count);
    }
}

} // namespace drive
