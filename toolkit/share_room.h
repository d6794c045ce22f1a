#pragma once

#include <vector>

namespace toolkit {

/// Shares a room out among parts that stand below each other: each gets what it needs, and where that is not
/// enough nobody gets more than those who get less than they need. What is left over is the last one's.
std::vector<int> shareRoom(const std::vector<int>& needs, int room);

} // namespace toolkit
