// Panels and pictures.

#include "main_window.h"
#include "recording_view.h"

#include <vector>

using namespace toolkit;
using unit::RecordingView;

TEST(StatusBarPanels, AreNumberedFromOne) {
    StatusBar bar("StatusBar1");
    EXPECT_EQ(bar.panel(1).name(), "StatusBar1_1");
    EXPECT_EQ(bar.panel(2).name(), "StatusBar1_2");
    EXPECT_THROW(bar.panel(3), std::out_of_range);
    RecordingView view;
    bar.panel(2).attach(&view);
    bar.panel(2).setText("a");
    bar.panel(2).setText("a");
    bar.panel(2).setPicture(iconResource(programIcon));
    EXPECT_EQ(view.shown, (std::vector{Property::Text, Property::Picture}));
}

TEST(StatusBarPanels, ATextGrowsUntilItIsAnother) {
    StatusBar bar("StatusBar1");
    bar.panel(2).setGrowingText("Firmware-Update ...", 16);
    EXPECT_EQ(bar.panel(2).text(), "Firmware-Update ...");
    EXPECT_EQ(bar.panel(2).head(), 16U);
    bar.panel(2).setText("Update abgeschlossen");
    EXPECT_EQ(bar.panel(2).head(), 0U);
}

TEST(ImagePicture, IsToldToTheViewWhenItIsAnother) {
    Image image("img");
    RecordingView view;
    image.attach(&view);
    const base::Picture picture = iconResource(stickIcon);
    image.setPicture(picture);
    image.setPicture(picture);
    EXPECT_EQ(view.shown, std::vector{Property::Picture});
    EXPECT_EQ(image.picture(), picture);
}
