#include "toolkit/label.h"

#include "toolkit/win32/binding.h"
#include "toolkit/win32/texts.h"

namespace toolkit::win32 {

namespace {

class FrameAdaptor : public PartAdaptor {
public:
    FrameAdaptor(Frame& frame, FormWindow& window, HWND part)
        : PartAdaptor(frame, window, part), frame_(frame) {}

protected:
    void adoptDesign() override {
        PartAdaptor::adoptDesign();
        if (frame_.caption().empty()) frame_.setCaption(toUtf8(withoutMnemonic(windowText(part()))));
    }

    void showAll() override {
        PartAdaptor::showAll();
        showCaption();
    }

    void update(Property property) override {
        if (property == Property::Caption)
            showCaption();
        else
            PartAdaptor::update(property);
    }

private:
    void showCaption() { setWindowText(part(), withMnemonic(fromUtf8(frame_.caption()), 0)); }

    Frame& frame_;
};

} // namespace

std::unique_ptr<Adaptor> adaptFrame(Control& control, const Place& place) {
    return adaptPart<FrameAdaptor, Frame>(control, place, WC_BUTTONW);
}

} // namespace toolkit::win32
