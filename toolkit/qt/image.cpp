#include "toolkit/image.h"

#include "toolkit/qt/binding.h"
#include "toolkit/qt/captioned.h"
#include "toolkit/qt/image_widget.h"
#include "toolkit/qt/picture.h"

namespace toolkit::qt {

namespace {

class ImageAdaptor : public WidgetAdaptor {
public:
    ImageAdaptor(Image& image, ImageWidget& widget)
        : WidgetAdaptor(image, widget), image_(image), widget_(widget) {
        shows(Property::Picture, [this] { showPicture(); });
    }

private:
    void showPicture() {
        const LoadedPicture* picture = loaded(image_.picture());
        widget_.setImage(picture == nullptr ? QImage() : picture->image());
    }

    Image& image_;
    ImageWidget& widget_;
};

} // namespace

std::unique_ptr<Adaptor> adaptImage(Control& control, QObject* part) {
    return adaptWidget<ImageAdaptor, Image, ImageWidget>(control, part);
}

} // namespace toolkit::qt
