#pragma once

#include "toolkit/picture_box.h"

#include <array>
#include <cstdint>

/// Draws a progress bar as a colour gradient into a picture box.
class cProgressBar {
public:
    /// Colour at the end of the gradient; channels are taken without a range test.
    void EndFarbe(std::int16_t R0, std::int16_t G0, std::int16_t B0);
    /// Colour at the start of the gradient.
    void StartFarbe(std::int16_t R1, std::int16_t G1, std::int16_t B1);

    /// Draws the bar for `value` within `min` and `max`; `bShowProzent` writes the percentage in its middle,
    /// in black or white. Afterwards the colours are red (end) and green (start), whatever they were: this is
    /// intended.
    void ShowProgress(toolkit::PictureBox& PicProgress, double value, double min, double max,
                      bool bShowProzent);

private:
    toolkit::Color colorAt(double t) const;
    void drawFilled(toolkit::PictureBox& box, double length, double height, double share) const;
    void drawRest(toolkit::PictureBox& box, double length, double height, double share) const;

    // Element 0 is the end colour, element 1 the start colour.
    std::array<std::int32_t, 2> red_{};
    std::array<std::int32_t, 2> green_{};
    std::array<std::int32_t, 2> blue_{};
};
