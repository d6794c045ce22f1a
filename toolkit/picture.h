// Pictures, by reference: a copy of a Picture is the same picture.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

namespace toolkit {

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

/// Loads a bitmap, icon, JPEG or GIF file. Throws base::RuntimeError: FileNotFound, PathNotFound or another
/// file error when the file cannot be read, InvalidPicture when it is none of the four. Windows:
/// `OleLoadPicture`.
Picture loadPicture(std::string_view path);

/// The program's icon resource 103 (no stick; the program's own icon) or 104 (stick present). Windows:
/// `LoadImage`. Throws base::RuntimeError (InvalidProcedureCall) for a number that the program does not have.
Picture iconResource(int number);

} // namespace toolkit
