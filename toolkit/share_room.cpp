#include "toolkit/share_room.h"

#include <algorithm>
#include <numeric>

namespace toolkit {

std::vector<int> shareRoom(const std::vector<int>& needs, int room) {
    std::vector<std::size_t> order(needs.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&needs](std::size_t a, std::size_t b) { return needs[a] < needs[b]; });
    std::vector<int> shares(needs.size());
    auto others = static_cast<int>(needs.size());
    for (const std::size_t part : order) {
        shares[part] = std::min(needs[part], room / others--);
        room -= shares[part];
    }
    if (!shares.empty()) shares.back() += room;
    return shares;
}

} // namespace toolkit
