#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace drive {

/// Collects the names below a folder, and with DoRecursion the folders and what is below them. Lets window
/// events run at every folder.
///
/// Entry number Count goes to that index of both arrays, and Count rises by one; what was there before stays.
/// Names and their attributes (the low 15 bits, see platform::FileAttribute) grow by 100 entries whenever
/// Count reaches the last index, so both are longer than Count when it returns. A folder that cannot be read
/// has no entries. Throws base::RuntimeError (SubscriptOutOfRange) when Count is beyond what an array holds.
void GetAllFiles(std::string_view Path, std::vector<std::string>& Names,
                 std::vector<std::int16_t>& Attributes, bool DoRecursion, std::int32_t& Count);

} // namespace drive
