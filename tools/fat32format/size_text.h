#pragma once

#include <cstdint>
#include <string>

namespace fat32format {

/// A number of bytes as disks are sold: "500.1 GB".
std::string sizeText(std::uint64_t bytes);

} // namespace fat32format
