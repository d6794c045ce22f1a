#include "tools/fat32format/volume_marks.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace fat32format {

namespace {

constexpr std::size_t systemName = 3; // behind the jump

/// {4967D63B-2E29-4AD8-8399-F6A339E3D001}, as it lies on the disk.
constexpr std::array<unsigned char, 16> bitLockerToGo = {0x3B, 0xD6, 0x67, 0x49, 0x29, 0x2E, 0xD8, 0x4A,
                                                         0x83, 0x99, 0xF6, 0xA3, 0x39, 0xE3, 0xD0, 0x01};
constexpr std::size_t placeOfToGo = 424;

bool hasText(std::span<const unsigned char> sector, std::size_t place, std::string_view text) {
    if (sector.size() < place + text.size()) return false;
    return std::equal(text.begin(), text.end(), sector.begin() + static_cast<std::ptrdiff_t>(place),
                      [](char a, unsigned char b) { return static_cast<unsigned char>(a) == b; });
}

struct Mark {
    std::size_t place;
    std::string_view text;
    const char* name;
};

constexpr std::array<Mark, 6> marks = {{
    {systemName, "NTFS    ", "NTFS"},
    {systemName, "EXFAT   ", "exFAT"},
    {systemName, "ReFS", "ReFS"},
    {82, "FAT32   ", "FAT"},
    {54, "FAT16   ", "FAT"},
    {54, "FAT12   ", "FAT"},
}};

} // namespace

bool isBitLocker(std::span<const unsigned char> sector) {
    if (hasText(sector, systemName, "-FVE-FS-")) return true;
    return sector.size() >= placeOfToGo + bitLockerToGo.size() &&
           std::equal(bitLockerToGo.begin(), bitLockerToGo.end(), sector.begin() + placeOfToGo);
}

std::string fileSystemName(std::span<const unsigned char> sector) {
    const auto* const found = std::find_if(marks.begin(), marks.end(), [sector](const Mark& mark) {
        return hasText(sector, mark.place, mark.text);
    });
    return found == marks.end() ? std::string() : found->name;
}

} // namespace fat32format
