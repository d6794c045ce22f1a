// Picture files as the window gets them.
#include "toolkit/picture.h"

#include "base/runtime_error.h"
#include "platform/program_folder.h"
#include "platform/program_path.h"
#include "tests/conformance/picture_pixels.h"
#include "toolkit/picture_file.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

using namespace conformance;
using namespace std::string_literals;
using toolkit::Color;
using toolkit::loadPicture;

namespace {

constexpr double longestDecoding = 0.3; // seconds of the processor's time
constexpr double longestOfTheProgram = 1;

constexpr Color red{255, 0, 0};
constexpr Color green{0, 255, 0};
constexpr Color blue{0, 0, 255};

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

/// A picture of one colour, as an icon has it: without the header of its file, above a mask of zeros.
std::string iconPicture(std::size_t side, Color color) {
    const std::string pixel{static_cast<char>(color.blue), static_cast<char>(color.green),
                            static_cast<char>(color.red), '\xFF'};
    std::string picture = little(40, 4) + little(side, 4) + little(2 * side, 4) + little(1, 2) +
                          little(32, 2) + std::string(24, '\0');
    for (std::size_t i = 0; i < side * side; ++i)
        picture += pixel;
    return picture + std::string((side + 31) / 32 * 4 * side, '\0');
}

struct Entry {
    std::size_t side;
    std::string picture;
};

std::string iconOf(const std::vector<Entry>& entries) {
    std::string directory = "\0\0\1\0"s + little(entries.size(), 2);
    std::string pictures;
    for (const Entry& entry : entries) {
        directory += little(entry.side, 1) + little(entry.side, 1) + little(0, 2) + little(1, 2) +
                     little(32, 2) + little(entry.picture.size(), 4) +
                     little(6 + 16 * entries.size() + pictures.size(), 4);
        pictures += entry.picture;
    }
    return directory + pictures;
}

/// Many scans over a large picture, in few bytes: what is missing of each scan, its decoder makes up.
std::string jpegOf(std::size_t side, std::size_t scans) {
    const std::string frame = "\xFF\xC2\0\x0B\x08"s + big(side, 2) + big(side, 2) + "\x01\x01\x11\0"s;
    const std::string quantization = "\xFF\xDB\0\x43\0"s + std::string(64, '\1');
    const std::string codes = "\xFF\xC4\0\x14\0"s + "\1"s + std::string(15, '\0') + "\0"s;
    const std::string acCodes = "\xFF\xC4\0\x14\x10"s + "\1"s + std::string(15, '\0') + "\0"s;
    std::string file = "\xFF\xD8" + quantization + frame + codes + acCodes + "\xFF\xDA\0\x08\1\1\0\0\0\0"s;
    for (std::size_t i = 1; i < scans; ++i)
        file += "\xFF\xDA\0\x08\1\1\0\1\x3F\0"s;
    return file + "\xFF\xD9";
}

/// Two by two pixels, red and green above blue and white.
std::string bitmapOf(std::size_t bits, bool topFirst, std::size_t gap = 0) {
    const std::string padding = bits == 24 ? "\0\0"s : "";
    const std::string alpha = bits == 24 ? "" : "\xFF"s;
    const std::string above = "\0\0\xFF"s + alpha + "\0\xFF\0"s + alpha + padding;
    const std::string below = "\xFF\0\0"s + alpha + "\xFF\xFF\xFF"s + alpha + padding;
    const std::string header = little(40, 4) + little(2, 4) + little(topFirst ? 0xFFFFFFFE : 2, 4) +
                               little(1, 2) + little(bits, 2) + std::string(24, '\0');
    const std::string pixels = topFirst ? above + below : below + above;
    return "BM" + little(54 + gap + pixels.size(), 4) + little(0, 4) + little(54 + gap, 4) + header +
           std::string(gap, '\0') + pixels;
}

class Pictures : public testing::Test {
protected:
    void TearDown() override { std::remove(file().c_str()); }

    static base::Picture load(const std::string& contents) {
        std::ofstream(file(), std::ios::binary) << contents;
        return loadPicture(platform::programPath() + "picture.tmp");
    }

    static int errorOf(const std::string& contents) {
        try {
            load(contents);
        } catch (const base::RuntimeError& error) {
            return static_cast<int>(error.number());
        }
        return 0;
    }

    static double timeFor(const std::function<void()>& work) {
        const double start = processorSeconds();
        work();
        return processorSeconds() - start;
    }

private:
    static std::string file() { return platform::programFolder() + "/picture.tmp"; }

    PictureDrawing drawing_;
};

} // namespace

TEST_F(Pictures, OfTheProgramAreDecodedAtOnce) {
    for (const char* name : {"file.bmp", "nofile.bmp", "orvantastick.ico", "sr100.bmp", "sr200ci.gif",
                             "sr300pvr.jpg", "sr400twin.gif", "sr500hd.jpg", "sr600hdci.ico",
                             "sr700hdtwin.jpg", "sr800hdpvr.bmp", "sr900uhd.jpg"}) {
        SCOPED_TRACE(name);
        std::ifstream file(std::string(ORVANTA_PICTURES) + "/" + name, std::ios::binary);
        const std::string contents((std::istreambuf_iterator<char>(file)), {});
        ASSERT_FALSE(contents.empty());
        base::Picture picture;
        EXPECT_LT(timeFor([&] { picture = load(contents); }), longestOfTheProgram);
        EXPECT_GT(sizeOf(picture).width, 15);
        EXPECT_GT(sizeOf(picture).height, 15);
    }
}

TEST_F(Pictures, OfABitmapEachPixelIsInItsPlace) {
    for (const auto& file : {bitmapOf(24, false), bitmapOf(24, true), bitmapOf(32, false),
                             bitmapOf(24, false, 10), bitmapOf(24, false) + "more"}) {
        const base::Picture picture = load(file);
        EXPECT_EQ(sizeOf(picture).width, 2);
        EXPECT_EQ(sizeOf(picture).height, 2);
        EXPECT_EQ(pixelOf(picture, 0, 0), red);
        EXPECT_EQ(pixelOf(picture, 1, 0), green);
        EXPECT_EQ(pixelOf(picture, 0, 1), blue);
        EXPECT_EQ(pixelOf(picture, 1, 1), (Color{255, 255, 255}));
    }
}

TEST_F(Pictures, OfAnIconTheLargestIsShownWhereverItStands) {
    const Entry small{16, iconPicture(16, red)};
    const Entry middle{32, iconPicture(32, green)};
    const Entry large{48, iconPicture(48, blue)};
    for (const auto& entries : {std::vector{small, middle, large}, std::vector{large, small, middle},
                                std::vector{small, large, middle}, std::vector{large}}) {
        const base::Picture picture = load(iconOf(entries));
        EXPECT_EQ(sizeOf(picture).width, 48);
        EXPECT_EQ(sizeOf(picture).height, 48);
        EXPECT_EQ(pixelOf(picture, 24, 24), blue);
    }
}

TEST_F(Pictures, AnIconOfManyPicturesIsNone) {
    const Entry one{16, iconPicture(16, red)};
    EXPECT_EQ(errorOf(iconOf(std::vector<Entry>(toolkit::mostIconPictures, one))), 0);
    EXPECT_EQ(errorOf(iconOf(std::vector<Entry>(toolkit::mostIconPictures + 1, one))), 481);
    EXPECT_LT(timeFor([&] { load(iconOf(std::vector<Entry>(toolkit::mostIconPictures, one))); }),
              longestDecoding);
}

TEST_F(Pictures, TheLargestOnesAreDecodedInTime) {
    constexpr std::size_t side = 2048;
    const std::string bitmap = "BM" + little(0, 8) + little(54, 4) + little(40, 4) + little(side, 4) +
                               little(side, 4) + little(1, 2) + little(24, 2) + std::string(24, '\0') +
                               std::string(side * side * 3, '\x55');
    EXPECT_LT(timeFor([&] { EXPECT_EQ(errorOf(bitmap), 0); }), longestDecoding);
    EXPECT_LT(timeFor([&] { errorOf(jpegOf(side, 8)); }), longestDecoding);
    EXPECT_LT(timeFor([&] { EXPECT_EQ(errorOf(jpegOf(side, 2000)), 481); }), longestDecoding);
}
