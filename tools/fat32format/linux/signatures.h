#pragma once

#include "tools/fat32format/system.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace fat32format {

/// What an open device holds, by the marks that libblkid knows; no value when it cannot be read. Of the
/// partitions inside there is nothing.
/// https://mirrors.edge.kernel.org/pub/linux/utils/util-linux/v2.38/libblkid-docs/
std::optional<std::vector<Signature>> readSignatures(int device, std::uint64_t bytes);

} // namespace fat32format
