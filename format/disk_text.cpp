#include "format/disk_text.h"

#include "base/letters.h"
#include "base/trim.h"
#include "platform/number_text.h"

#include <algorithm>
#include <array>

namespace format {

namespace {

/// A text that comes from a disk is one line, whatever is in it.
std::string oneLine(std::string text) {
    constexpr unsigned char firstPrintable = 0x20;
    constexpr unsigned char lastControl = 0x7F;
    std::replace_if(
        text.begin(), text.end(),
        [](unsigned char byte) { return byte < firstPrintable || byte == lastControl; }, ' ');
    return std::string(base::trim(text));
}

/// Some disks begin the name of their model with that of their maker.
std::string makerAndModel(const platform::DiskDescription& disk) {
    const std::string maker = oneLine(disk.maker);
    std::string model = oneLine(disk.model);
    if (maker.empty() || base::startsWithNoCase(model, maker)) return model;
    return model.empty() ? maker : maker + ' ' + model;
}

std::string sizeText(std::uint64_t bytes) {
    if (bytes == 0) return {};
    constexpr double megabyte = 1024.0 * 1024.0;
    constexpr double gigabyte = 1024 * megabyte;
    const auto size = static_cast<double>(bytes);
    return size < gigabyte ? platform::formatNumber(size / megabyte, 1) + " MB"
                           : platform::formatNumber(size / gigabyte, 1) + " GB";
}

std::string labelText(const std::string& label) {
    const std::string text = oneLine(label);
    return text.empty() ? text : "Bezeichnung \"" + text + '"';
}

} // namespace

std::string diskText(const platform::DiskDescription& disk) {
    std::string text;
    for (const std::string& fact :
         std::array{makerAndModel(disk), sizeText(disk.size), labelText(disk.label)})
        if (!fact.empty()) text += (text.empty() ? "" : ", ") + fact;
    return text;
}

} // namespace format
