#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace online {

/// A long text that grows piece by piece, in blocks that never move. A string alone would hold its contents
/// twice at each of its growths; a firmware of 64 MB would cost 128.
class BlockText {
public:
    void append(std::span<const char> piece);

    /// The whole text. Every block goes as soon as it has been copied, so this needs no room for a second
    /// text either.
    std::string join() &&;

private:
    static constexpr std::size_t blockSize = std::size_t{1} << 20;

    std::vector<std::string> blocks_;
    std::size_t size_ = 0;
};

} // namespace online
