#pragma once

#include "toolkit/color.h"
#include "toolkit/control.h"

#include <vector>

namespace toolkit {

/// A surface to draw on. It keeps what is drawn as a list in its own scale units, so the view can paint it at
/// any size and resolution.
class PictureBox : public Control {
public:
    struct Size {
        double width = 0;
        double height = 0;
    };

    struct Rectangle {
        double left = 0;
        double top = 0;
        double right = 0;
        double bottom = 0;
        Color color;
    };

    struct Text {
        double x = 0; ///< left edge
        double y = 0; ///< upper edge
        Size size;    ///< as measured when it was printed
        std::string text;
        Color color;
    };

    /// Measures a text in the box's font, in units of the box's scale. The backend's view of a picture box is
    /// one.
    class Measure {
    public:
        Measure() = default;
        Measure(const Measure&) = delete;
        Measure& operator=(const Measure&) = delete;
        virtual ~Measure() = default;
        virtual Size textSize(const std::string& text) const = 0;
    };

    using Control::Control;

    /// Inner size. The unit is a thousandth of the width, whatever the box measures on the screen.
    static constexpr double ScaleWidth = 1000;
    static constexpr double ScaleHeight = 100;

    bool autoRedraw() const noexcept { return autoRedraw_; }
    void setAutoRedraw(bool on) noexcept { autoRedraw_ = on; }

    /// Empties the surface; the drawing position returns to the upper left corner.
    void cls();
    /// Fills a rectangle; what it covers is gone. A corner may lie outside of the box.
    void fillRectangle(const Rectangle& rectangle);
    /// Prints at the current position in the foreground colour.
    void print(const std::string& text);
    /// Colour at a point; white, the colour of the empty surface, where nothing has been filled.
    Color point(double x, double y) const;

    double textWidth(const std::string& text) const { return textSize(text).width; }
    double textHeight(const std::string& text) const { return textSize(text).height; }

    void setCurrentX(double x) noexcept { currentX_ = x; }
    void setCurrentY(double y) noexcept { currentY_ = y; }
    double currentX() const noexcept { return currentX_; }
    double currentY() const noexcept { return currentY_; }
    void setForeColor(Color color) noexcept { foreColor_ = color; }

    void setMeasure(const Measure* measure) noexcept { measure_ = measure; }

    const std::vector<Rectangle>& rectangles() const noexcept { return rectangles_; }
    const std::vector<Text>& texts() const noexcept { return texts_; }

private:
    Size textSize(const std::string& text) const;

    std::vector<Rectangle> rectangles_;
    std::vector<Text> texts_;
    const Measure* measure_ = nullptr;
    Color foreColor_ = black;
    double currentX_ = 0;
    double currentY_ = 0;
    bool autoRedraw_ = false;
};

} // namespace toolkit
