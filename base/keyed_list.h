#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace base {

/// An ordered list of texts whose keys are the decimal texts "0", "1", "2", … of their positions.
class KeyedList {
public:
    /// The new entry's key is the list's count before it.
    void add(std::string text) { entries_.push_back(std::move(text)); }

    /// The entry under a key; empty when there is none.
    std::string get(std::string_view key) const;

    std::size_t count() const noexcept { return entries_.size(); }

private:
    std::vector<std::string> entries_;
};

} // namespace base
