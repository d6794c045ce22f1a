#include "toolkit/picture_box.h"

#include <algorithm>

namespace toolkit {

void PictureBox::cls() {
    currentX_ = 0;
    currentY_ = 0;
    if (rectangles_.empty() && texts_.empty()) return;
    rectangles_.clear();
    texts_.clear();
    notify(Property::Drawing);
}

void PictureBox::fillRectangle(const Rectangle& rectangle) {
    rectangles_.push_back(rectangle);
    notify(Property::Drawing);
}

void PictureBox::print(const std::string& text) {
    texts_.push_back({currentX_, currentY_, textSize(text), text, foreColor_});
    notify(Property::Drawing);
}

Color PictureBox::point(double x, double y) const {
    const auto covers = [x, y](const Rectangle& r) {
        return x >= r.left && x < r.right && y >= r.top && y < r.bottom;
    };
    const auto topmost = std::find_if(rectangles_.rbegin(), rectangles_.rend(), covers);
    return topmost == rectangles_.rend() ? white : topmost->color;
}

PictureBox::Size PictureBox::textSize(const std::string& text) const {
    return measure_ == nullptr ? Size{} : measure_->textSize(text);
}

} // namespace toolkit
