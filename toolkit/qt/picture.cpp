#include "toolkit/qt/picture.h"

#include "base/runtime_error.h"
#include "platform/file_check.h"
#include "toolkit/picture_file.h"
#include "toolkit/qt/texts.h"

#include <QBuffer>
#include <QImageReader>
#include <QPixmap>

#include <array>
#include <map>
#include <utility>

namespace toolkit {

namespace qt {

namespace {

constexpr int allocationLimitMegabytes = 64;
constexpr std::array iconSizes = {16, 24, 32, 48, 64, 128, 256};

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

/// Qt's reader gets one picture of an icon, never all of them: it would have to decode each to tell its size,
/// and some versions do not tell where the last one ends.
QImage decode(const std::string& contents) {
    PictureSource source;
    if (!readPictureFile(contents, source)) return {};
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
    // Kept, as an icon opens its files when they are named; and left to the process, as pictures must not
    // outlive the application.
    static auto* const icons = new std::map<int, QIcon>;
    QIcon& icon = (*icons)[number];
    if (icon.isNull())
        for (const int size : iconSizes)
            icon.addFile(QStringLiteral(":/icon/%1/%2.png").arg(number).arg(size), QSize(size, size));
    return icon;
}

} // namespace qt

base::Picture loadPicture(std::string_view path) {
    std::string contents;
    platform::check(platform::readWholeFile(path, contents), path);
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
