// The registry as the text of its file. Behind the first line, which says what it is, comes a line for each
// key and each value, complete in itself:
//
//     DD517F43 key HKEY_CURRENT_USER\Software\Orvanta
//     C7DE9CA7 value HKEY_CURRENT_USER\Software\Orvanta 1 Folder E:\B%FCro%00
//
// First comes the checksum (CRC-32, 8 hexadecimal digits) of all that follows the blank behind it. Behind a
// value's key stand its type, its name and its data. Bytes that are no letter, digit or one of -._\: stand as
// "%" and two hexadecimal digits.
#pragma once

#include "platform/linux/registry/registry_tree.h"

#include <string>
#include <string_view>

namespace platform::linux {

std::string registryText(const RegistryNode& top);

/// Adds to an empty tree what can be read of a text; false when that is not all. The empty text is a registry
/// without keys.
bool readRegistryText(std::string_view text, RegistryNode& top);

} // namespace platform::linux
