// Picture files: the system decodes them, `OleLoadPicture` and `CreateIconFromResourceEx`. What a file says
// of itself is looked at first: the size of a picture that nobody can show must not be asked for.
#include "toolkit/win32/picture.h"

#include <windows.h>

#include <objbase.h>
#include <ocidl.h>
#include <olectl.h>

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

namespace toolkit::win32 {

namespace {

/// Four bytes each.
constexpr std::int64_t mostPixels = std::int64_t{16} * 1024 * 1024;

struct Size {
    std::int64_t width = 0;
    std::int64_t height = 0;
};

unsigned byteAt(std::string_view data, std::size_t at) {
    return at < data.size() ? static_cast<unsigned char>(data[at]) : 0;
}
unsigned little16(std::string_view data, std::size_t at) {
    return byteAt(data, at) | byteAt(data, at + 1) << 8;
}
unsigned big16(std::string_view data, std::size_t at) {
    return byteAt(data, at) << 8 | byteAt(data, at + 1);
}
std::uint32_t little32(std::string_view data, std::size_t at) {
    return little16(data, at) | static_cast<std::uint32_t>(little16(data, at + 2)) << 16;
}

bool begins(std::string_view data, std::string_view mark) {
    return data.substr(0, mark.size()) == mark;
}

/// A bitmap from the top on has a negative height.
Size bitmapSize(std::string_view data) {
    constexpr std::uint32_t oldHeader = 12;
    if (little32(data, 14) == oldHeader) return {little16(data, 18), little16(data, 20)};
    const auto height = static_cast<std::int32_t>(little32(data, 22));
    return {static_cast<std::int32_t>(little32(data, 18)), height < 0 ? -std::int64_t{height} : height};
}

/// It stands in the frame header, behind segments of known length.
/// https://www.w3.org/Graphics/JPEG/itu-t81.pdf, B.2.2
Size jpegSize(std::string_view data) {
    std::size_t at = 2;
    while (at + 9 < data.size() && byteAt(data, at) == 0xFF) {
        const unsigned marker = byteAt(data, at + 1);
        const bool frame =
            marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
        if (frame) return {big16(data, at + 7), big16(data, at + 5)};
        if (marker == 0xFF)
            ++at; // a filling byte
        else
            at += 2 + big16(data, at + 2);
    }
    return {};
}

bool isReasonable(Size size) {
    return size.width > 0 && size.height > 0 && size.width <= mostPixels && size.height <= mostPixels &&
           size.width * size.height <= mostPixels;
}

template <class Interface>
class ComPointer {
public:
    ComPointer() = default;
    ComPointer(const ComPointer&) = delete;
    ComPointer& operator=(const ComPointer&) = delete;
    ~ComPointer() {
        if (pointer_ != nullptr) pointer_->Release();
    }

    Interface* operator->() const { return pointer_; }
    Interface* get() const { return pointer_; }
    Interface** out() { return &pointer_; }

private:
    Interface* pointer_ = nullptr;
};

bool openStream(const std::string& contents, ComPointer<IStream>& stream) {
    HGLOBAL const memory = GlobalAlloc(GMEM_MOVEABLE, contents.size());
    if (memory == nullptr) return false;
    if (void* const place = GlobalLock(memory)) {
        std::memcpy(place, contents.data(), contents.size());
        GlobalUnlock(memory);
    }
    if (SUCCEEDED(CreateStreamOnHGlobal(memory, TRUE, stream.out()))) return true;
    GlobalFree(memory);
    return false;
}

/// What is drawn on black and on white tells how much of the ground shows through.
template <typename Draw>
std::optional<Bitmap> drawnOnBoth(int width, int height, Draw draw) {
    Bitmap black(width, height);
    Bitmap white(width, height);
    if (black.handle() == nullptr || white.handle() == nullptr) return {};
    std::fill(white.pixels().begin(), white.pixels().end(), 0xFFFFFFu);
    for (const Bitmap* ground : {&black, &white})
        if (!draw(BitmapContext(*ground).get())) return {};
    std::transform(black.pixels().begin(), black.pixels().end(), white.pixels().begin(),
                   black.pixels().begin(), [](std::uint32_t onBlack, std::uint32_t onWhite) {
                       const std::uint32_t through =
                           ((onWhite >> 8) & 0xFF) - std::min((onBlack >> 8) & 0xFF, (onWhite >> 8) & 0xFF);
                       return (onBlack & 0xFFFFFF) | (255 - through) << 24;
                   });
    return black;
}

std::optional<Bitmap> decodeBitmap(const std::string& contents) {
    ComPointer<IStream> stream;
    ComPointer<IPicture> picture;
    if (!openStream(contents, stream)) return {};
    const HRESULT result = OleLoadPicture(stream.get(), static_cast<LONG>(contents.size()), FALSE,
                                          IID_IPicture, reinterpret_cast<void**>(picture.out()));
    if (FAILED(result) || picture.get() == nullptr) return {};
    OLE_HANDLE handle = 0;
    BITMAP description{};
    SHORT type = PICTYPE_UNINITIALIZED;
    picture->get_Type(&type);
    picture->get_Handle(&handle);
    auto* const native = reinterpret_cast<HBITMAP>(static_cast<LONG_PTR>(static_cast<LONG>(handle)));
    if (type != PICTYPE_BITMAP || GetObjectW(native, sizeof description, &description) == 0) return {};
    if (!isReasonable({description.bmWidth, description.bmHeight})) return {};
    return drawnOnBoth(description.bmWidth, description.bmHeight, [&](HDC context) {
        OLE_XSIZE_HIMETRIC width = 0;
        OLE_YSIZE_HIMETRIC height = 0;
        picture->get_Width(&width);
        picture->get_Height(&height);
        return SUCCEEDED(picture->Render(context, 0, 0, description.bmWidth, description.bmHeight, 0, height,
                                         width, -height, nullptr));
    });
}

/// An icon file holds one picture in several sizes: the largest is the one to scale down.
std::string_view largestIcon(std::string_view data) {
    constexpr std::size_t header = 6;
    constexpr std::size_t entry = 16;
    std::string_view best;
    unsigned bestWidth = 0;
    const std::size_t count = std::min<std::size_t>(little16(data, 4), (data.size() - header) / entry);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t at = header + i * entry;
        const unsigned width = byteAt(data, at) == 0 ? 256 : byteAt(data, at);
        const std::size_t length = little32(data, at + 8);
        const std::size_t offset = little32(data, at + 12);
        if (width <= bestWidth || offset > data.size() || length > data.size() - offset) continue;
        bestWidth = width;
        best = data.substr(offset, length);
    }
    return best;
}

std::optional<Bitmap> decodeIcon(const std::string& contents) {
    constexpr DWORD iconVersion = 0x00030000;
    std::string image(contents.size() < 6 ? std::string_view() : largestIcon(contents));
    if (image.empty()) return {};
    HICON const icon = CreateIconFromResourceEx(reinterpret_cast<PBYTE>(image.data()),
                                                static_cast<DWORD>(image.size()), TRUE, iconVersion, 0, 0, 0);
    if (icon == nullptr) return {};
    ICONINFO parts{};
    BITMAP description{};
    GetIconInfo(icon, &parts);
    // Without colours the mask holds two pictures, one above the other.
    GetObjectW(parts.hbmColor != nullptr ? parts.hbmColor : parts.hbmMask, sizeof description, &description);
    const int height = parts.hbmColor != nullptr ? description.bmHeight : description.bmHeight / 2;
    DeleteObject(parts.hbmColor);
    DeleteObject(parts.hbmMask);
    std::optional<Bitmap> bitmap;
    if (isReasonable({description.bmWidth, height})) bitmap = pixelsOf(icon, description.bmWidth, height);
    DestroyIcon(icon);
    if (bitmap && bitmap->handle() == nullptr) bitmap.reset();
    return bitmap;
}

} // namespace

Bitmap pixelsOf(HICON icon, int width, int height) {
    std::optional<Bitmap> bitmap = drawnOnBoth(width, height, [&](HDC context) {
        return DrawIconEx(context, 0, 0, icon, width, height, 0, nullptr, DI_NORMAL) != FALSE;
    });
    return bitmap ? std::move(*bitmap) : Bitmap(0, 0);
}

std::optional<Bitmap> decodePicture(const std::string& contents) {
    using namespace std::string_view_literals;
    if (begins(contents, "\0\0\1\0"sv)) return decodeIcon(contents);
    Size size;
    if (begins(contents, "BM")) size = bitmapSize(contents);
    if (begins(contents, "GIF8")) size = {little16(contents, 6), little16(contents, 8)};
    if (begins(contents, "\xFF\xD8\xFF")) size = jpegSize(contents);
    return isReasonable(size) ? decodeBitmap(contents) : std::nullopt;
}

} // namespace toolkit::win32
