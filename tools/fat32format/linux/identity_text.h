#pragma once

#include "tools/fat32format/disk_identity.h"

#include <optional>
#include <string_view>

namespace fat32format {

/// Reads "sequence=7,size=500107862016,serial=0123%20A": decimal numbers, the serial in UTF-8 with everything
/// that is special as "%XX". No value when the text is anything else, or names no disk at all.
std::optional<DiskIdentity> parseIdentity(std::string_view text);

} // namespace fat32format
