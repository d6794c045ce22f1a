// What the program has screen readers say at once.
#pragma once

#include <string>
#include <vector>

namespace probe {

struct Said {
    std::string name; ///< of the part
    std::wstring text;
};

/// What was said since this was asked last, the oldest first; the first question begins to listen.
std::vector<Said> takeSaid();

} // namespace probe
