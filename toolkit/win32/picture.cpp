#include "toolkit/win32/picture.h"

#include "base/runtime_error.h"
#include "platform/file_check.h"
#include "toolkit/win32/picture_file.h"

#include <map>
#include <utility>

namespace toolkit {

namespace win32 {

namespace {

/// Handles of windows and pictures have 32 significant bits:
/// https://learn.microsoft.com/windows/win32/winprog64/interprocess-communication
std::int32_t number(const void* handle) {
    return static_cast<std::int32_t>(reinterpret_cast<std::intptr_t>(handle));
}

HICON iconOfSize(int resource, int size) {
    static std::map<std::pair<int, int>, HICON> icons;
    HICON& icon = icons[{resource, size}];
    if (icon == nullptr)
        icon = static_cast<HICON>(LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(resource),
                                             IMAGE_ICON, size, size, LR_DEFAULTCOLOR));
    return icon;
}

} // namespace

std::int32_t LoadedPicture::handle() const noexcept {
    return bitmap_ ? number(bitmap_->handle()) : number(icon(GetSystemMetrics(SM_CXSMICON)));
}

HICON LoadedPicture::icon(int size) const {
    return number_ == 0 ? nullptr : iconOfSize(number_, size);
}

const LoadedPicture* loaded(const base::Picture& picture) {
    return dynamic_cast<const LoadedPicture*>(picture.get());
}

} // namespace win32

base::Picture loadPicture(std::string_view path) {
    std::string contents;
    platform::check(platform::readWholeFile(path, contents), path,
                    base::advice(base::ErrorNumber::InvalidPicture));
    std::optional<win32::Bitmap> bitmap = win32::decodePicture(contents);
    if (!bitmap) throw base::RuntimeError(base::ErrorNumber::InvalidPicture, std::string(path));
    return std::make_shared<win32::LoadedPicture>(std::move(*bitmap));
}

base::Picture iconResource(int number) {
    if (!isIconResource(number))
        throw base::RuntimeError(base::ErrorNumber::InvalidProcedureCall, std::to_string(number));
    return std::make_shared<win32::LoadedPicture>(number);
}

} // namespace toolkit
