// What is read out of a picture file before it is decoded.

#include "toolkit/picture_file.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace std::string_literals;
using toolkit::PictureFormat;
using toolkit::PictureSource;

namespace {

std::string little(std::size_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i)
        text += static_cast<char>(value >> (8 * i) & 0xFF);
    return text;
}

std::string big(std::size_t value, int bytes) {
    const std::string reversed = little(value, bytes);
    return {reversed.rbegin(), reversed.rend()};
}

std::string bitmapHeader(std::size_t width, std::size_t height) {
    return little(40, 4) + little(width, 4) + little(height, 4);
}

std::string bitmap(std::size_t width, std::size_t height) {
    return "BM" + std::string(12, '\0') + bitmapHeader(width, height);
}

std::string png(std::size_t width, std::size_t height) {
    return "\x89PNG\r\n\x1a\n" + std::string(8, 'x') + big(width, 4) + big(height, 4);
}

/// Behind a segment of 16 bytes, as every camera writes one.
std::string jpeg(std::size_t width, std::size_t height, std::size_t scans) {
    std::string file = "\xFF\xD8\xFF\xE0\0\x10"s + std::string(14, 'x') + "\xFF\xC2\0\x11\x08"s +
                       big(height, 2) + big(width, 2) + std::string(10, '\0');
    for (std::size_t i = 0; i < scans; ++i)
        file += "\xFF\xDA\0\x08"s + std::string(8, '\x11');
    return file;
}

struct Entry {
    std::size_t width;
    std::size_t bits;
    std::string picture;
};

std::string icon(const std::vector<Entry>& entries) {
    std::string directory = "\0\0\1\0"s + little(entries.size(), 2);
    std::string pictures;
    const std::size_t first = 6 + 16 * entries.size();
    for (const Entry& entry : entries) {
        directory += little(entry.width, 1) + little(entry.width, 1) + little(0, 2) + little(1, 2) +
                     little(entry.bits, 2) + little(entry.picture.size(), 4) +
                     little(first + pictures.size(), 4);
        pictures += entry.picture;
    }
    return directory + pictures;
}

bool isPicture(const std::string& file) {
    PictureSource source;
    return readPictureFile(file, source);
}

/// The picture of an icon that is decoded; empty for none.
std::string chosen(const std::vector<Entry>& entries) {
    const std::string file = icon(entries);
    PictureSource source;
    return readPictureFile(file, source) ? std::string(source.bytes) : std::string();
}

} // namespace

TEST(PictureFile, TellsItsFormatAndSize) {
    const struct {
        std::string file;
        PictureFormat format;
    } cases[] = {
        {bitmap(300, 20), PictureFormat::Bitmap},
        {"BM" + std::string(12, '\0') + little(12, 4) + little(300, 2) + little(20, 2),
         PictureFormat::Bitmap},
        {bitmap(300, std::size_t{0} - 20), PictureFormat::Bitmap},
        {"GIF89a" + little(300, 2) + little(20, 2), PictureFormat::Gif},
        {jpeg(300, 20, 1), PictureFormat::Jpeg},
        {icon({{0, 32, png(300, 20)}}), PictureFormat::Icon},
        {icon({{0, 32, bitmapHeader(300, 40)}}), PictureFormat::Icon},
    };
    for (const auto& [file, format] : cases) {
        PictureSource source;
        ASSERT_TRUE(readPictureFile(file, source)) << static_cast<int>(format);
        EXPECT_EQ(source.format, format);
        EXPECT_EQ(source.width, 300);
        EXPECT_EQ(source.height, 20);
    }
}

TEST(PictureFile, IsWholeButForAnIcon) {
    const std::string file = bitmap(3, 4);
    PictureSource source;
    ASSERT_TRUE(readPictureFile(file, source));
    EXPECT_EQ(source.bytes, file);
}

TEST(PictureFile, OtherFilesAreNone) {
    for (const std::string& file : {""s, "B"s, "BM"s, "GIF8"s, "\xFF\xD8\xFF"s, "\0\0\1\0"s, "\0\0\1\0\1\0"s,
                                    "\0\0\2\0\1\0"s, png(3, 4), "<svg/>"s, bitmap(0, 4), bitmap(3, 0),
                                    bitmap(std::size_t{0} - 3, 4), "\xFF\xD8"s + std::string(99, '\xFF')})
        EXPECT_FALSE(isPicture(file)) << file;
}

TEST(IconFile, IsItsLargestPictureInTheMostColours) {
    const Entry small{16, 32, bitmapHeader(16, 32) + "small"};
    const Entry few{48, 4, bitmapHeader(48, 96) + "few"};
    const Entry many{48, 32, bitmapHeader(48, 96) + "many"};
    const Entry large{0, 32, png(256, 256) + "large"};
    EXPECT_EQ(chosen({small}), small.picture);
    EXPECT_EQ(chosen({small, large, many}), large.picture);
    EXPECT_EQ(chosen({large, many}), large.picture);
    EXPECT_EQ(chosen({many, few, small}), many.picture);
    EXPECT_EQ(chosen({few, many, small}), many.picture);
    EXPECT_EQ(chosen({}), "");
}

TEST(IconFile, PicturesOutsideOfTheFileDoNotCount) {
    const Entry small{16, 32, bitmapHeader(16, 32)};
    const std::string whole = icon({small, {48, 32, bitmapHeader(48, 96)}});
    const std::string cut = whole.substr(0, whole.size() - 1);
    PictureSource source;
    ASSERT_TRUE(readPictureFile(cut, source));
    EXPECT_EQ(source.bytes, small.picture);
    EXPECT_FALSE(isPicture("\0\0\1\0\x40\0"s + std::string(400, '\xFF')));
    EXPECT_FALSE(isPicture(whole.substr(0, 21))) << "cut in the directory";
}

TEST(IconFile, OnePictureMakesAFile) {
    const std::string file = icon({{16, 8, bitmapHeader(16, 32)}, {0, 32, png(300, 20)}});
    PictureSource source;
    ASSERT_TRUE(readPictureFile(file, source));
    const std::string alone = iconFile(source);
    EXPECT_EQ(alone.size(), 22 + source.bytes.size());
    EXPECT_EQ(chosen({{0, 32, png(300, 20)}}), source.bytes);
    PictureSource again;
    ASSERT_TRUE(readPictureFile(alone, again));
    EXPECT_EQ(again.bytes, source.bytes);
    EXPECT_EQ(again.width, 300);
}

TEST(PictureLimits, Pixels) {
    EXPECT_TRUE(isPicture(bitmap(2048, 2048)));
    EXPECT_FALSE(isPicture(bitmap(2049, 2048)));
    EXPECT_FALSE(isPicture(bitmap(0x7FFFFFFF, 0x7FFFFFFF)));
    EXPECT_TRUE(isPicture("GIF89a" + little(64, 2) + little(0xFFFF, 2)));
    EXPECT_FALSE(isPicture("GIF89a" + little(65, 2) + little(0xFFFF, 2)));
    EXPECT_TRUE(isPicture(icon({{0, 32, png(2048, 2048)}})));
    EXPECT_FALSE(isPicture(icon({{0, 32, png(2048, 2049)}})));
    EXPECT_FALSE(isPicture(icon({{16, 32, bitmapHeader(60000, 60000)}}))) << "whatever the directory says";
    EXPECT_FALSE(isPicture(icon({{0, 32, png(0xFFFFFFFF, 0xFFFFFFFF)}})));
}

TEST(PictureLimits, ScansOfAJpegFile) {
    EXPECT_TRUE(isPicture(jpeg(2048, 2048, 8)));
    EXPECT_FALSE(isPicture(jpeg(2048, 2048, 9)));
    EXPECT_TRUE(isPicture(jpeg(300, 200, 500)));
    EXPECT_FALSE(isPicture(jpeg(300, 200, 600)));
}

TEST(PictureLimits, PicturesOfAnIcon) {
    const Entry one{16, 32, bitmapHeader(16, 32)};
    EXPECT_TRUE(isPicture(icon(std::vector<Entry>(100, one))));
    EXPECT_FALSE(isPicture(icon(std::vector<Entry>(101, one))));
}

TEST(PictureLimits, LengthOfAFile) {
    std::string file = bitmap(3, 4);
    file.resize(toolkit::longestPictureFile);
    EXPECT_TRUE(isPicture(file));
    file += '\0';
    EXPECT_FALSE(isPicture(file));
}
