// Icons of the program's resources, against what Qt makes of the same files.
#include "toolkit/qt/resource_icon.h"

#include <gtest/gtest.h>

#include <QDirIterator>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>

#include <algorithm>
#include <array>
#include <tuple>

using namespace toolkit::qt;

static void loadResources() {
    Q_INIT_RESOURCE(toolkit);
}

namespace {

class ResourceIcon : public testing::Test {
protected:
    static void SetUpTestSuite() {
        loadResources();
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }

    static QStringList files(const QString& folder) {
        QStringList found;
        for (QDirIterator each(folder, {QStringLiteral("*.png")}, QDir::Files, QDirIterator::Subdirectories);
             each.hasNext();)
            found += each.next();
        return found;
    }

    /// As a scene of that ratio of pixels shows it.
    static QImage drawn(const QIcon& icon, int side, qreal ratio, QIcon::Mode mode) {
        QImage image(QSize(64, 64) * ratio, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(ratio);
        image.fill(Qt::white);
        QPainter painter(&image);
        icon.paint(&painter, 0, 0, side, side, Qt::AlignCenter, mode);
        return image;
    }

    int count_ = 1;
    std::array<char, 5> name_{"test"};
    std::array<char*, 2> arguments_ = {name_.data(), nullptr};
    QGuiApplication application_{count_, arguments_.data()};
};

} // namespace

TEST_F(ResourceIcon, PixelsAreThoseOfTheFile) {
    const QStringList all = files(QStringLiteral(":/icon")) + files(QStringLiteral(":/panel"));
    EXPECT_EQ(all.size(), 16);
    for (const QString& name : all) {
        QFile file(name);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_EQ(readPng(file.readAll()), QImage(name).convertToFormat(QImage::Format_ARGB32))
            << name.toStdString();
    }
}

TEST_F(ResourceIcon, WhatIsNoPngIsNoPicture) {
    QFile file(QStringLiteral(":/icon/103/16.png"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray whole = file.readAll();
    EXPECT_TRUE(readPng({}).isNull());
    EXPECT_TRUE(readPng("no picture at all").isNull());
    EXPECT_TRUE(readPng(whole.first(whole.size() / 2)).isNull());
    EXPECT_TRUE(resourceIcon(QStringLiteral(":/icon/1")).isNull());
}

/// Not as Qt draws all of the files together: some of its versions take a smaller one and stretch it.
TEST_F(ResourceIcon, IsDrawnFromTheNextLargerFile) {
    const QString folder = QStringLiteral(":/icon/103");
    const std::array sizes = {16, 24, 32, 48, 64, 128, 256};
    const auto fileFor = [&](int pixels) {
        const auto* const found = std::lower_bound(sizes.begin(), sizes.end(), pixels);
        return QImage(QStringLiteral("%1/%2.png").arg(folder).arg(found == sizes.end() ? 256 : *found));
    };
    const QIcon icon = resourceIcon(folder);
    EXPECT_FALSE(icon.isNull());
    EXPECT_EQ(icon.availableSizes().size(), static_cast<qsizetype>(sizes.size()));
    for (const int side : {12, 16, 20, 24, 32, 40, 64, 200, 256, 300})
        for (const auto mode : {QIcon::Normal, QIcon::Disabled}) {
            SCOPED_TRACE(side);
            const QIcon file(QPixmap::fromImage(fileFor(side)));
            EXPECT_EQ(icon.actualSize(QSize(side, side)), file.actualSize(QSize(side, side)));
            EXPECT_EQ(icon.pixmap(side, mode).toImage(), file.pixmap(side, mode).toImage());
            for (const qreal ratio : {1.0, 1.5, 2.0}) {
                const QIcon chosen(QPixmap::fromImage(fileFor(qRound(side * ratio))));
                EXPECT_EQ(drawn(icon, side, ratio, mode), drawn(chosen, side, ratio, mode)) << ratio;
            }
        }
}

TEST_F(ResourceIcon, HasTheFilesPixelsWhereItsSizeIsOneOfThem) {
    const QIcon icon = resourceIcon(QStringLiteral(":/icon/103"));
    for (const auto& [side, ratio, size] : {std::tuple(16, 1.0, 16), std::tuple(16, 1.5, 24),
                                            std::tuple(16, 2.0, 32), std::tuple(32, 1.5, 48)}) {
        QImage painted = drawn(icon, side, ratio, QIcon::Normal);
        painted.setDevicePixelRatio(1);
        QImage expected(painted.size(), painted.format());
        expected.fill(Qt::white);
        QPainter(&expected).drawImage(0, 0, QImage(QStringLiteral(":/icon/103/%1.png").arg(size)));
        EXPECT_EQ(painted, expected) << size;
    }
}
