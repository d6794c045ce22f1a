#include "toolkit/qt/resource_icon.h"

#include <QIconEngine>
#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QResource>

#include <algorithm>
#include <array>
#include <map>
#include <utility>

#include <png.h>

namespace toolkit::qt {

namespace {

constexpr std::array possibleSizes = {16, 24, 32, 48, 64, 128, 256};

QString fileOf(const QString& folder, int size) {
    return QStringLiteral("%1/%2.png").arg(folder).arg(size);
}

/// Kept, and left to the process, as pictures must not outlive the application.
const QIcon& decoded(const QString& file) {
    static auto* const icons = new std::map<QString, QIcon>;
    QIcon& icon = (*icons)[file];
    if (icon.isNull()) icon.addPixmap(QPixmap::fromImage(readPng(QResource(file).uncompressedData())));
    return icon;
}

/// Sizes are in pixels. From each it takes what Qt's own engine would: the next larger file, or else the
/// largest one.
class ResourceIcon final : public QIconEngine {
public:
    ResourceIcon(QString folder, QList<QSize> sizes) : folder_(std::move(folder)), sizes_(std::move(sizes)) {}

    QIconEngine* clone() const override { return new ResourceIcon(folder_, sizes_); }

    QList<QSize> availableSizes(QIcon::Mode /*mode*/, QIcon::State /*state*/) override { return sizes_; }

    QSize actualSize(const QSize& size, QIcon::Mode /*mode*/, QIcon::State /*state*/) override {
        const int side = std::min({size.width(), size.height(), sourceFor(size)});
        return {side, side};
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        return decoded(fileOf(folder_, sourceFor(size))).pixmap(size, 1.0, mode, state);
    }

    void paint(QPainter* painter, const QRect& place, QIcon::Mode mode, QIcon::State state) override {
        const QSize pixels = place.size() * painter->device()->devicePixelRatio();
        decoded(fileOf(folder_, sourceFor(pixels))).paint(painter, place, Qt::AlignCenter, mode, state);
    }

private:
    int sourceFor(const QSize& size) const {
        const int side = qMin(size.width(), size.height());
        const auto found = std::find_if(sizes_.begin(), sizes_.end(),
                                        [side](const QSize& known) { return known.width() >= side; });
        return (found == sizes_.end() ? sizes_.last() : *found).width();
    }

    const QString folder_;
    const QList<QSize> sizes_;
};

} // namespace

QIcon resourceIcon(const QString& folder) {
    QList<QSize> sizes;
    for (const int size : possibleSizes)
        if (QResource(fileOf(folder, size)).isValid()) sizes += QSize(size, size);
    return sizes.isEmpty() ? QIcon() : QIcon(new ResourceIcon(folder, sizes));
}

// http://www.libpng.org/pub/png/libpng-manual.txt, VI: the simplified API
QImage readPng(const QByteArray& file) {
    png_image header = {};
    header.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_memory(&header, file.constData(), static_cast<std::size_t>(file.size())) ==
        0)
        return {};
    header.format = Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? PNG_FORMAT_BGRA : PNG_FORMAT_ARGB;
    QImage image(static_cast<int>(header.width), static_cast<int>(header.height), QImage::Format_ARGB32);
    const bool read =
        !image.isNull() && png_image_finish_read(&header, nullptr, image.bits(),
                                                 static_cast<int>(image.bytesPerLine()), nullptr) != 0;
    png_image_free(&header);
    return read ? image : QImage();
}

} // namespace toolkit::qt
