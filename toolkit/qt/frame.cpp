#include "toolkit/frame.h"

#include "toolkit/qt/binding.h"
#include "toolkit/qt/captioned.h"

#include <QGroupBox>

namespace toolkit::qt {

namespace {

class FrameAdaptor : public WidgetAdaptor {
public:
    FrameAdaptor(Frame& frame, QGroupBox& widget)
        : WidgetAdaptor(frame, widget), frame_(frame), widget_(widget) {
        shows(Property::Caption, [this] { widget_.setTitle(withMnemonic(fromUtf8(frame_.caption()), {})); });
    }

protected:
    void adoptDesign() override {
        WidgetAdaptor::adoptDesign();
        if (frame_.caption().empty()) frame_.setCaption(toUtf8(widget_.title()));
    }

private:
    Frame& frame_;
    QGroupBox& widget_;
};

} // namespace

std::unique_ptr<Adaptor> adaptFrame(Control& control, QObject* part) {
    return adaptWidget<FrameAdaptor, Frame, QGroupBox>(control, part);
}

} // namespace toolkit::qt
