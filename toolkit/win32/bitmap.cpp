#include "toolkit/win32/bitmap.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>
#include <vector>

namespace toolkit::win32 {

namespace {

constexpr std::size_t channels = 4;

constexpr BYTE opaque = 255;
constexpr BYTE halfOpaque = 128;

/// The pixels of a row or column that one pixel of the scaled picture is made of.
struct Share {
    int first = 0;
    std::vector<float> weights; ///< their sum is 1
};

/// A pixel counts the less the farther it lies from the place of the new one.
std::vector<Share> shares(int from, int to) {
    const double ratio = static_cast<double>(from) / to;
    const double reach = std::max(1.0, ratio);
    std::vector<Share> result(static_cast<std::size_t>(to));
    for (int i = 0; i < to; ++i) {
        const double centre = (i + 0.5) * ratio - 0.5;
        Share& share = result[static_cast<std::size_t>(i)];
        share.first = std::clamp(static_cast<int>(std::ceil(centre - reach)), 0, from - 1);
        const int last = std::clamp(static_cast<int>(std::floor(centre + reach)), share.first, from - 1);
        double sum = 0;
        for (int j = share.first; j <= last; ++j) {
            share.weights.push_back(static_cast<float>(std::max(1e-6, reach - std::abs(j - centre))));
            sum += share.weights.back();
        }
        for (float& weight : share.weights)
            weight = static_cast<float>(weight / sum);
    }
    return result;
}

using Sums = std::array<float, channels>;

void add(Sums& sums, std::uint32_t pixel, float weight) {
    for (std::size_t c = 0; c < channels; ++c)
        sums[c] += weight * static_cast<float>((pixel >> (8 * c)) & 0xFF);
}

std::uint32_t packed(const Sums& sums) {
    std::uint32_t pixel = 0;
    for (std::size_t c = 0; c < channels; ++c)
        pixel |= static_cast<std::uint32_t>(std::clamp(std::lround(sums[c]), 0L, 255L)) << (8 * c);
    return pixel;
}

/// Scales the rows and exchanges rows and columns: twice is the whole picture.
std::vector<std::uint32_t> scaledAndTurned(std::span<const std::uint32_t> pixels, int width, int height,
                                           int to) {
    std::vector<std::uint32_t> result(static_cast<std::size_t>(to) * static_cast<std::size_t>(height));
    const std::vector<Share> columns = shares(width, to);
    for (std::size_t y = 0; y < static_cast<std::size_t>(height); ++y) {
        const auto row = pixels.subspan(y * static_cast<std::size_t>(width), static_cast<std::size_t>(width));
        for (std::size_t x = 0; x < columns.size(); ++x) {
            Sums sums{};
            for (std::size_t j = 0; j < columns[x].weights.size(); ++j)
                add(sums, row[static_cast<std::size_t>(columns[x].first) + j], columns[x].weights[j]);
            result[x * static_cast<std::size_t>(height) + y] = packed(sums);
        }
    }
    return result;
}

} // namespace

Bitmap::Bitmap(int width, int height) {
    BITMAPINFO description{};
    description.bmiHeader.biSize = sizeof description.bmiHeader;
    description.bmiHeader.biWidth = width;
    description.bmiHeader.biHeight = -height;
    description.bmiHeader.biPlanes = 1;
    description.bmiHeader.biBitCount = 32;
    void* bits = nullptr;
    handle_ = CreateDIBSection(nullptr, &description, DIB_RGB_COLORS, &bits, nullptr, 0);
    if (handle_ == nullptr) return;
    pixels_ = static_cast<std::uint32_t*>(bits);
    width_ = width;
    height_ = height;
}

Bitmap::Bitmap(Bitmap&& other) noexcept
    : handle_(std::exchange(other.handle_, nullptr)),
      pixels_(std::exchange(other.pixels_, nullptr)),
      width_(std::exchange(other.width_, 0)),
      height_(std::exchange(other.height_, 0)) {}

Bitmap& Bitmap::operator=(Bitmap&& other) noexcept {
    std::swap(handle_, other.handle_);
    std::swap(pixels_, other.pixels_);
    std::swap(width_, other.width_);
    std::swap(height_, other.height_);
    return *this;
}

Bitmap::~Bitmap() {
    if (handle_ != nullptr) DeleteObject(handle_);
}

Bitmap Bitmap::scaledTo(int width, int height) const {
    Bitmap result(width, height);
    if (result.handle_ == nullptr || handle_ == nullptr) return result;
    const auto turned = scaledAndTurned(pixels(), width_, height_, width);
    const auto whole = scaledAndTurned(turned, height_, width, height);
    std::copy(whole.begin(), whole.end(), result.pixels_);
    return result;
}

void Bitmap::draw(HDC context, int x, int y, bool enabled) const {
    if (handle_ == nullptr) return;
    const BitmapContext source(*this);
    GdiAlphaBlend(context, x, y, width_, height_, source.get(), 0, 0, width_, height_,
                  {AC_SRC_OVER, 0, enabled ? opaque : halfOpaque, AC_SRC_ALPHA});
}

} // namespace toolkit::win32
