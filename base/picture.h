// Pictures, by reference: a copy of a Picture is the same picture.
#pragma once

#include <cstdint>
#include <memory>

namespace base {

/// What a backend keeps of a loaded picture.
class PictureData {
public:
    PictureData() = default;
    PictureData(const PictureData&) = delete;
    PictureData& operator=(const PictureData&) = delete;
    virtual ~PictureData() = default;

    /// The platform's handle of the picture; for an icon resource the value that a tray icon takes. Never 0.
    virtual std::int32_t handle() const noexcept = 0;
};

/// Null when there is no picture.
using Picture = std::shared_ptr<const PictureData>;

} // namespace base
