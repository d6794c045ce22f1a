#include "toolkit/qt/picture.h"

#include "base/little_endian.h"
#include "base/runtime_error.h"
#include "platform/file_check.h"
#include "toolkit/picture_file.h"
#include "toolkit/qt/resource_icon.h"
#include "toolkit/qt/texts.h"

#include <QBuffer>
#include <QImageReader>
#include <QPixmap>

#include <utility>

namespace toolkit {

namespace qt {

namespace {

constexpr int allocationLimitMegabytes = 64;

/// Numbers of pictures read from files begin behind those of the icon resources.
std::int32_t nextHandle() {
    static std::int32_t last = 1000;
    return ++last;
}

const char* nameOf(PictureFormat format) {
    switch (format) {
    case PictureFormat::Bitmap:
        return "bmp";
    case PictureFormat::Gif:
        return "gif";
    case PictureFormat::Icon:
        return "ico";
    case PictureFormat::Jpeg:
        return "jpeg";
    }
    return "";
}

/// A bitmap of 24 bits a pixel that is not compressed, as the stick's picture is, which the window shows when
/// it comes up; null for any other. The first use of Qt's readers loads all of them, and keeps a window
/// waiting. https://learn.microsoft.com/windows/win32/api/wingdi/ns-wingdi-bitmapinfoheader
QImage decodePlainBitmap(const PictureSource& source) {
    const std::string_view file = source.bytes;
    const auto value = [file](std::size_t at, std::size_t bytes) {
        return base::littleEndian(file, at, bytes);
    };
    constexpr std::size_t headers = 54;
    const auto width = static_cast<std::size_t>(source.width);
    const auto height = static_cast<std::size_t>(source.height);
    const bool plain = file.size() >= headers && value(14, 4) == 40 && value(22, 4) == height &&
                       value(26, 2) == 1 && value(28, 2) == 24 && value(30, 4) == 0;
    if (!plain) return {};
    const std::size_t pixels = value(10, 4);
    const std::size_t line = (width * 3 + 3) / 4 * 4;
    if (pixels < headers || pixels > file.size() || (file.size() - pixels) / line < height) return {};
    const auto* bottom = reinterpret_cast<const uchar*>(file.data()) + pixels;
    return QImage(bottom, static_cast<int>(source.width), static_cast<int>(source.height),
                  static_cast<int>(line), QImage::Format_BGR888)
        .mirrored()
        .convertToFormat(QImage::Format_RGB32);
}

/// Qt's reader gets one picture of an icon, never all of them: it would have to decode each to tell its size,
/// and some versions do not tell where the last one ends.
QImage decode(const std::string& contents) {
    PictureSource source;
    if (!readPictureFile(contents, source)) return {};
    if (source.format == PictureFormat::Bitmap)
        if (QImage image = decodePlainBitmap(source); !image.isNull()) return image;
    const std::string icon = source.format == PictureFormat::Icon ? iconFile(source) : std::string();
    const std::string& file = icon.empty() ? contents : icon;
    QByteArray bytes = QByteArray::fromRawData(file.data(), static_cast<qsizetype>(file.size()));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, nameOf(source.format));
    return reader.read();
}

} // namespace

LoadedPicture::LoadedPicture(std::int32_t handle, QImage image)
    : handle_(handle), image_(std::move(image)), icon_(QPixmap::fromImage(image_)) {}

LoadedPicture::LoadedPicture(std::int32_t handle, QIcon icon) : handle_(handle), icon_(std::move(icon)) {}

const LoadedPicture* loaded(const base::Picture& picture) {
    return dynamic_cast<const LoadedPicture*>(picture.get());
}

QIcon iconOf(int number) {
    if (!isIconResource(number)) return {};
    return resourceIcon(QStringLiteral(":/icon/%1").arg(number));
}

} // namespace qt

base::Picture loadPicture(std::string_view path) {
    std::string contents;
    platform::check(platform::readWholeFile(path, contents), path,
                    base::advice(base::ErrorNumber::InvalidPicture));
    QImageReader::setAllocationLimit(qt::allocationLimitMegabytes);
    QImage image = qt::decode(contents);
    if (image.isNull()) throw base::RuntimeError(base::ErrorNumber::InvalidPicture, std::string(path));
    return std::make_shared<qt::LoadedPicture>(qt::nextHandle(), std::move(image));
}

base::Picture iconResource(int number) {
    QIcon icon = qt::iconOf(number);
    if (icon.isNull())
        throw base::RuntimeError(base::ErrorNumber::InvalidProcedureCall, std::to_string(number));
    return std::make_shared<qt::LoadedPicture>(number, std::move(icon));
}

} // namespace toolkit
