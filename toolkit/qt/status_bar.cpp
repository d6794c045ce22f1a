#include "toolkit/status_bar.h"

#include "toolkit/qt/binding.h"
#include "toolkit/qt/captioned.h"
#include "toolkit/qt/picture.h"
#include "toolkit/qt/status_panel_widget.h"
#include "toolkit/shown_text.h"

namespace toolkit::qt {

namespace {

class StatusPanelAdaptor : public WidgetAdaptor {
public:
    StatusPanelAdaptor(StatusPanel& panel, StatusPanelWidget& widget)
        : WidgetAdaptor(panel, widget), panel_(panel), widget_(widget) {
        showsChanges({Property::Text}, [this] {
            widget_.setHead(panel_.head());
            widget_.textChanged();
        });
        // The layout's picture stays until the panel has one of its own.
        const auto hasOne = [this] { return panel_.picture() != nullptr; };
        const auto showPicture = [this] { this->showPicture(); };
        shows(Property::Picture, showPicture, hasOne);
    }

    void release() override {
        widget_.setTextSource(nullptr);
        WidgetAdaptor::release();
    }

protected:
    void adoptDesign() override {
        WidgetAdaptor::adoptDesign();
        if (panel_.text().empty()) panel_.setText(toUtf8(widget_.text()));
        widget_.setTextSource([this] { return fromUtf8(shownText(panel_.text())); });
    }

private:
    void showPicture() {
        const LoadedPicture* picture = loaded(panel_.picture());
        widget_.setPicture(picture == nullptr ? QIcon() : picture->icon());
    }

    StatusPanel& panel_;
    StatusPanelWidget& widget_;
};

} // namespace

std::unique_ptr<Adaptor> adaptStatusPanel(Control& control, QObject* part) {
    return adaptWidget<StatusPanelAdaptor, StatusPanel, StatusPanelWidget>(control, part);
}

/// The panels are controls of the form themselves.
std::unique_ptr<Adaptor> adaptStatusBar(Control& control, QObject* part) {
    return adaptWidget<WidgetAdaptor, StatusBar, QWidget>(control, part);
}

} // namespace toolkit::qt
