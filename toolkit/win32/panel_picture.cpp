#include "toolkit/win32/panel_picture.h"

#include "toolkit/win32/picture.h"
#include "toolkit/win32/picture_file.h"
#include "toolkit/win32/texts.h"

namespace toolkit::win32 {

namespace {

Bitmap designPicture(const std::string& name, int size) {
    auto* const icon = static_cast<HICON>(LoadImageW(GetModuleHandleW(nullptr), fromUtf8(name).c_str(),
                                                     IMAGE_ICON, size, size, LR_DEFAULTCOLOR));
    if (icon == nullptr) return {0, 0};
    Bitmap picture = pixelsOf(icon, size, size);
    DestroyIcon(icon);
    return picture;
}

} // namespace

void PanelPicture::fetch(const StatusPanel& panel, int size) {
    if (size_ == size && source_ == panel.picture()) return;
    size_ = size;
    source_ = panel.picture();
    const LoadedPicture* own = loaded(source_);
    if (own == nullptr)
        scaled_ = designPicture(panel.name(), size);
    else if (own->bitmap() != nullptr)
        scaled_ = own->bitmap()->scaledTo(size, size);
    else
        scaled_ = pixelsOf(own->icon(size), size, size);
}

bool PanelPicture::draw(HDC context, const StatusPanel& panel, POINT place, int size) {
    fetch(panel, size);
    if (scaled_.handle() == nullptr) return false;
    scaled_.draw(context, place.x, place.y, panel.enabled());
    return true;
}

} // namespace toolkit::win32
