// The lines of the registry's file. Each is one change of the registry, complete in itself:
//
//     A35B3722 key 1732170000000000 1 "Software" "Orvanta"
//     CDE16EC2 value 1732170000000001 1 "Folder" "E:\B%FCro%00"
//
// First comes the checksum (CRC-32, 8 hexadecimal digits) of all that follows the blank behind it, then what
// is done:
//
//     key N P "name" ...     key number N is created in key P; of further names each is a key in the one
//     before it,
//                            numbered N + 1 and so on
//     value N T "name" "data"  a value of key N is set; T is its type
//     no-key N               key N is deleted, with its values
//     no-value N "name"      a value of key N is deleted
//     next N                 the next key that is created has at least this number
//
// Keys 0 to 3 are the predefined ones and always there. In texts, bytes that are no visible character of
// ASCII, the quotation mark and the per cent sign stand as "%" and two hexadecimal digits; a blank is a
// blank.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform::linux {

struct RegistryRecord {
    enum class Kind { Key, Value, NoKey, NoValue, Next };
    Kind kind = Kind::Next;
    std::uint64_t key = 0;
    std::uint64_t detail = 0;       ///< Key: the parent; Value: the type
    std::vector<std::string> texts; ///< Key: names; Value: name and data; NoValue: name
};

/// The record as a line, with its line end.
std::string registryLine(const RegistryRecord& record);

/// What a line (without its line end) says; no value when it is not exactly a line as above.
std::optional<RegistryRecord> parseRegistryLine(std::string_view line);

} // namespace platform::linux
