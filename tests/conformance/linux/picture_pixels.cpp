#include "tests/conformance/picture_pixels.h"

#include "toolkit/qt/picture.h"

#include <QGuiApplication>

#include <array>
#include <ctime>

namespace conformance {

struct PictureDrawing::State {
    State() { qputenv("QT_QPA_PLATFORM", "offscreen"); }

    std::array<char, 5> name{"test"};
    std::array<char*, 2> arguments = {name.data(), nullptr};
    int argumentCount = 1;
    std::unique_ptr<QGuiApplication> application;
};

PictureDrawing::PictureDrawing() : state_(std::make_unique<State>()) {
    state_->application = std::make_unique<QGuiApplication>(state_->argumentCount, state_->arguments.data());
}

PictureDrawing::~PictureDrawing() = default;

PictureSize sizeOf(const base::Picture& picture) {
    const QImage& image = toolkit::qt::loaded(picture)->image();
    return {image.width(), image.height()};
}

toolkit::Color pixelOf(const base::Picture& picture, int x, int y) {
    const QColor color = toolkit::qt::loaded(picture)->image().pixelColor(x, y);
    return {static_cast<std::uint8_t>(color.red()), static_cast<std::uint8_t>(color.green()),
            static_cast<std::uint8_t>(color.blue())};
}

double processorSeconds() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

} // namespace conformance
