#include "toolkit/picture_box.h"

#include "toolkit/qt/binding.h"
#include "toolkit/qt/captioned.h"
#include "toolkit/qt/picture_box_widget.h"

namespace toolkit::qt {

namespace {

class PictureBoxAdaptor : public WidgetAdaptor, private PictureBox::Measure {
public:
    PictureBoxAdaptor(PictureBox& box, PictureBoxWidget& widget)
        : WidgetAdaptor(box, widget), box_(box), widget_(widget) {
        box_.setMeasure(this);
        widget_.setSource(&box);
        shows(Property::Drawing, [this] { showDrawing(); });
    }

    void release() override {
        box_.setMeasure(nullptr);
        widget_.setSource(nullptr);
        WidgetAdaptor::release();
    }

private:
    PictureBox::Size textSize(const std::string& text) const override {
        return widget_.textSize(fromUtf8(text));
    }

    /// Comes once for each of some hundred rectangles, so nothing is painted here.
    void showDrawing() { widget_.update(); }

    PictureBox& box_;
    PictureBoxWidget& widget_;
};

} // namespace

std::unique_ptr<Adaptor> adaptPictureBox(Control& control, QObject* part) {
    return adaptWidget<PictureBoxAdaptor, PictureBox, PictureBoxWidget>(control, part);
}

} // namespace toolkit::qt
