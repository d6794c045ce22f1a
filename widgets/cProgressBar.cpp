#include "widgets/cProgressBar.h"

#include "platform/number_text.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace {

constexpr double step = 0.01;

std::uint8_t channelAt(const std::array<std::int32_t, 2>& c, double t) {
    const double value = platform::roundHalfToEven(c[0] - (c[0] - c[1]) * t);
    return static_cast<std::uint8_t>(std::clamp(value, 0.0, 255.0));
}

/// Black or white, whichever can be read on the colour.
toolkit::Color contrastTo(toolkit::Color color) {
    const double brightness =
        platform::roundHalfToEven(color.green * 0.59 + color.red * 0.3 + color.blue * 0.11);
    return brightness > 127 ? toolkit::black : toolkit::white;
}

void printCentred(toolkit::PictureBox& box, const std::string& text) {
    box.setCurrentX((toolkit::PictureBox::ScaleWidth - box.textWidth(text)) / 2);
    box.setCurrentY((toolkit::PictureBox::ScaleHeight - box.textHeight(text)) / 2);
    box.setForeColor(contrastTo(box.point(box.currentX(), box.currentY())));
    box.print(text);
}

} // namespace

void cProgressBar::EndFarbe(std::int16_t R0, std::int16_t G0, std::int16_t B0) {
    red_[0] = R0;
    green_[0] = G0;
    blue_[0] = B0;
}

void cProgressBar::StartFarbe(std::int16_t R1, std::int16_t G1, std::int16_t B1) {
    red_[1] = R1;
    green_[1] = G1;
    blue_[1] = B1;
}

toolkit::Color cProgressBar::colorAt(double t) const {
    return {channelAt(red_, t), channelAt(green_, t), channelAt(blue_, t)};
}

void cProgressBar::ShowProgress(toolkit::PictureBox& PicProgress, double value, double min, double max,
                                bool bShowProzent) {
    value = value < min ? min : value > max ? max : value;
    // The share of max alone, wherever min lies: this is intended.
    const auto percentage =
        max > 0 ? static_cast<std::int16_t>(std::floor(value / max * 100 + 0.5)) : std::int16_t{100};

    PicProgress.setAutoRedraw(true);
    PicProgress.cls();
    const double length = platform::roundHalfToEven((toolkit::PictureBox::ScaleWidth - 2) / 100 * value);
    const double height = platform::roundHalfToEven(toolkit::PictureBox::ScaleHeight);
    if (value < 1) return;

    drawFilled(PicProgress, length, height, value / 100);
    StartFarbe(0, 200, 0);
    EndFarbe(200, 0, 0);
    drawRest(PicProgress, length, height, value / 100);
    if (bShowProzent) printCentred(PicProgress, std::to_string(percentage) + " %");
}

// The steps are added up, with the rounding that this brings, and not counted: it decides where the bar ends.
// NOLINTBEGIN(cert-flp30-c,clang-analyzer-security.FloatLoopCounter)

void cProgressBar::drawFilled(toolkit::PictureBox& box, double length, double height, double share) const {
    for (double t = 0; t <= share; t += step)
        box.fillRectangle({length * t, 0, length * (t + step), height, colorAt(t)});
}

/// The left edge is measured by the bar's length, the right one by the whole width: this is intended.
void cProgressBar::drawRest(toolkit::PictureBox& box, double length, double height, double share) const {
    for (double t = share; t <= 1.0; t += step)
        box.fillRectangle({length * t, 0, toolkit::PictureBox::ScaleWidth * (t + step), height, colorAt(t)});
}

// NOLINTEND(cert-flp30-c,clang-analyzer-security.FloatLoopCounter)
