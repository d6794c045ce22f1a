#include "toolkit/picture_file.h"

#include "base/little_endian.h"

#include <algorithm>
#include <utility>

namespace toolkit {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t iconHeader = 6;
constexpr std::size_t iconEntry = 16;

unsigned byteAt(std::string_view data, std::size_t at) {
    return at < data.size() ? static_cast<unsigned char>(data[at]) : 0;
}
unsigned little16(std::string_view data, std::size_t at) {
    return static_cast<unsigned>(base::littleEndian(data, at, 2));
}
unsigned big16(std::string_view data, std::size_t at) {
    return byteAt(data, at) << 8 | byteAt(data, at + 1);
}
std::uint32_t little32(std::string_view data, std::size_t at) {
    return static_cast<std::uint32_t>(base::littleEndian(data, at, 4));
}
std::uint32_t big32(std::string_view data, std::size_t at) {
    return static_cast<std::uint32_t>(big16(data, at)) << 16 | big16(data, at + 2);
}

bool begins(std::string_view data, std::string_view mark) {
    return data.substr(0, mark.size()) == mark;
}

bool isReasonable(const PictureSource& source) {
    return source.width > 0 && source.height > 0 && source.width <= mostPixels &&
           source.height <= mostPixels && source.width * source.height <= mostPixels;
}

/// The size of a bitmap, which follows the length of its header; one from the top on has a negative height.
void readBitmapSize(std::string_view header, PictureSource& source) {
    constexpr std::uint32_t oldHeader = 12;
    if (little32(header, 0) == oldHeader) {
        source.width = little16(header, 4);
        source.height = little16(header, 6);
        return;
    }
    const auto height = static_cast<std::int32_t>(little32(header, 8));
    source.width = static_cast<std::int32_t>(little32(header, 4));
    source.height = height < 0 ? -std::int64_t{height} : height;
}

bool readBitmap(PictureSource& source) {
    constexpr std::size_t fileHeader = 14;
    source.format = PictureFormat::Bitmap;
    readBitmapSize(source.bytes.substr(std::min(fileHeader, source.bytes.size())), source);
    return true;
}

bool readGif(PictureSource& source) {
    source.format = PictureFormat::Gif;
    source.width = little16(source.bytes, 6);
    source.height = little16(source.bytes, 8);
    return true;
}

/// Among the pixels a byte of 255 is followed by another one than this.
std::int64_t scansIn(std::string_view data) {
    std::int64_t scans = 0;
    for (std::size_t at = data.find("\xFF\xDA"sv); at != std::string_view::npos;
         at = data.find("\xFF\xDA"sv, at + 2))
        ++scans;
    return scans;
}

/// The size stands in the frame header, behind segments of known length.
/// https://www.w3.org/Graphics/JPEG/itu-t81.pdf, B.2.2
bool readJpeg(PictureSource& source) {
    const std::string_view data = source.bytes;
    source.format = PictureFormat::Jpeg;
    std::size_t at = 2;
    while (at + 9 < data.size() && byteAt(data, at) == 0xFF) {
        const unsigned marker = byteAt(data, at + 1);
        const bool frame =
            marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
        if (frame) {
            source.width = big16(data, at + 7);
            source.height = big16(data, at + 5);
            return source.width * source.height * scansIn(data.substr(at)) <= mostScannedPixels;
        }
        if (marker == 0xFF)
            ++at; // a filling byte
        else
            at += 2 + big16(data, at + 2);
    }
    return false;
}

/// One of an icon's pictures: a PNG file, or a bitmap without the header of its file and with a mask below
/// it.
void readIconPicture(PictureSource& source) {
    if (begins(source.bytes, "\x89PNG")) {
        source.width = big32(source.bytes, 16);
        source.height = big32(source.bytes, 20);
        return;
    }
    readBitmapSize(source.bytes, source);
    source.height /= 2;
}

/// An icon file holds one picture in several sizes: the largest, in the most colours, is the one to scale
/// down. https://learn.microsoft.com/previous-versions/ms997538(v=msdn.10)
bool readIcon(PictureSource& source) {
    const std::string_view data = source.bytes;
    const std::size_t count = little16(data, 4);
    if (count > mostIconPictures) return false;
    source.format = PictureFormat::Icon;
    source.bytes = {};
    std::pair<unsigned, unsigned> best;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t at = iconHeader + i * iconEntry;
        const std::pair size(byteAt(data, at) == 0 ? 256U : byteAt(data, at), little16(data, at + 6));
        const std::size_t length = little32(data, at + 8);
        const std::size_t offset = little32(data, at + 12);
        if (at + iconEntry > data.size() || offset > data.size() || length > data.size() - offset) continue;
        if (size <= best) continue;
        best = size;
        source.bytes = data.substr(offset, length);
    }
    readIconPicture(source);
    return true;
}

bool readByMark(PictureSource& source) {
    if (begins(source.bytes, "\0\0\1\0"sv)) return readIcon(source);
    if (begins(source.bytes, "BM")) return readBitmap(source);
    if (begins(source.bytes, "GIF8")) return readGif(source);
    if (begins(source.bytes, "\xFF\xD8\xFF")) return readJpeg(source);
    return false;
}

void appendLittle(std::string& file, std::size_t value, std::size_t bytes) {
    file.resize(file.size() + bytes);
    base::putLittleEndian(file, file.size() - bytes, bytes, value);
}

} // namespace

bool readPictureFile(std::string_view contents, PictureSource& source) {
    if (contents.size() > longestPictureFile) return false;
    source = {};
    source.bytes = contents;
    return readByMark(source) && isReasonable(source);
}

/// A size of 0 in the directory is one of 256 or more, which the picture itself tells.
std::string iconFile(const PictureSource& source) {
    constexpr std::int64_t largestNamed = 255;
    std::string file("\0\0\1\0\1\0"sv);
    for (const std::int64_t side : {source.width, source.height})
        appendLittle(file, side > largestNamed ? 0 : static_cast<std::size_t>(side), 1);
    appendLittle(file, 0, 2);
    appendLittle(file, 1, 2); // planes
    appendLittle(file, 32, 2);
    appendLittle(file, source.bytes.size(), 4);
    appendLittle(file, iconHeader + iconEntry, 4);
    return file.append(source.bytes);
}

} // namespace toolkit
