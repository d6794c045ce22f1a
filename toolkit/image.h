#pragma once

#include "toolkit/control.h"
#include "toolkit/picture.h"

namespace toolkit {

/// Shows a picture, scaled down to the room there is.
class Image : public Control {
public:
    using Control::Control;

    const base::Picture& picture() const noexcept { return picture_; }
    void setPicture(const base::Picture& picture) { assign(picture_, picture, Property::Picture); }

private:
    base::Picture picture_;
};

} // namespace toolkit
