#include "toolkit/win32/picture_file.h"

#include "toolkit/picture_file.h"

#include <windows.h>

#include <objbase.h>
#include <ocidl.h>
#include <olectl.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace toolkit::win32 {

namespace {

/// What was decoded may differ from what the file says.
bool isReasonable(LONG width, LONG height) {
    return width > 0 && height > 0 && std::int64_t{width} * height <= mostPixels;
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
    if (!isReasonable(description.bmWidth, description.bmHeight)) return {};
    return drawnOnBoth(description.bmWidth, description.bmHeight, [&](HDC context) {
        OLE_XSIZE_HIMETRIC width = 0;
        OLE_YSIZE_HIMETRIC height = 0;
        picture->get_Width(&width);
        picture->get_Height(&height);
        return SUCCEEDED(picture->Render(context, 0, 0, description.bmWidth, description.bmHeight, 0, height,
                                         width, -height, nullptr));
    });
}

std::optional<Bitmap> decodeIcon(const PictureSource& source) {
    constexpr DWORD iconVersion = 0x00030000;
    std::string image(source.bytes);
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
    if (isReasonable(description.bmWidth, height)) bitmap = pixelsOf(icon, description.bmWidth, height);
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
    PictureSource source;
    if (!readPictureFile(contents, source)) return {};
    return source.format == PictureFormat::Icon ? decodeIcon(source) : decodeBitmap(contents);
}

} // namespace toolkit::win32
