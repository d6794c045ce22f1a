#include "toolkit/image.h"

#include "toolkit/win32/binding.h"
#include "toolkit/win32/painting.h"
#include "toolkit/win32/picture.h"
#include "toolkit/win32/placement.h"

#include <algorithm>
#include <cmath>

namespace toolkit::win32 {

namespace {

/// Shows a picture, scaled down to the room there is; never larger than a pixel of the picture a 96th of an
/// inch.
class ImageAdaptor : public PartAdaptor {
public:
    ImageAdaptor(Image& image, FormWindow& window, HWND part)
        : PartAdaptor(image, window, part), image_(image) {
        shows(Property::Picture, [this] { showPicture(); });
    }

    void draw(const DRAWITEMSTRUCT& item) override {
        paintBuffered(item.hDC, item.rcItem, [&](HDC context) { paint(context, item.rcItem); });
    }

private:
    void showPicture() {
        scaled_ = Bitmap(0, 0);
        redraw();
    }

    SIZE sizeIn(const RECT& room, const Bitmap& bitmap) const {
        const double width = scaled(part(), bitmap.width());
        const double height = scaled(part(), bitmap.height());
        const double ratio =
            std::min({1.0, (room.right - room.left) / width, (room.bottom - room.top) / height});
        return {std::max(1L, std::lround(width * ratio)), std::max(1L, std::lround(height * ratio))};
    }

    void paint(HDC context, const RECT& room) {
        FillRect(context, &room, backgroundOf(part(), context));
        const LoadedPicture* picture = bound() ? loaded(image_.picture()) : nullptr;
        if (picture == nullptr || picture->bitmap() == nullptr) return;
        const SIZE size = sizeIn(room, *picture->bitmap());
        if (scaled_.width() != size.cx || scaled_.height() != size.cy)
            scaled_ = picture->bitmap()->scaledTo(size.cx, size.cy);
        scaled_.draw(context, (room.left + room.right - size.cx) / 2, (room.top + room.bottom - size.cy) / 2,
                     IsWindowEnabled(part()) != FALSE);
    }

    Image& image_;
    Bitmap scaled_{0, 0}; ///< what was painted last
};

} // namespace

std::unique_ptr<Adaptor> adaptImage(Control& control, const Place& place) {
    return adaptPart<ImageAdaptor, Image>(control, place, WC_STATICW);
}

} // namespace toolkit::win32
