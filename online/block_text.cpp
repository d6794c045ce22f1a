#include "online/block_text.h"

#include <algorithm>

namespace online {

void BlockText::append(std::span<const char> piece) {
    size_ += piece.size();
    while (!piece.empty()) {
        if (blocks_.empty() || blocks_.back().size() == blockSize) blocks_.emplace_back().reserve(blockSize);
        std::string& block = blocks_.back();
        const std::size_t fits = std::min(piece.size(), blockSize - block.size());
        block.append(piece.data(), fits);
        piece = piece.subspan(fits);
    }
}

std::string BlockText::join() && {
    std::string text;
    text.reserve(size_);
    for (std::string& block : blocks_) {
        text += block;
        block = std::string();
    }
    blocks_.clear();
    size_ = 0;
    return text;
}

} // namespace online
