// What the Windows backend keeps of a picture.
#pragma once

#include "toolkit/picture.h"
#include "toolkit/win32/bitmap.h"

#include <windows.h>

#include <optional>

namespace toolkit::win32 {

class LoadedPicture : public base::PictureData {
public:
    /// As it was read from a file.
    explicit LoadedPicture(Bitmap bitmap) : bitmap_(std::move(bitmap)) {}
    /// An icon resource.
    explicit LoadedPicture(int number) : number_(number) {}

    std::int32_t handle() const noexcept override;

    /// Null for an icon resource.
    const Bitmap* bitmap() const noexcept { return bitmap_ ? &*bitmap_ : nullptr; }
    /// The icon in that size, which is never destroyed; null for a picture from a file.
    HICON icon(int size) const;

private:
    std::optional<Bitmap> bitmap_;
    int number_ = 0;
};

/// Null for no picture.
const LoadedPicture* loaded(const base::Picture& picture);

} // namespace toolkit::win32
