#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>

namespace toolkit {

/// Controls of one kind under one name with an index: `Name_0`, `Name_1`, …
template <typename Kind, std::size_t Count>
class ControlArray {
public:
    explicit ControlArray(const std::string& name, std::size_t first = 0) {
        for (std::size_t i = 0; i < Count; ++i)
            elements_[i] = std::make_unique<Kind>(name + "_" + std::to_string(first + i));
    }

    Kind& operator[](std::size_t index) { return *elements_.at(index); }
    const Kind& operator[](std::size_t index) const { return *elements_.at(index); }
    constexpr std::size_t size() const noexcept { return Count; }

private:
    std::array<std::unique_ptr<Kind>, Count> elements_;
};

} // namespace toolkit
