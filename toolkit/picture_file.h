// What a picture file says of itself, before anybody decodes it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace toolkit {

enum class PictureFormat { Bitmap, Gif, Icon, Jpeg };

/// The part of a picture file that is to be decoded.
struct PictureSource {
    PictureFormat format{};
    std::string_view bytes; ///< the whole file; of an icon the largest of its pictures, without the directory
    std::int64_t width = 0; ///< pixels, as the file says
    std::int64_t height = 0;
};

// What is decoded within 0.3 s on any computer that runs the program. A file beyond one of these counts as no
// picture: its decoder would keep the window waiting for as long as the file's author likes.
constexpr std::size_t longestPictureFile = std::size_t{16} * 1024 * 1024; ///< bytes
constexpr std::int64_t mostPixels = std::int64_t{4} * 1024 * 1024;        ///< width times height
constexpr std::size_t mostIconPictures = 100;
/// Each scan of a JPEG file passes over all pixels; width times height times scans.
constexpr std::int64_t mostScannedPixels = std::int64_t{32} * 1024 * 1024;

/// Looks at the contents of a file, which the result points into. False when they are none of the four
/// formats, or more than can be decoded at once.
bool readPictureFile(std::string_view contents, PictureSource& source);

/// A file of one picture, out of the bytes of an icon's one.
std::string iconFile(const PictureSource& source);

} // namespace toolkit
