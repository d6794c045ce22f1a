#include "base/keyed_list.h"

#include <charconv>

namespace base {

std::string KeyedList::get(std::string_view key) const {
    std::size_t position = 0;
    const char* const end = key.data() + key.size();
    const auto [next, error] = std::from_chars(key.data(), end, position);
    const bool isKey = error == std::errc() && next == end && key == std::to_string(position);
    return isKey && position < entries_.size() ? entries_[position] : std::string();
}

} // namespace base
