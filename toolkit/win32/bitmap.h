#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <span>

namespace toolkit::win32 {

/// Pixels of 32 bits, from the top on: blue, green and red, each multiplied by alpha, then alpha.
class Bitmap {
public:
    /// All transparent. Empty, with no handle, when the system has no memory for it.
    Bitmap(int width, int height);
    Bitmap(Bitmap&& other) noexcept;
    Bitmap(const Bitmap&) = delete;
    Bitmap& operator=(const Bitmap&) = delete;
    Bitmap& operator=(Bitmap&& other) noexcept;
    ~Bitmap();

    HBITMAP handle() const noexcept { return handle_; }
    int width() const noexcept { return width_; }
    int height() const noexcept { return height_; }
    std::span<std::uint32_t> pixels() const noexcept {
        return {pixels_, static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_)};
    }

    /// The picture in another size, smoothly.
    Bitmap scaledTo(int width, int height) const;

    /// Half transparent when what it belongs to is disabled.
    void draw(HDC context, int x, int y, bool enabled) const;

private:
    HBITMAP handle_ = nullptr;
    std::uint32_t* pixels_ = nullptr;
    int width_ = 0;
    int height_ = 0;
};

/// A device context that draws into a bitmap as long as it lives.
class BitmapContext {
public:
    explicit BitmapContext(const Bitmap& bitmap)
        : context_(CreateCompatibleDC(nullptr)), before_(SelectObject(context_, bitmap.handle())) {}
    BitmapContext(const BitmapContext&) = delete;
    BitmapContext& operator=(const BitmapContext&) = delete;
    ~BitmapContext() {
        GdiFlush();
        SelectObject(context_, before_);
        DeleteDC(context_);
    }

    HDC get() const noexcept { return context_; }

private:
    HDC context_;
    HGDIOBJ before_;
};

} // namespace toolkit::win32
