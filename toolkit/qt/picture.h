// What the Qt backend keeps of a picture.
#pragma once

#include "toolkit/picture.h"

#include <QIcon>
#include <QImage>

namespace toolkit::qt {

class LoadedPicture : public base::PictureData {
public:
    LoadedPicture(std::int32_t handle, QImage image);
    LoadedPicture(std::int32_t handle, QIcon icon);

    std::int32_t handle() const noexcept override { return handle_; }

    /// As it was read from a file; null for an icon resource.
    const QImage& image() const noexcept { return image_; }
    const QIcon& icon() const noexcept { return icon_; }

private:
    std::int32_t handle_;
    QImage image_;
    QIcon icon_;
};

/// Null for no picture.
const LoadedPicture* loaded(const base::Picture& picture);

/// The icon resource of that number in all its sizes; null where there is none.
QIcon iconOf(int number);

} // namespace toolkit::qt
